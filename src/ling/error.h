// Error and its kinds: failures as values.
//
// An Error is an object with identity: the same error that left a function arrives at whoever asked, across modules and
// languages. StopIteration ends an iteration, BadArgument names a wrong argument, EvaluationError points into a source.
//
// Threads: the parts of an error are guarded by its lock.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"
#include "ling/union.h"

#include <cstdint>
#include <exception>
#include <new>
#include <optional>

namespace ling {

class Class_Generic;

class LING_API object_value_error : public object_value_instance {
 public:
  // Of the further traits, only those of errors: out_of_memory, interruption.
  object_value_error(object_value_class& of_class, String message, object_traits more = object_traits::none);

  String message() const;
  // A String, or a lazy value that puts it together only when it is asked.
  Any stack() const;
  void set_stack(Any stack);
  // The same, unless another one was set meanwhile.
  void replace_stack(const Any& former, Any stack);
  // As it was set, which may be a lazy value that says what the error belongs to only when it is asked.
  Any value() const;
  void set_value(Any value);
  std::exception_ptr cause() const;
  void set_cause(std::exception_ptr cause);

 protected:
  // For the error that is there before its class: the derived class answers `object_class`.
  object_value_error(String message, object_traits more);

 private:
  const String message_;
  Any stack_;
  Any value_;
  std::exception_ptr cause_;
};

class LING_API Error : public Handle<Error, object_value_error> {
  LING_HANDLE(Error, object_value_error)
  explicit Error(const String& message);
  explicit Error(const char* message) : Error(String(message)) {}
  // An error of a class derived from Error, which the caller knows it to be.
  Error(const Class_Generic& error_class, const String& message);

  // An error without details.
  static Error unknown();
  // The error that says that memory has run out: one object, which is there from the start and never changes, so that
  // having it takes no memory; or, where there is more to say, one of its own.
  static Error outOfMemory() noexcept;
  static Error outOfMemory(const String& message);
  // The error of a request to stop, such as an interrupt or an exit: it ends more than the operation that answers it,
  // and those who make do without an answer pass it on.
  static Error interruption(const String& message);
  // The error for the C++ exception being handled: a thrown Error is that error, std::bad_alloc is outOfMemory(), any
  // other exception becomes the cause of a new one with its text. Only inside a catch clause.
  static Error fromCurrentException() noexcept;

  // Whether it says that memory has run out.
  bool isOutOfMemory() const noexcept { return has(object_traits::out_of_memory); }
  // Whether it stands for a request to stop.
  bool isInterruption() const noexcept { return has(object_traits::interruption); }
  String message() const { return object().message(); }
  // Where it happened, as text for people; empty when unknown.
  String stack() const;
  // A value the thrower attached, None when there is none. What a lazy one yields.
  Any value() const;
  // The C++ exception behind this error; empty when there is none.
  std::exception_ptr cause() const { return object().cause(); }
  void setStack(const String& stack) const { object().set_stack(stack); }
  void setValue(const Any& value) const { object().set_value(value); }
  void setCause(std::exception_ptr cause) const { object().set_cause(std::move(cause)); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->has(object_traits::error);
  }
  static Type getType();
  static Class_Generic getClass();
};

// The end of an iteration.
class LING_API StopIteration : public Handle<StopIteration, object_value_error, Error> {
  LING_HANDLE(StopIteration, object_value_error)
  StopIteration();
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// A wrong argument: too many, too few, unknown by name, of another type, out of range.
class LING_API BadArgument : public Handle<BadArgument, object_value_error, Error> {
  LING_HANDLE(BadArgument, object_value_error)
  explicit BadArgument(const String& message);
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// Where in a source text an error lies. Lines and columns count from 1; the length counts code points.
struct source_position {
  std::optional<std::int64_t> offset;  // from the start of the text
  std::optional<std::int64_t> line;
  std::optional<std::int64_t> column;
  std::optional<std::int64_t> length;
};

class LING_API object_value_evaluation_error final : public object_value_error {
 public:
  object_value_evaluation_error(object_value_class& of_class, String message, source_position position,
                                object_traits more = object_traits::none)
      : object_value_error(of_class, std::move(message), more), position_(position) {}
  const source_position& position() const noexcept { return position_; }

 private:
  const source_position position_;
};

class LING_API EvaluationError : public Handle<EvaluationError, object_value_evaluation_error, Error> {
  LING_HANDLE(EvaluationError, object_value_evaluation_error)
  EvaluationError(const String& message, std::optional<std::int64_t> offset, std::optional<std::int64_t> line,
                  std::optional<std::int64_t> column, std::optional<std::int64_t> length);
  std::optional<std::int64_t> offset() const noexcept { return object().position().offset; }
  std::optional<std::int64_t> line() const noexcept { return object().position().line; }
  std::optional<std::int64_t> column() const noexcept { return object().position().column; }
  std::optional<std::int64_t> length() const noexcept { return object().position().length; }

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

namespace internal {

[[noreturn]] LING_API void throw_intolerable(const Any& error);

// Runs what must not throw: what is thrown becomes an Error.
template <class F>
auto guarded(const F& body) noexcept -> decltype(body()) {
  try {
    return body();
  } catch (...) {
    return Error::fromCurrentException();
  }
}

// What nobody can make do without an answer for: the answer would be a wrong one.
constexpr object_traits intolerable = object_traits::out_of_memory | object_traits::interruption;

// For those who make do without what an Error keeps from them. Exhausted memory is thrown on, as std::bad_alloc, and so
// is an interruption, as that Error.
inline void tolerate_error(const Any& outcome) {
  if (outcome.has(intolerable)) [[unlikely]] {
    throw_intolerable(outcome);
  }
}

}  // namespace internal

template <class... Alternatives>
Error Union<Alternatives...>::error() const noexcept {
  assert(is_error());
  return Error::unchecked(*this);
}

}  // namespace ling
