// display: the text of any value for people. One dispatch on the kinds of value.
#include "ling/algorithms/plain_text.h"
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/nesting.h"
#include "ling/detail/under_way.h"
#include "ling/error.h"
#include "ling/hash_set.h"
#include "ling/list.h"
#include "ling/module.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <algorithm>
#include <string>

namespace ling {

namespace {

// The objects whose text is being made on this thread, innermost first. Kept per thread and not per walk, because a
// `__display__` that displays its parts starts a new walk.
struct shown_object {
  std::uintptr_t identity;  // what an object stands for may come again as another object
  bool operator==(const shown_object&) const = default;
};

class [[nodiscard]] showing {
 public:
  explicit showing(const Any& value) noexcept
      : again_(shown::has({value.get()->identity()})), shown_({value.get()->identity()}) {}

  // Whether the object holds itself, or lies too deep to go into.
  bool must_stop() const noexcept { return again_ || level_.too_deep(); }

 private:
  using shown = internal::under_way<shown_object>;

  const internal::nesting level_;
  const bool again_;
  const shown shown_;
};

// Whether a callable has a receiver, or is yet to get one.
bool is_method(const I_Callable_Generic& callable) {
  if (const auto* multimethod = dynamic_cast<const object_value_multimethod*>(callable.get())) {
    return std::ranges::any_of(multimethod->overloads(), &is_method);
  }
  return !callable.isIndependent() || dynamic_cast<const object_value_bound*>(callable.get()) != nullptr;
}

// What to do with an Error of a `__display__`.
enum class on_error { end, show };

class display_writer {
 public:
  explicit display_writer(on_error policy) noexcept : policy_(policy) {}

  // False when an error has ended the walk.
  bool write(const Any& value, bool inside_container = false);
  const std::string& text() const noexcept { return text_; }
  const Any& error() const noexcept { return error_; }

 private:
  bool write_items(const Any& container, std::string_view open, std::string_view close, std::span<const Any> items);
  bool write_pairs(const Any& map);
  bool write_instance(const Any& instance);
  bool write_known_instance(const Any& instance);
  void write_callable(const I_Callable_Generic& callable);
  void write_named(std::string_view kind, const String& name);
  bool take_error(const Any& instance, const Any& error);

