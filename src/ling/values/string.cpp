// String: storage, positions in code points, and the operations of the C++ handle. Its class is in string_class.cpp.
#include "ling/string.h"

#include "ling/byte_array.h"
#include "ling/detail/definitions.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/slice.h"
#include "ling/reflection.h"
#include "ling/values/utf8.h"

#include <algorithm>
#include <new>

namespace ling {

namespace {

constexpr std::string_view white_space = " \t\n\v\f\r";

bool is_ascii(const String& text) noexcept { return text.size() == text.length(); }

std::size_t offset_of(const String& text, std::size_t position) noexcept {
  return is_ascii(text) ? std::min(position, text.size()) : internal::utf8::offset_of(text.view(), position);
}

// The code point position of a byte that view().find or rfind has found.
std::int64_t position_of(const String& text, std::size_t offset) noexcept {
  if (offset == std::string_view::npos) {
    return String::npos;
  }
  return static_cast<std::int64_t>(is_ascii(text) ? offset : internal::utf8::count(text.view().substr(0, offset)));
}

}  // namespace

// --- storage ---------------------------------------------------------------------------------------------------------

object_value_string* object_value_string::create(std::string_view utf8) {
  if (utf8.empty()) {
    // One shared object, never destroyed.
    alignas(object_value_string) static char memory[sizeof(object_value_string) + 1]{};
    static auto* const empty = ::new (static_cast<void*>(memory)) object_value_string(0, 0, object_traits::immortal);
    return empty;
  }
  const internal::utf8::measure text = internal::utf8::measure_bytes(utf8);
  auto* const created = new (text_memory{text.size + 1}) object_value_string(text.size, text.length);
  char* const out = reinterpret_cast<char*>(created + 1);
  if (text.valid) [[likely]] {
    std::copy(utf8.begin(), utf8.end(), out);
  } else {
    internal::utf8::repair(utf8, out);
  }
  out[text.size] = '\0';
  return created;
}

void* object_value_string::operator new(std::size_t object_size, text_memory text) {
  return ::operator new(object_size + text.size);
}

object_value_class& object_value_string::object_class() const { return internal::string_class.required(); }

std::uint64_t object_value_string::hash() const noexcept {
  std::uint64_t hash = hash_.load(std::memory_order_relaxed);
  if (hash == 0) {
    // Threads that race here store the same number.
    hash = internal::hash_text(view());
    hash_.store(hash, std::memory_order_relaxed);
  }
  return hash;
}

// --- the handle ------------------------------------------------------------------------------------------------------

Any internal::string_any(std::string_view utf8) { return String(utf8); }

String::String() : String(std::string_view()) {}

Type String::getType() { return Type::of(getClass()); }

Class_Generic String::getClass() { return Class_Generic(internal::string_class.required()); }

ByteArray String::toUtf8() const { return ByteArray(view()); }

String String::substr(std::size_t position, std::size_t count) const {
  const std::size_t start = offset_of(*this, position);
  if (start == 0 && count >= length()) {
    return *this;
  }
  const std::string_view rest = view().substr(start);
  const std::size_t size = is_ascii(*this) ? std::min(count, rest.size()) : internal::utf8::offset_of(rest, count);
  return String(rest.substr(0, size));
}

String String::sliced(std::int64_t start, std::int64_t stop) const {
  const internal::slice_range range = internal::clamp_slice(start, stop, length());
  return substr(range.start, range.stop - range.start);
}

std::int64_t String::find(std::string_view needle, std::size_t from) const noexcept {
  if (from > length()) {
    return npos;
  }
  return position_of(*this, view().find(needle, offset_of(*this, from)));
}

std::int64_t String::rfind(std::string_view needle) const noexcept { return position_of(*this, view().rfind(needle)); }

std::vector<String> String::split(char separator) const {
  std::vector<String> pieces;
  std::string_view rest = view();
  for (std::size_t end = rest.find(separator); end != std::string_view::npos; end = rest.find(separator)) {
    pieces.emplace_back(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  pieces.emplace_back(rest);
  return pieces;
}

String String::replaced(std::string_view from, std::string_view to) const {
  std::string_view rest = view();
  std::size_t found = from.empty() ? std::string_view::npos : rest.find(from);
  if (found == std::string_view::npos) {
    return *this;
  }
  std::string text;
  for (; found != std::string_view::npos; found = rest.find(from)) {
    text.append(rest.substr(0, found)).append(to);
    rest.remove_prefix(found + from.size());
  }
  return String(text.append(rest));
}

String String::trimmed() const {
  const std::string_view text = view();
  const std::size_t first = text.find_first_not_of(white_space);
  if (first == std::string_view::npos) {
    return String();
  }
  const std::size_t last = text.find_last_not_of(white_space);
  return first == 0 && last + 1 == text.size() ? *this : String(text.substr(first, last + 1 - first));
}

String String::arg(std::initializer_list<Any> arguments) const {
  std::string text;
  std::string_view rest = view();
  for (const Any& argument : arguments) {
    const std::size_t hole = rest.find("{}");
    if (hole == std::string_view::npos) {
      break;
    }
    text.append(rest.substr(0, hole)).append(display_text(argument).view());
    rest.remove_prefix(hole + 2);
  }
  return String(text.append(rest));
}

}  // namespace ling
