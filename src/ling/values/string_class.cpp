// The class String.
#include "ling/detail/definitions.h"
#include "ling/detail/slice.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

namespace ling {

namespace {

// Any value as text: what it converts to, else what people are shown.
Any make_string(const Any& value) {
  const Any text = String::getClass().coerce(value);
  return is_error_result(text) ? Any(display(value)) : text;
}

Result<String> character_at(const String& text, std::int64_t index) {
  const auto position = internal::resolve_index(index, text.length());
  if (!position) {
    return Error(String("The index {} is out of range for a text of length {}.").arg(index, text.length()));
  }
  return text.substr(*position, 1);
}

Result<List_Generic> split(const String& text, std::string_view separator) {
  if (separator.size() != 1) {
    return BadArgument(String("The separator must be one ASCII character, not '{}'.").arg(separator));
  }
  const std::vector<String> pieces = text.split(separator[0]);
  return List_Generic(std::vector<Any>(pieces.begin(), pieces.end()));
}

}  // namespace

namespace internal {

constinit const class_definition<String> string_class("String", [](class_builder<String>& c) {
  c.module("ling")
      .doc("Immutable text. Positions and lengths count code points.")
      .parent(I_Immutable::getClass())
      .constructor("value", "The text of a value, as people are shown it.",
                   [](const Class_Generic&, const Any& value) { return make_string(value); })
      .property("__length__", "The number of code points.", &String::length)
      .method("at", "index", "The code point at an index; negative ones count from the end.", &character_at)
      .method("contains", "text", "Whether the text occurs in this one.", &String::contains)
      .method("find", "text, from", "Where the text first occurs from a position on, -1 when it does not.",
              &String::find, {Any(0)})
      .method("rfind", "text", "Where the text occurs last, -1 when it does not.", &String::rfind)
      .method("sliced", "start, stop", "The part from a position up to another; negative ones count from the end.",
              &String::sliced, {Any(INT64_MAX)})
      .method("split", "separator", "A list of the pieces between the separators, which are one character.", &split)
      .method("replaced", "from, to", "This text with every occurrence of one text replaced by another.",
              &String::replaced)
      .method("trimmed", "", "This text without white space at its ends.", &String::trimmed)
      .method("startsWith", "prefix", "Whether this text begins with another.", &String::startsWith)
      .method("endsWith", "suffix", "Whether this text ends with another.", &String::endsWith)
      .method("toUtf8", "", "The text as bytes in UTF-8.", &String::toUtf8);
});

}  // namespace internal

}  // namespace ling