  std::string text_;
  on_error policy_;
  Any error_;
};

bool display_writer::write(const Any& value, bool inside_container) {
  if (value.has(object_traits::lazy)) [[unlikely]] {
    const Any forced = internal::unwrap(value);
    return forced.has(object_traits::lazy) || write(forced, inside_container);
  }
  switch (value.type()) {
    case ObjectType::None:
      text_ += "None";
      return true;
    case ObjectType::Undefined:
      text_ += "Undefined";
      return true;
    case ObjectType::Boolean:
      text_ += Boolean::unchecked(value).value() ? "true" : "false";
      return true;
    case ObjectType::Integer:
      internal::write_integer(text_, static_cast<const object_value_integer&>(*value.get()));
      return true;
    case ObjectType::Float:
      internal::write_float(text_, Float::unchecked(value).value());
      return true;
    case ObjectType::String:
      inside_container ? internal::write_quoted(text_, String::unchecked(value).view(), true)
                       : void(text_ += String::unchecked(value).view());
      return true;
    case ObjectType::ByteArray:
      text_ += 'b';
      internal::write_quoted(text_, ByteArray::unchecked(value).view(), false);
      return true;
    case ObjectType::Tuple: {
      const std::span<const Any> items = static_cast<const object_value_tuple*>(value.get())->items();
      return write_items(value, "(", items.size() == 1 ? ",)" : ")", items);
    }
    case ObjectType::List: {
      const item_row row = static_cast<const object_value_list*>(value.get())->share_items();
      return write_items(value, "[", "]", row.items());
    }
    case ObjectType::HashMap:
      return write_pairs(value);
    case ObjectType::HashSet: {
      // Empty braces are a map.
      const std::vector<Any> items = HashSet_Generic::unchecked(value).copyItems();
      return items.empty() ? write_items(value, "HashSet(", ")", items) : write_items(value, "{", "}", items);
    }
    case ObjectType::Class:
      write_named("class ", qualname(value));
      return true;
    case ObjectType::Callable:
    case ObjectType::Multimethod:
      write_callable(I_Callable_Generic::unchecked(value));
      return true;
    case ObjectType::Instance:
      return write_instance(value);
    default:
      write_named("", qualname(value));
      return true;
  }
}

bool display_writer::write_items(const Any& container, std::string_view open, std::string_view close,
                                 std::span<const Any> items) {
  const showing guard(container);
  text_ += open;
  if (guard.must_stop()) {
    (text_ += "...") += close.back();
    return true;
  }
  std::string_view separator;
  for (const Any& item : items) {
    text_ += separator;
    if (!write(item, true)) {
      return false;
    }
    separator = ", ";
  }
  text_ += close;
  return true;
}

bool display_writer::write_pairs(const Any& map) {
  const showing guard(map);
  if (guard.must_stop()) {
    text_ += "{...}";
    return true;
  }
  text_ += '{';
  std::string_view separator;
  for (const auto& [key, value] : HashMap_Generic::unchecked(map).copyPairs()) {
    text_ += separator;
    if (!write(key, true)) {
      return false;
    }
    text_ += ": ";
    if (!write(value, true)) {
      return false;
    }
    separator = ", ";
  }
  text_ += '}';
  return true;
}

// By the `__display__` of the class, unless it is this very method that asks.
bool display_writer::write_instance(const Any& instance) {
  const class_member* member = instance.get()->object_class().find_member(Any::__display__.entry());
  const showing guard(instance);
  if (member == nullptr || member->method.empty() || guard.must_stop()) {
    return write_known_instance(instance);
  }
  const Any row[] = {instance};
  const Any shown = internal::unwrap(I_Callable_Generic::unchecked(member->method).callWith(row));
  if (String::matches(shown.get())) {
    text_ += String::unchecked(shown).view();
    return true;
  }
  if (is_error_result(shown)) {
    return take_error(instance, shown);
  }
  return take_error(instance, Error(String("The method '__display__' of {} returned {} instead of a String.")
                                        .arg(qualname(instance), qualname(shown))));
}

bool display_writer::write_known_instance(const Any& instance) {
  if (is_error_result(instance)) {
    const Error error = Error::unchecked(instance);
    ((text_ += raw_class_of(error).name().view()) += ": ") += error.message().view();
  } else if (const auto module = Module::cast(instance)) {
    write_named("module ", module->name());
  } else if (const auto type = Type::cast(instance)) {
    text_ += type->name().view();
  } else if (const auto signature = Signature::cast(instance)) {
    text_ += signature->toString().view();
  } else {
    write_named("", qualname(instance));
  }
  return true;
}

void display_writer::write_callable(const I_Callable_Generic& callable) {
  write_named(is_method(callable) ? "method " : "function ", qualname(callable));
}

void display_writer::write_named(std::string_view kind, const String& name) {
  (((text_ += '<') += kind) += name.view()) += '>';
}

bool display_writer::take_error(const Any& instance, const Any& error) {
  if (policy_ == on_error::end) {
    error_ = error;
    return false;
  }
  internal::tolerate_error(error);
  // The message alone: its own display may be what fails.
  write_named("", String("{}: {}").arg(qualname(instance), Error::unchecked(error).message()));
  return true;
}

}  // namespace

Result<String> display(const Any& value) {
  if (String::matches(value.get())) {
    return String::unchecked(value);
  }
  display_writer writer(on_error::end);
  if (!writer.write(value)) {
    return Result<String>::unchecked(writer.error());
  }
  return String(writer.text());
}

String display_text(const Any& value) {
  if (String::matches(value.get())) {
    return String::unchecked(value);
  }
  display_writer writer(on_error::show);
  writer.write(value);
  return String(writer.text());
}

}  // namespace ling
