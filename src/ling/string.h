// String: the runtime's immutable text.
//
// Text is stored as valid UTF-8; bytes that are not (overlong forms, surrogates, stray bytes) become U+FFFD when a
// String is made. `length`, `substr`, `sliced`, `find` and `rfind` count code points; they take constant time per step
// on ASCII text and walk the bytes otherwise. `size` and `c_str` speak of bytes.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/any.h"
#include "ling/name.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ling {

class ByteArray;
class Class_Generic;

// The bytes follow the object in the same allocation, with a zero byte behind the last.
class LING_API object_value_string final : public object_value {
 public:
  // An object with one reference for the caller. Invalid UTF-8 is replaced.
  static object_value_string* create(std::string_view utf8);

  ObjectType type() const noexcept override { return ObjectType::String; }
  object_value_class& object_class() const override;

  std::string_view view() const noexcept { return {data(), size_}; }
  const char* data() const noexcept { return reinterpret_cast<const char*>(this + 1); }
  std::size_t size() const noexcept { return size_; }
  std::size_t length() const noexcept { return length_; }
  std::uint64_t hash() const noexcept;

  static void operator delete(void* memory) noexcept { ::operator delete(memory); }

 private:
  struct text_memory {
    std::size_t size;
  };
  object_value_string(std::size_t size, std::size_t length, object_traits traits = object_traits::none) noexcept
      : object_value(traits | object_traits::leaf), size_(size), length_(length) {}
  static void* operator new(std::size_t object_size, text_memory text);
  static void operator delete(void* memory, text_memory) noexcept { ::operator delete(memory); }

  std::size_t size_;
  std::size_t length_;
  mutable std::atomic<std::uint64_t> hash_{0};  // 0: not computed yet
};

class LING_API String : public Handle<String, object_value_string> {
  LING_HANDLE(String, object_value_string)
  String();  // the empty text
  String(std::string_view utf8) : Handle(object_value_string::create(utf8)) {}
  String(const char* utf8) : String(std::string_view(utf8)) {}
  String(const std::string& utf8) : String(std::string_view(utf8)) {}

  static String fromUtf8(const char* bytes, std::size_t length) { return String(std::string_view(bytes, length)); }
  ByteArray toUtf8() const;
  std::string_view view() const noexcept LING_LIFETIMEBOUND { return object().view(); }
  const char* c_str() const noexcept LING_LIFETIMEBOUND { return object().data(); }
  std::size_t size() const noexcept { return object().size(); }      // bytes
  std::size_t length() const noexcept { return object().length(); }  // code points
  bool empty() const noexcept { return size() == 0; }

  static constexpr std::int64_t npos = -1;
  // The text of `count` code points from `position` on; positions past the end give the empty text.
  String substr(std::size_t position, std::size_t count = SIZE_MAX) const;
  // The text from code point `start` up to `stop`; negative positions count from the end, both are clamped.
  String sliced(std::int64_t start, std::int64_t stop = INT64_MAX) const;
  // The code point position of the first (last) occurrence, npos when there is none.
  std::int64_t find(std::string_view needle, std::size_t from = 0) const noexcept;
  std::int64_t rfind(std::string_view needle) const noexcept;
  bool contains(std::string_view needle) const noexcept { return view().find(needle) != std::string_view::npos; }
  bool startsWith(std::string_view prefix) const noexcept { return view().starts_with(prefix); }
  bool endsWith(std::string_view suffix) const noexcept { return view().ends_with(suffix); }
  // The pieces between separators; n separators give n + 1 pieces, empty ones included.
  std::vector<String> split(char separator) const;
  String replaced(std::string_view from, std::string_view to) const;
  String trimmed() const;  // without ASCII white space at both ends

  // Fills the placeholders "{}" from left to right with the display texts of the arguments. Placeholders without an
  // argument stay, arguments without a placeholder are dropped. "{{" is not special.
  String arg(std::initializer_list<Any> arguments) const;
  template <class... Arguments>
  String arg(const Arguments&... arguments) const {
    return arg({Any(arguments)...});
  }

  friend bool operator==(const String& a, const String& b) noexcept { return a.view() == b.view(); }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept { return a.view() == b; }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::String;
  }
  static Type getType();
  static Class_Generic getClass();
};

// Concatenates pieces into one String.
class LING_API string_builder {
 public:
  string_builder& append(std::string_view text) {
    text_.append(text);
    return *this;
  }
  string_builder& append(const char* text) { return append(std::string_view(text)); }
  string_builder& append(const String& text) { return append(text.view()); }
  string_builder& append(char character) {
    text_.push_back(character);
    return *this;
  }
  bool empty() const noexcept { return text_.empty(); }
  String build() const { return String(text_); }

 private:
  std::string text_;
};

template <class Kind>
meta_name<Kind>::meta_name(const String& text) : meta_name(text.view()) {}

namespace internal {
LING_API String name_string(const name_entry& entry);
}
template <class Kind>
String meta_name<Kind>::name() const {
  return internal::name_string(*entry_);
}

}  // namespace ling
