// Exceptions to Errors and back.
#include "python/error_bridge.h"

#include "bridge/exception_details.h"
#include "bridge/exception_types.h"
#include "ling/lazy.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/instance_test.h"
#include "python/pending_exception.h"
#include "python/python_name.h"

namespace ling::cpython {

namespace {

// --- Python to the host ----------------------------------------------------------------------------------------------

constinit const python_name carried_name("ling");

// The Error that `say` makes of an exception; where memory does not suffice for it, the one that says so.
template <class F>
Error as_far_as_memory_reaches(const F& say) {
  Error error = Error::outOfMemory();
  try {
    error = say();
  } catch (const Error& interruption) {
    error = interruption;
  } catch (const std::bad_alloc&) {
    PyErr_Clear();
  }
  return error;
}

// A request to stop, such as SystemExit or KeyboardInterrupt. Unlike an exception it must not end as a mere text, so
// the error keeps it, to be raised again when the error returns to Python.
Error error_from_interruption(PyObject* instance) {
  exception_texts texts = texts_of(instance);
  const Error error = Error::interruption(texts.message.empty() ? type_name_of(instance) : texts.message);
  error.object().set_stack(std::move(texts.stack));
  error.setValue(make_python_object(instance));
  return error;
}

// The host's error that the exception carries, perhaps inside another exception. When there is none, `carrier` becomes
// the exception that tells what happened.
Union<Error, None> carried_error(PyObjectPtr& carrier) {
  PyObjectPtr outermost = PyObjectPtr::share(carrier.get());
  for (int i = 0; i < maximum_conversion_depth; ++i) {
    PyObjectPtr carried = carried_name.find(carrier.get());
    drop_exception();
    const Any* value = carried ? wrapped_value(carried.get()) : nullptr;
    if (value != nullptr && is_error_result(*value)) {
      return Error::unchecked(*value);
    }
    // Exceptions made for a class of errors have the attribute even when they carry none; a stranger's attribute of
    // that name is none of ours.
    if (!carried || !is_instance(carried.get(), PyExc_Exception)) {
      return None();
    }
    carrier = std::move(carried);
  }
  carrier = std::move(outermost);  // they carry each other in a circle
  return None();
}

Error error_from_fetched(const fetched_exception& exception) {
  if (!exception.value) {
    return Error::unknown();
  }
  return is_instance(exception.value.get(), PyExc_Exception) ? error_from_exception(exception.value.get())
                                                             : error_from_interruption(exception.value.get());
}

// The class of an exception's type, made when somebody asks for it: most exceptions are never asked, and their types
// may be as many as the runs of a script.
class exception_class final : public object_value_external {
 public:
  explicit exception_class(PyObjectPtr_Borrowed type) noexcept : type_(PyObjectPtr::share(type)) {}
  Any load() override {
    TRY(ensure_interpreter());
    const GilGuard lock;
    return class_of_python_type(type_.get());
  }

 private:
  const PyObjectPtr type_;
};

// A new error with the texts of the exception.
Error error_from_texts(PyObject* instance) {
  exception_texts texts = texts_of(instance);
  Any error;
  if (PyErr_GivenExceptionMatches(instance, PyExc_MemoryError) != 0) {
    error = Error::outOfMemory(texts.message);
  } else if (object_value_class* error_class = error_class_of(Py_TYPE(instance))) {
    error = Class_Generic(*error_class)(texts.message);
  }
  const Error result = is_error_result(error) ? Error::unchecked(error) : Error(texts.message);
  result.object().set_stack(std::move(texts.stack));
  // Tells what the message alone does not: whether it was, say, a LookupError.
  result.setValue(make<exception_class>(reinterpret_cast<PyObject*>(Py_TYPE(instance))));
  return result;
}

Error placed_error(const fetched_exception& exception, int line_shift, int column_shift) {
  const Error error = error_from_fetched(exception);
  const source_position position =
      position_of(exception.value.get(), exception.traceback.get(), line_shift, column_shift);
  if (!position.line && !position.column) {
    return error;
  }
  const auto placed = EvaluationError::unchecked(
      make<object_value_evaluation_error>(EvaluationError::getClass().object(), error.message(),
                                          source_position{{}, position.line, position.column, position.length},
                                          error.isOutOfMemory()    ? object_traits::out_of_memory
                                          : error.isInterruption() ? object_traits::interruption
                                                                   : object_traits::none));
  placed.object().set_stack(error.object().stack());
  placed.setValue(error.object().value());
  // Whoever raised an error of the host's finds that very error again.
  if (PyObjectPtr carrier = PyObjectPtr::share(exception.value.get()); carrier && carried_error(carrier)) {
    placed.setCause(std::make_exception_ptr(error));
  }
  return placed;
}

// --- the host to Python ----------------------------------------------------------------------------------------------

// Whole texts, zero bytes included.
void raise_text(PyObject* type, const String& message) {
  const PyObjectPtr text = to_python_locked(message);
  if (text) {
    PyErr_SetObject(type, text.get());
  }
}

// Whether the error ends more than an operation. The exception that it was made for then is pending again; one that the
// host has made itself is a KeyboardInterrupt.
bool raise_interruption(const Error& error) {
  if (!error.isInterruption()) {
    return false;
  }
  const PyObjectPtr exception = python_object_of(error.object().value());
  if (exception && PyExceptionInstance_Check(exception.get())) {
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.get())), exception.get());
  } else {
    raise_text(PyExc_KeyboardInterrupt, error.message());
  }
  return true;
}

