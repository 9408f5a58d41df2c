// Letting go of a program's objects.
#include "command/program_cleanup.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ling::command {

namespace {

// Whether other threads may run Python code: the program's own that nobody waits for, or a host's.
bool are_others_running() {
  PyThreadState* const own = python.PyThreadState_Get();
  PyThreadState* const first = python.PyInterpreterState_ThreadHead(python.PyInterpreterState_Get());
  return first != own || python.PyThreadState_Next(own) != nullptr;
}

// Replaces the values of the names that are wanted by None, as the interpreter does.
template <class Wanted>
void take_contents(PyObject* names, const Wanted& is_wanted) {
  const reference contents(python.PyDict_Copy(names));
  PyObject* key = nullptr;
  for (std::ptrdiff_t i = 0; contents && python.PyDict_Next(contents.get(), &i, &key, nullptr) != 0;) {
    const char* const name = python.PyUnicode_AsUTF8AndSize(key, nullptr);
    if (name != nullptr && is_wanted(std::string_view(name))) {
      python.PyDict_SetItem(names, key, none());
    }
    python.PyErr_Clear();
  }
}

// What is private first, the built-in functions never.
void empty_namespace(PyObject* names) {
  take_contents(names, [](std::string_view key) { return key.starts_with('_') && !key.starts_with("__"); });
  take_contents(names, [](std::string_view key) { return key != "__builtins__"; });
}

// Takes their contents from modules that something still refers to.
void empty_modules(PyObject* weak_references) {
  PyObject *name = nullptr, *weak = nullptr;
  for (std::ptrdiff_t i = 0;
       weak_references != nullptr && python.PyDict_Next(weak_references, &i, &name, &weak) != 0;) {
    const reference module = reference::share(is_none(weak) ? nullptr : python.PyWeakref_GetObject(weak));
    if (is_none(module.get())) {
      continue;
    }
    const reference names = attribute(module.get(), "__dict__");
    python.PyErr_Clear();
    if (names) {
      empty_namespace(names.get());
    }
  }
}

// What a program has added or replaced goes away; while it goes, the module is whole.
void restore(PyObject* names, PyObject* before) {
  const reference contents(python.PyDict_Copy(names));
  if (contents) {
    python.PyDict_Clear(names);
    python.PyDict_Update(names, before);
  }
  python.PyErr_Clear();
}

}  // namespace

bool program_cleanup::prepare() {
  signal_handler_ = module_attribute("_signal", "getsignal");
  set_signal_handler_ = module_attribute("_signal", "signal");
  collect_garbage_ = module_attribute("gc", "collect");
  garbage_callbacks_ = module_attribute("gc", "callbacks");
  referrers_ = module_attribute("gc", "get_referrers");
  modules_before_ = reference(python.PyDict_Copy(python.PyImport_GetModuleDict()));
  if (!signal_handler_ || !set_signal_handler_ || !collect_garbage_ || !garbage_callbacks_ || !referrers_ ||
      !modules_before_) {
    return false;
  }
  python.PyDict_DelItemString(modules_before_.get(), main_name);  // the program's
  remember_contents();
  return true;
}

void program_cleanup::remember_contents() {
  PyObject *name = nullptr, *module = nullptr;
  for (std::ptrdiff_t i = 0; python.PyDict_Next(modules_before_.get(), &i, &name, &module) != 0;) {
    reference names = attribute(module, "__dict__");
    reference before(names ? python.PyDict_Copy(names.get()) : nullptr);
    if (before) {
      contents_before_.push_back({std::move(names), std::move(before)});
    }
    python.PyErr_Clear();  // not everything that is called a module is one
  }
  // `sys` is the first module; the hooks in it are there for the finalisers of all others.
  const auto first = contents_before_.begin();
  std::rotate(first, contents_before_.empty() ? first : first + 1, contents_before_.end());
}

