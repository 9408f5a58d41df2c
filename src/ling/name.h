// Interned member names. Two names with the same text are the same pointer, so looking up what a class declares
// compares and hashes pointers, never text. Interned names live for the life of the process: names are interned where
// something is declared, and looked up, whatever a script or its data asks for, without being interned
// (`name_to_look_up`).
//
// Threads: any.
#pragma once

#include "ling/export.h"
#include "ling/published.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ling {

class String;
class object_value;

// One name. `text` is UTF-8, that of an interned name zero-terminated.
struct name_entry {
  std::string_view text;
  std::uint32_t hash;
  mutable internal::published<object_value> string;  // the text as a String, made on first request

  constexpr name_entry(std::string_view name_text, std::uint32_t name_hash) noexcept
      : text(name_text), hash(name_hash) {}
};

namespace internal {
// The entry of a text, made on first request. Any thread.
LING_API const name_entry& intern(std::string_view text);
// The entry of a text that was interned before, or null. Any thread.
LING_API const name_entry* find_interned(std::string_view text) noexcept;

// A name to look something up by: the interned one, else one of its own, which is that of no declared member. Borrows
// the text; nobody may keep the entry beyond the life of this.
class LING_API name_to_look_up {
 public:
  explicit name_to_look_up(std::string_view text) noexcept;
  ~name_to_look_up();
  name_to_look_up(const name_to_look_up&) = delete;
  name_to_look_up& operator=(const name_to_look_up&) = delete;
  const name_entry& operator*() const noexcept { return interned_ == nullptr ? own_ : *interned_; }

 private:
  name_entry own_;
  const name_entry* interned_;
};
}  // namespace internal

// The three kinds of member name differ only in type, so that none is passed where another is meant.
template <class Kind>
class meta_name {
 public:
  // Interns: for names that are written in code.
  explicit meta_name(std::string_view text) : entry_(&internal::intern(text)) {}
  explicit meta_name(const char* text) : meta_name(std::string_view(text)) {}
  explicit meta_name(const String& text);  // string.h
  // Borrows the entry. For names that come as data: `name_to_look_up`.
  constexpr explicit meta_name(const name_entry& entry) noexcept : entry_(&entry) {}

  String name() const;  // string.h
  constexpr std::string_view text() const noexcept { return entry_->text; }
  constexpr const name_entry& entry() const noexcept { return *entry_; }
  friend constexpr bool operator==(meta_name a, meta_name b) noexcept { return a.entry_ == b.entry_; }

 private:
  const name_entry* entry_;
};

using meta_method_untyped = meta_name<struct method_kind>;
using meta_property_untyped = meta_name<struct property_kind>;
using meta_field_untyped = meta_name<struct field_kind>;

}  // namespace ling