PyObject* exception_type_for(const Error& error) {
  return error.isOutOfMemory() ? PyExc_MemoryError : exception_type_of(raw_class_of(error));
}

// Runs what sets an exception for the error. Where memory does not suffice for it, and for the error that says no more
// than that, Python has an exception ready.
template <class F>
void raise_within_memory(const Error& error, const F& raise) noexcept {
  try {
    try {
      if (!error.is_same(Error::outOfMemory())) {
        raise();
        return;
      }
    } catch (const Error& interruption) {
      if (raise_interruption(interruption)) {
        return;
      }
    }
  } catch (...) {
  }
  PyErr_NoMemory();
}

// An exception of the type with the error as its attribute "ling"; null when it cannot be made for another reason than
// memory.
PyObjectPtr make_exception(PyObject* type, const Error& error, const String& message) {
  const PyObjectPtr no_arguments(PyTuple_New(0));
  PyObjectPtr instance(no_arguments ? PyObject_Call(type, no_arguments.get(), nullptr) : nullptr);
  if (instance) {
    const PyObjectPtr carried = wrap_locked(error);
    PyObject* const name = carried ? carried_name.get() : nullptr;
    if (name != nullptr) {
      PyObject_SetAttr(instance.get(), name, carried.get());
    }
    drop_exception();
    // Set, not passed on: the constructor of a standard exception may make more of an argument than its text.
    if (!message.empty()) {
      const PyObjectPtr arguments = to_python_locked(Tuple_Generic({message}));
      if (arguments) {
        PyObject_SetAttrString(instance.get(), "args", arguments.get());
      }
    }
  }
  drop_exception();
  return instance;
}

void raise_with_error(PyObject* exception_type, const Error& error, const String& message) {
  if (raise_interruption(error)) {
    return;
  }
  const PyObjectPtr instance = make_exception(exception_type, error, message);
  if (instance) {
    PyErr_SetObject(exception_type, instance.get());
  } else {
    raise_text(exception_type, message);
  }
}

}  // namespace

Union<Error, None> capture_error() {
  const auto exception = fetch_exception();
  if (!exception) {
    return None();
  }
  return as_far_as_memory_reaches([&] { return error_from_fetched(*exception); });
}

Error capture_error_or(const char* message) {
  const auto captured = capture_error();
  return captured ? captured.value() : Error(message);
}

Error exception_to_error(int line_shift, int column_shift) {
  const auto exception = fetch_exception();
  if (!exception) {
    return Error::unknown();
  }
  return as_far_as_memory_reaches([&] { return placed_error(*exception, line_shift, column_shift); });
}

Error error_from_exception(PyObjectPtr_Borrowed instance) {
  PyObjectPtr carrier = PyObjectPtr::share(instance);
  const auto carried = carried_error(carrier);
  return carried ? carried.value() : error_from_texts(carrier.get());
}

void throw_exception() {
  if (PyErr_ExceptionMatches(PyExc_MemoryError) != 0) {
    PyErr_Clear();
    throw std::bad_alloc();
  }
  throw capture_error().value();
}

void raise_error(const Error& error) noexcept {
  raise_within_memory(error, [&] { raise_with_error(exception_type_for(error), error, error.message()); });
}

void raise_error_as(PyObject* exception_type, const Error& error, const String& message) noexcept {
  raise_within_memory(
      error, [&] { raise_with_error(error.isOutOfMemory() ? PyExc_MemoryError : exception_type, error, message); });
}

}  // namespace ling::cpython