// Objects are finalised when nothing refers to them any more.
void program_cleanup::run() const {
  let_go_of_signal_handlers();
  python.PyGC_Collect();
  python.PySequence_DelSlice(garbage_callbacks_.get(), 0, PTRDIFF_MAX);
  for (const char* name : {"last_exc", "last_type", "last_value", "last_traceback"}) {
    python.PySys_SetObject(name, nullptr);
  }
  PyObject* const modules = python.PyImport_GetModuleDict();
  if (are_others_running()) {
    // They may be using anything else.
    python.PyDict_SetItemString(modules, main_name, none());
    collect_garbage();
    return;
  }
  for (const auto& [name, original] : {
           std::pair{"stdin",  "__stdin__" },
           {"stdout", "__stdout__"},
           {"stderr", "__stderr__"}
  }) {
    PyObject* const stream = python.PySys_GetObject(original);
    python.PySys_SetObject(name, stream == nullptr ? none() : stream);
  }
  std::vector<known_namespace> namespaces;
  const reference forgotten = forget_modules(modules, namespaces);
  // What a program has put into `builtins` ends before what other modules hold.
  const reference builtins_name(python.PyUnicode_FromString("builtins"));
  const reference builtins = attribute(
      builtins_name ? python.PyDict_GetItem(modules_before_.get(), builtins_name.get()) : nullptr, "__dict__");
  python.PyErr_Clear();
  for (const known_module& each : contents_before_) {
    if (each.names.get() == builtins.get()) {
      restore(each.names.get(), each.before.get());
    }
  }
  collect_garbage();
  empty_modules(forgotten.get());
  for (const known_module& each : contents_before_) {
    restore(each.names.get(), each.before.get());
  }
  collect_garbage();
  // What lives for as long as the interpreter, such as a table of codecs or a value of the host, may hold functions of
  // modules that have gone, and with them all variables of those modules. They find no streams any more.
  for (const char* name : {"stdin", "stdout", "stderr"}) {
    python.PySys_SetObject(name, none());
  }
  for (const known_namespace& each : namespaces) {
    empty_left_namespace(each);
  }
  collect_garbage();
}

// The handlers that are functions lead to the variables of their modules.
void program_cleanup::let_go_of_signal_handlers() const {
  constexpr long first_signal = 1, behind_last_signal = 65, by_default = 0;
  const reference default_handler(python.PyLong_FromLong(by_default));
  for (long number = first_signal; number != behind_last_signal; ++number) {
    const reference signal(python.PyLong_FromLong(number));
    const reference handler = call(signal_handler_, signal.get());
    if (!is_none(handler.get()) && reference(python.PyObject_Type(handler.get())).get() != python.PyLong_Type) {
      static_cast<void>(call(set_signal_handler_, signal.get(), default_handler.get()));
    }
    python.PyErr_Clear();
  }
}

// The modules that the program has brought with it, as weak references by their names; None stands for all others.
reference program_cleanup::forget_modules(PyObject* modules, std::vector<known_namespace>& namespaces) const {
  reference forgotten(python.PyDict_Copy(modules));
  PyObject *name = nullptr, *module = nullptr;
  for (std::ptrdiff_t i = 0; forgotten && python.PyDict_Next(forgotten.get(), &i, &name, &module) != 0;) {
    reference weak;
    if (python.PyDict_GetItem(modules_before_.get(), name) != module) {
      weak = reference(python.PyWeakref_NewRef(module, nullptr));
      watch(attribute(module, "__dict__").get(), namespaces);
      python.PyDict_SetItem(modules, name, none());
    }
    python.PyErr_Clear();
    python.PyDict_SetItem(forgotten.get(), name, weak ? weak.get() : none());
  }
  return forgotten;
}

// What refers to the object is there, whatever it is: the namespace itself or a copy that a program has made of it.
void program_cleanup::empty_left_namespace(const known_namespace& left) const {
  const reference alive = reference::share(python.PyWeakref_GetObject(left.alive.get()));
  const reference holders = is_none(alive.get()) ? reference() : call(referrers_, alive.get());
  for (std::ptrdiff_t i = 0; holders; ++i) {
    const reference holder(python.PySequence_GetItem(holders.get(), i));
    if (!holder) {
      break;
    }
    if (holder.get() == left.names) {
      empty_namespace(holder.get());
    }
  }
  python.PyErr_Clear();
}

void program_cleanup::watch(PyObject* names, std::vector<known_namespace>& namespaces) {
  const reference object(python.PySet_New(nullptr));
  reference weak(object ? python.PyWeakref_NewRef(object.get(), nullptr) : nullptr);
  if (weak && names != nullptr && python.PyDict_SetItemString(names, "__alive__", object.get()) == 0) {
    namespaces.push_back({names, std::move(weak)});
  }
  python.PyErr_Clear();
}

void program_cleanup::collect_garbage() const {
  static_cast<void>(call(collect_garbage_));
  python.PyErr_Clear();
}

}  // namespace ling::command
