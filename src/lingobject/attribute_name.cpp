// The cache of attribute names.
#include "lingobject/attribute_name.h"

#include "ling/detail/declarations.h"
#include "lingobject/special_names.h"
#include "python/type_layout.h"

#include <array>
#include <bit>

namespace ling::cpython {

namespace {

struct cached_name {
  PyObject* text = nullptr;  // an own reference, so that the address cannot come to mean another text
  attribute_name name{attribute_name::kind::invalid, {nullptr}};
  std::uint64_t as_of = 0;  // the declarations among which an unknown name was not found
};

// Direct-mapped; a name in source code is one str object for the life of its code. Guarded by the interpreter lock.
constexpr std::size_t cache_size = 1024;
constinit std::array<cached_name, cache_size> cache;

cached_name& cached(const PyObject* text) noexcept {
  const auto address = std::bit_cast<std::uintptr_t>(text);
  return cache[(address >> 4) % cache_size];
}

attribute_name interpret(std::string_view text) {
  using enum attribute_name::kind;
  attribute_name name{hidden, {nullptr}};
  if (text.starts_with('_')) {
    if (const special_name* special_row = find_special_name(text)) {
      name.meaning = special;
      name.special = special_row;
    }
    return name;
  }
  // Names that are only asked for are not interned: there is no end to them, and interned names are kept for ever.
  name.entry = internal::find_interned(text);
  name.meaning = name.entry == nullptr ? unknown : member;
  return name;
}

void remember(PyObject* text, const attribute_name& name, std::uint64_t as_of) {
  cached_name& place = cached(text);
  Py_IncRef(text);
  const PyObjectPtr former(std::exchange(place.text, text));
  place.name = name;
  place.as_of = as_of;
}

bool is_current(const cached_name& place) noexcept {
  return place.name.meaning != attribute_name::kind::unknown || place.as_of == internal::declarations();
}

}  // namespace

bool may_be_kept(PyObject* name) noexcept {
  constexpr Py_ssize_t longest = 100;
  return Py_TYPE(name) == &PyUnicode_Type && PyUnicode_GetLength(name) <= longest;
}

attribute_name attribute_name_of(PyObject* name) {
  if (const cached_name& place = cached(name); place.text == name && is_current(place)) [[likely]] {
    return place.name;
  }
  const std::uint64_t as_of = internal::declarations();
  const utf8_text text(name);
  if (!text) {
    return {attribute_name::kind::invalid, {nullptr}};
  }
  const attribute_name meaning = interpret(text.view());
  if (may_be_kept(name)) {
    remember(name, meaning, as_of);
  }
  return meaning;
}

member_name::member_name(PyObject* name) {
  if (const cached_name& place = cached(name);
      place.text == name && place.name.meaning == attribute_name::kind::member) {
    entry_ = place.name.entry;
  } else if (text_.emplace(name); *text_) {
    entry_ = &*own_.emplace(text_->view());
  }
}

}  // namespace ling::cpython
