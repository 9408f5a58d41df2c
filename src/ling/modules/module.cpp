// Modules and the table of them.
#include "ling/module.h"

#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <string_view>

namespace ling {

constinit const class_definition<Module> internal::module_class("Module", [](class_builder<Module>& c) {
  c.module("ling")
      .doc("A named collection of classes, callables and properties.")
      .parent(I_HasName::getClass())
      .parent(I_HasDoc::getClass())
      .property("name", "The full name, with those of the modules around it.", &Module::name)
      .property("doc", "What the module is for.", &Module::doc, &Module::setDoc)
      .property("importance", "How prominently tools show it; 10 keeps it out of evaluated code.", &Module::importance,
                &Module::setImportance)
      .property("inlined", "Whether evaluated code sees its names without the module's name.", &Module::isInlined,
                [](const Module& self, bool inlined) { self.setInlined(inlined); })
      .property("classes", "The classes by name.", &Module::classes)
      .property("callables", "The callables by name.", &Module::callables)
      .method(Any::__display__, "", [](const Module& self) { return String("<module {}>").arg(self.name()); });
});

namespace {

constinit std::atomic<std::uint64_t> visible_modules{0};

object_value_class& make_class_of_module(object_value_class& base, const String& name) {
  auto& made = *new object_value_class(name);
  made.add_parent_unsafe(base);
  return made;
}

}  // namespace

object_value_module::object_value_module(object_value_class& base, String name)
    : object_value_instance(make_class_of_module(base, name)), name_(std::move(name)), importance_(0) {}

String object_value_module::doc() const {
  const std::lock_guard guard(lock_);
  return doc_;
}

void object_value_module::set_doc(String doc) {
  const std::lock_guard guard(lock_);
  doc_.swap(doc);
  // The former text dies with the parameter, after the lock.
}

Any object_value_module::importance() const {
  const std::lock_guard guard(lock_);
  return importance_;
}

void object_value_module::set_importance(Any importance) {
  {
    const std::lock_guard guard(lock_);
    importance_.swap(importance);
  }
  visible_modules.fetch_add(1, std::memory_order_release);
}

void object_value_module::set_inlined(bool inlined) noexcept {
  inlined_.store(inlined, std::memory_order_relaxed);
  visible_modules.fetch_add(1, std::memory_order_release);
}

std::uint64_t visible_modules_version() noexcept { return visible_modules.load(std::memory_order_acquire); }

Module::Module(const String& name) : Handle(new object_value_module(internal::module_class.required(), name)) {}

void Module::addClass(const Class_Generic& of_class) const {
  if (is_none(of_class.declaringContext())) {
    of_class.object().set_declaring_context(*this);
  }
  object().classes().set(of_class.name(), of_class);
  object().object_class().add_class_property_unsafe(of_class.name(), Property::constant(of_class, of_class.doc()));
}

void Module::addCallable(const String& name, const I_Callable_Generic& callable) const {
  // Before the module's class takes it as a method and would make itself the context.
  if (is_none(callable.declaringContext())) {
    callable.object().set_declaring_context(*this);
  }
  object().callables().set(name, callable);
  object().object_class().add_class_method_unsafe(name, callable);
}

void Module::addProperty(const String& name, const Property& property) const {
  // The module's own, because every module has properties of the class, such as `doc`, that this one may hide.
  object().insert_own_property(*internal::name_to_look_up(name.view()), property);
}

bool Module::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_module>(object, internal::module_class);
}
Type Module::getType() { return Type::of(getClass()); }
Class_Generic Module::getClass() { return internal::module_class.required(); }

// --- the table -------------------------------------------------------------------------------------------------------

constinit spinlock g_modules_lock;

// Modules are never taken out, so the table is three kinds of chains through the modules themselves: adding one takes a
// few instructions and no memory, and readers need no lock.
struct module_table {
  using link = std::atomic<object_value_module*>;
  struct bucket {
    link modules{nullptr};   // of names with this hash
    link children{nullptr};  // of modules of such names
  };

  // The modules that Python has on a machine with many libraries make short chains.
  static constexpr std::size_t bucket_count = 8192;

  link first{nullptr};
  object_value_module* last = nullptr;
  bucket buckets[bucket_count]{};

  bucket& bucket_of(std::string_view name) noexcept {
    return buckets[std::hash<std::string_view>()(name) % bucket_count];
  }

  object_value_module* find(std::string_view name) noexcept {
    object_value_module* each = bucket_of(name).modules.load(std::memory_order_acquire);
    while (each != nullptr && each->name() != name) {
      each = each->next_in_bucket_.load(std::memory_order_acquire);
    }
    return each;
  }

  // Visits what may be a child of a module of that name.
  template <class Visit>
  void for_each_child(std::string_view name, const Visit& visit) {
    for (object_value_module* each = bucket_of(name).children.load(std::memory_order_acquire); each != nullptr;
         each = each->next_sibling_.load(std::memory_order_acquire)) {
      visit(*each);
    }
  }

