// display: the text of any value for people. One dispatch on the kinds of value.
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/nesting.h"
#include "ling/error.h"
#include "ling/hash_set.h"
#include "ling/list.h"
#include "ling/module.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <charconv>
#include <cmath>
#include <string>

namespace ling {

namespace {

// --- plain values ----------------------------------------------------------------------------------------------------

// Between double quotes. Text keeps what is above ASCII, bytes do not.
void write_quoted(std::string& out, std::string_view bytes, bool is_text) {
  constexpr char digits[] = "0123456789abcdef";
  out += '"';
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    switch (each) {
      case '"':
      case '\\':
        (out += '\\') += each;
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !is_text)) {
          ((out += "\\x") += digits[byte >> 4]) += digits[byte & 15];
        } else {
          out += each;
        }
    }
  }
  out += '"';
}

template <class Number>
void write_shortest(std::string& out, Number number) {
  char digits[32];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void write_integer(std::string& out, const Integer& integer) {
  integer.is_signed() ? write_shortest(out, integer.value()) : write_shortest(out, integer.unsigned_value());
}

// The shortest text that reads back as the same number, told from an integer by its point, exponent or name.
void write_float(std::string& out, double number) {
  if (std::isnan(number)) {
    out += "nan";
    return;
  }
  const std::size_t start = out.size();
  write_shortest(out, number);
  if (out.find_first_of(".en", start) == std::string::npos) {
    out += ".0";
  }
}

// --- the walk --------------------------------------------------------------------------------------------------------

// The objects whose text is being made on this thread, innermost first. Kept per thread and not per walk, because a
// `__display__` that displays its parts starts a new walk.
struct shown_object {
  const object_value* object;
  const shown_object* outer;
};
constinit thread_local const shown_object* g_shown = nullptr;

class [[nodiscard]] showing {
 public:
  explicit showing(const Any& value) noexcept : shown_{value.get(), g_shown}, again_(is_shown(value.get())) {
    g_shown = &shown_;
  }
  ~showing() { g_shown = shown_.outer; }
  showing(const showing&) = delete;
  showing& operator=(const showing&) = delete;

  // Whether the object holds itself, or lies too deep to go into.
  bool must_stop() const noexcept { return again_ || level_.too_deep(); }

 private:
  static bool is_shown(const object_value* object) noexcept {
    for (const shown_object* each = g_shown; each != nullptr; each = each->outer) {
      if (each->object == object) {
        return true;
      }
    }
    return false;
  }

  const internal::nesting level_;
  const shown_object shown_;
  const bool again_;
};

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
      write_integer(text_, Integer::unchecked(value));
      return true;
    case ObjectType::Float:
      write_float(text_, Float::unchecked(value).value());
      return true;
    case ObjectType::String:
      inside_container ? write_quoted(text_, String::unchecked(value).view(), true)
                       : void(text_ += String::unchecked(value).view());
      return true;
    case ObjectType::ByteArray:
      text_ += 'b';
      write_quoted(text_, ByteArray::unchecked(value).view(), false);
      return true;
    case ObjectType::Tuple: {
      const std::span<const Any> items = Tuple_Generic::unchecked(value).items();
      return write_items(value, "(", items.size() == 1 ? ",)" : ")", items);
    }
    case ObjectType::List:
      return write_items(value, "[", "]", List_Generic::unchecked(value).copyItems());
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
  const bool is_bound = dynamic_cast<const object_value_bound*>(callable.get()) != nullptr;
  write_named(is_bound || !callable.isIndependent() ? "method " : "function ", qualname(callable));
}

void display_writer::write_named(std::string_view kind, const String& name) {
  (((text_ += '<') += kind) += name.view()) += '>';
}

bool display_writer::take_error(const Any& instance, const Any& error) {
  if (policy_ == on_error::end) {
    error_ = error;
    return false;
  }
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
