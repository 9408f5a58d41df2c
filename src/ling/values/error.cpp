// Error and its kinds: their classes, and errors out of C++ exceptions.
#include "ling/error.h"

#include "ling/class_builder.h"
#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"

#include <mutex>

namespace ling {

namespace {

Any cause_of(const Error& error) {
  const std::exception_ptr cause = error.cause();
  if (!cause) {
    return None();
  }
  try {
    std::rethrow_exception(cause);
  } catch (const Error& thrown) {
    return thrown;
  } catch (const std::exception& exception) {
    return Error(exception.what());
  } catch (...) {
    return Error::unknown();
  }
}

Any optional_number(std::optional<std::int64_t> number) { return number ? Any(*number) : Any(None()); }

}  // namespace

constinit const class_definition<Error> internal::error_class("Error", [](class_builder<Error>& c) {
  c.module("ling")
      .doc("A failure as a value.")
      .constructor("message", "An error with that message.",
                   [](const Class_Generic& self, const String& message) -> Any { return Error(self, message); })
      .property("message", "What went wrong.", [](const Error& self) { return self.message(); })
      .property(
          "stack", "Where it happened; empty when unknown.", [](const Error& self) { return self.stack(); },
          [](const Error& self, const String& stack) { self.setStack(stack); })
      .property(
          "value", "A value that belongs to the error, or none.", [](const Error& self) { return self.value(); },
          [](const Error& self, const Any& value) { self.setValue(value); })
      .property("cause", "The failure behind this one, or none.", &cause_of);
});

constinit const class_definition<StopIteration> internal::stop_iteration_class(
    "StopIteration", [](class_builder<StopIteration>& c) {
      c.module("ling")
          .doc("The end of an iteration.")
          .parent(Error::getClass())
          .constructor("message", "The end of an iteration.",
                       [](const Class_Generic& self, const String& message) -> Any { return Error(self, message); },
                       {String()});
    });

constinit const class_definition<BadArgument> internal::bad_argument_class(
    "BadArgument",
    [](class_builder<BadArgument>& c) { c.module("ling").doc("A wrong argument.").parent(Error::getClass()); });

constinit const class_definition<EvaluationError> internal::evaluation_error_class(
    "EvaluationError", [](class_builder<EvaluationError>& c) {
      c.module("ling")
          .doc("A failure in evaluated code, with its place in the source.")
          .parent(Error::getClass())
          .constructor("message, offset, line, column, length", "An error at that place; what is unknown is none.",
                       [](const Class_Generic& self, const String& message, std::optional<std::int64_t> offset,
                          std::optional<std::int64_t> line, std::optional<std::int64_t> column,
                          std::optional<std::int64_t> length) {
                         return make<object_value_evaluation_error>(self.object(), message,
                                                                    source_position{offset, line, column, length});
                       },
                       {None(), None(), None(), None()})
          .property("offset", "Position in the text, or none.",
                    [](const EvaluationError& self) { return optional_number(self.offset()); })
          .property("line", "Line, counted from 1, or none.",
                    [](const EvaluationError& self) { return optional_number(self.line()); })
          .property("column", "Column, counted from 1, or none.",
                    [](const EvaluationError& self) { return optional_number(self.column()); })
          .property("length", "Length of the marked text in code points, or none.",
                    [](const EvaluationError& self) { return optional_number(self.length()); });
    });

object_value_error::object_value_error(object_value_class& of_class, String message, object_traits more)
    : object_value_instance(of_class, object_traits::error | more), message_(std::move(message)) {}
object_value_error::object_value_error(String message, object_traits more)
    : object_value_instance(object_traits::error | more), message_(std::move(message)) {}

String object_value_error::message() const { return message_; }
Any object_value_error::stack() const {
  const std::lock_guard guard(lock_);
  return stack_;
}
void object_value_error::set_stack(Any stack) {
  if (has(object_traits::immortal)) {
    return;  // everybody's
  }
  const std::lock_guard guard(lock_);
  stack_.swap(stack);
}
void object_value_error::replace_stack(const Any& former, Any stack) {
  const std::lock_guard guard(lock_);
  if (stack_.is_same(former)) {
    stack_.swap(stack);
  }
}
Any object_value_error::value() const {
  const std::lock_guard guard(lock_);
  return value_;
}
void object_value_error::set_value(Any value) {
  if (has(object_traits::immortal)) {
    return;
  }
  const std::lock_guard guard(lock_);
  value_.swap(value);
}
std::exception_ptr object_value_error::cause() const {
  const std::lock_guard guard(lock_);
  return cause_;
}
void object_value_error::set_cause(std::exception_ptr cause) {
  if (has(object_traits::immortal)) {
    return;
  }
  const std::lock_guard guard(lock_);
  cause_.swap(cause);
}

Error::Error(const String& message) : Error(getClass(), message) {}
Error::Error(const Class_Generic& error_class, const String& message)
    : Handle(new object_value_error(error_class.object(), message)) {}

String Error::stack() const {
  const Any kept = object().stack();
  const auto text = String::cast(internal::unwrap(kept));
  if (text && !kept.is_same(*text)) {
    object().replace_stack(kept, *text);  // put together once
  }
  return text ? *text : String();
}

Any Error::value() const { return internal::unwrap(object().value()); }

Error Error::unknown() { return Error("Unknown error."); }

namespace {

// Describing its class takes memory, so it does not wait for that.
class object_value_shared_error final : public object_value_error {
 public:
  explicit object_value_shared_error(const char* message)
      : object_value_error(message, object_traits::immortal | object_traits::out_of_memory) {}
  object_value_class& object_class() const override { return internal::error_class.required(); }
};

const object_value_error& shared_out_of_memory() {
  static internal::immortal<object_value_shared_error> shared("Out of memory.");
  return shared.object;
}
// Made while the library is loaded.
[[maybe_unused]] const object_value_error& made_in_time = shared_out_of_memory();

Error error_of_current_exception() {
  try {
    throw;
  } catch (const Error& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return Error::outOfMemory();
  } catch (const std::exception& exception) {
    const Error error(exception.what());
    error.setCause(std::current_exception());
    return error;
  } catch (...) {
    const Error error = Error::unknown();
    error.setCause(std::current_exception());
    return error;
  }
}

}  // namespace

Error Error::outOfMemory() noexcept { return unchecked(Any::share(&shared_out_of_memory())); }
Error Error::outOfMemory(const String& message) {
  return Error(new object_value_error(getClass().object(), message, object_traits::out_of_memory));
}

Error Error::interruption(const String& message) {
  return Error(new object_value_error(getClass().object(), message, object_traits::interruption));
}
void internal::throw_intolerable(const Any& error) {
  if (error.has(object_traits::out_of_memory)) {
    throw std::bad_alloc();
  }
  throw Error::unchecked(error);
}

Error Error::fromCurrentException() noexcept {
  try {
    return error_of_current_exception();
  } catch (...) {
    return outOfMemory();  // for an error that says more there is none
  }
}

Type Error::getType() { return Type::of(getClass()); }
Class_Generic Error::getClass() { return internal::error_class.required(); }

namespace {
bool is_error_of(const object_value* object, const class_definition_base& definition) noexcept {
  return Error::matches(object) && internal::is_object_of(*object, definition);
}
}  // namespace

StopIteration::StopIteration() : Handle(new object_value_error(getClass().object(), String())) {}
bool StopIteration::matches(const object_value* object) noexcept {
  return is_error_of(object, internal::stop_iteration_class);
}
Type StopIteration::getType() { return Type::of(getClass()); }
Class_Generic StopIteration::getClass() { return internal::stop_iteration_class.required(); }

BadArgument::BadArgument(const String& message) : Handle(new object_value_error(getClass().object(), message)) {}
bool BadArgument::matches(const object_value* object) noexcept {
  return is_error_of(object, internal::bad_argument_class);
}
Type BadArgument::getType() { return Type::of(getClass()); }
Class_Generic BadArgument::getClass() { return internal::bad_argument_class.required(); }

EvaluationError::EvaluationError(const String& message, std::optional<std::int64_t> offset,
                                 std::optional<std::int64_t> line, std::optional<std::int64_t> column,
                                 std::optional<std::int64_t> length)
    : Handle(new object_value_evaluation_error(getClass().object(), message, {offset, line, column, length})) {}
bool EvaluationError::matches(const object_value* object) noexcept {
  // A class derived from it may have made a plain error.
  return is_error_of(object, internal::evaluation_error_class) &&
         dynamic_cast<const object_value_evaluation_error*>(object) != nullptr;
}
Type EvaluationError::getType() { return Type::of(getClass()); }
Class_Generic EvaluationError::getClass() { return internal::evaluation_error_class.required(); }

}  // namespace ling