  static object_value_module* next(const object_value_module& module) noexcept {
    return module.next_.load(std::memory_order_acquire);
  }

  // Takes over a reference; false when the name is taken.
  bool add(object_value_module& module) noexcept {
    const std::lock_guard guard(g_modules_lock);
    if (find(module.name().view()) != nullptr) {
      return false;
    }
    const std::string_view name = module.name().view();
    prepend(bucket_of(name).modules, module, module.next_in_bucket_);
    prepend(bucket_of(name_around(name)).children, module, module.next_sibling_);
    link& end = last == nullptr ? first : last->next_;
    end.store(&module, std::memory_order_release);
    last = &module;
    return true;
  }

  // The name of the module around one of that name; empty when there is none.
  static std::string_view name_around(std::string_view name) noexcept {
    const std::size_t dot = name.rfind('.');
    return name.substr(0, dot == std::string_view::npos ? 0 : dot);
  }

 private:
  static void prepend(link& chain, object_value_module& module, link& next) noexcept {
    next.store(chain.load(std::memory_order_relaxed), std::memory_order_relaxed);
    chain.store(&module, std::memory_order_release);
  }
};

namespace {

constinit module_table table;

Any error_bad_module_name(const String& name) {
  return Error(String("A module name is made of parts between dots, none of them empty: '{}'.").arg(name));
}

bool is_module_name(std::string_view name) {
  return !name.empty() && name.front() != '.' && name.back() != '.' && name.find("..") == std::string_view::npos;
}

// Makes the child a property of its parent.
void link_child(object_value_module& child, object_value_module& parent) {
  const std::string_view name = child.name().view().substr(parent.name().size() + 1);
  parent.object_class().add_class_property_unsafe(name, Property::constant(Any::share(&child), child.doc()));
}

}  // namespace

std::vector<Module> modules() {
  std::vector<Module> all;
  for (object_value_module* each = table.first.load(std::memory_order_acquire); each != nullptr;
       each = module_table::next(*each)) {
    all.push_back(Module::unchecked(Any::share(each)));
  }
  return all;
}

Union<Module, None> find_module(const String& name) {
  return Union<Module, None>::unchecked(Any::share(table.find(name.view())));
}

Result<None> insert_module(const Module& module) {
  if (!is_module_name(module.object().name().view())) {
    return Result<None>::unchecked(error_bad_module_name(module.name()));
  }
  // The module must be found by the time a thread that inserts its parent or child looks: then at least one of the two
  // threads sees both and links them.
  Any reference = module;
  if (!table.add(module.object())) {
    return Error(String("There is a module of that name already: '{}'.").arg(module.name()));
  }
  (void)reference.release();  // the table's
  if (module.isInlined() || !module.object().name().contains(".")) {
    visible_modules.fetch_add(1, std::memory_order_release);
  }
  object_value_module& added = module.object();
  const std::string_view name = added.name().view();
  if (object_value_module* const parent = table.find(module_table::name_around(name))) {
    link_child(added, *parent);
  }
  std::vector<object_value_module*> children;
  table.for_each_child(name, [&](object_value_module& other) {
    if (module_table::name_around(other.name().view()) == name) {
      children.push_back(&other);
    }
  });
  std::for_each(children.rbegin(), children.rend(),  // the last one added came first
                [&](object_value_module* child) { link_child(*child, added); });
  return None();
}

Result<Module> get_module(const String& name) {
  if (const auto found = find_module(name)) {
    return found.value();
  }
  const std::string_view text = name.view();
  if (!is_module_name(text)) {
    return Result<Module>::unchecked(error_bad_module_name(name));
  }
  // Parents first, so that the table lists them first.
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = text.find('.', end + 1);
    const String part = text.substr(0, end);
    if (!find_module(part)) {
      // Another thread may have been quicker; then its module is the module.
      (void)insert_module(Module(part));
    }
  }
  return find_module(name).value();
}

namespace {

Union<Type, None> type_in(const Module& module, const String& name) {
  const Any of_class = module.object().classes().get(name);
  if (!Class_Generic::matches(of_class.get())) {
    return None();
  }
  return Type::of(Class_Generic::unchecked(of_class));
}

}  // namespace

Union<Type, None> find_type(const String& name) {
  const std::string_view text = name.view();
  if (const std::size_t dot = text.rfind('.'); dot != std::string_view::npos) {
    const auto module = find_module(text.substr(0, dot));
    return module ? type_in(module.value(), text.substr(dot + 1)) : None();
  }
  if (const auto module = find_module("ling")) {
    if (auto found = type_in(module.value(), name)) {
      return found;
    }
  }
  for (const Module& module : modules()) {
    if (module.isInlined()) {
      if (auto found = type_in(module, name)) {
        return found;
      }
    }
  }
  return None();
}

HashMap_Generic globals() {
  static internal::immortal<HashMap_Generic> variables;  // never destroyed: exit handlers may still read it
  return variables.object;
}

}  // namespace ling
