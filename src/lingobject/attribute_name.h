// Attribute names: from Python's str to the interned name of a member, without looking at the text when the same str
// came before. The lock must be held for everything.
#pragma once

#include "ling/name.h"
#include "python/python_text.h"

#include <optional>

namespace ling::cpython {

struct special_name;

// The text of a str as UTF-8, for as long as the str is held. False, with Python's exception set, for what is no str or
// cannot be encoded.
class utf8_text {
 public:
  explicit utf8_text(PyObject* text) noexcept : bytes_(utf8_in(text, &size_)) {}
  explicit operator bool() const noexcept { return bytes_ != nullptr; }
  std::string_view view() const noexcept { return {bytes_, static_cast<std::size_t>(size_)}; }

 private:
  Py_ssize_t size_ = 0;
  const char* bytes_;
};

// What a name means to the attribute dispatcher.
struct attribute_name {
  enum class kind : unsigned char {
    member,   // `entry` is set
    unknown,  // nothing declares a member of this name; an object may have one of its own
    special,  // `special` is set
    hidden,   // begins with "_" and is not special
    invalid,  // an exception is set
  };
  kind meaning;
  union {
    const name_entry* entry = nullptr;
    const special_name* special;
  };
};

attribute_name attribute_name_of(PyObject* name);

// Whether a cache may keep the str of a name: nothing but a str, so that nobody notices, and of the length of a name,
// since there may come any text.
bool may_be_kept(PyObject* name) noexcept;

// The name of a member that may yet have to be added, whatever it begins with. False with an exception set for what is
// no name.
class member_name {
 public:
  explicit member_name(PyObject* name);
  explicit operator bool() const noexcept { return entry_ != nullptr; }
  const name_entry& operator*() const noexcept { return *entry_; }

 private:
  const name_entry* entry_ = nullptr;
  std::optional<utf8_text> text_;
  std::optional<internal::name_to_look_up> own_;
};

}  // namespace ling::cpython
