// Attribute names: from Python's str to the interned name of a member, without looking at the text when the same str
// came before. The lock must be held for everything.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/name.h"

namespace ling::cpython {

struct special_name;

// The text of a str as UTF-8. False, with Python's exception set, for what is no str or cannot be encoded.
class utf8_text {
 public:
  explicit utf8_text(PyObject* text) noexcept : bytes_(PyUnicode_AsUTF8String(text)) {}
  explicit operator bool() const noexcept { return static_cast<bool>(bytes_); }
  std::string_view view() const noexcept {
    return {PyBytes_AsString(bytes_.get()), static_cast<std::size_t>(PyBytes_Size(bytes_.get()))};
  }

 private:
  PyObjectPtr bytes_;
};

// What a name means to the attribute dispatcher.
struct attribute_name {
  enum class kind : unsigned char {
    member,   // `entry` is set
    unknown,  // no member of anything has ever had this name
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

// The interned name for a member that may yet have to be added, whatever it begins with; null with an exception set.
const name_entry* member_name_of(PyObject* name);

}  // namespace ling::cpython
