// ByteArray: its class, and how one is made from other values.
#include "ling/byte_array.h"

#include "ling/detail/definitions.h"
#include "ling/detail/slice.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/values/utf8.h"

namespace ling {

namespace {

Result<ByteArray> bytes_of_items(const std::vector<Any>& items) {
  std::string bytes;
  bytes.reserve(items.size());
  for (const Any& item : items) {
    internal::argument<std::uint8_t> byte;
    if (!byte.read(item)) {
      return BadArgument(String("The item {} at index {} is not a byte: an Integer from 0 to 255 was expected.")
                             .arg(item, bytes.size()));
    }
    bytes.push_back(static_cast<char>(byte.get()));
  }
  return ByteArray(bytes);
}

Result<ByteArray> make_byte_array(const Any& value) {
  const Any given = internal::unwrap(value);
  if (const auto iterable = I_Iterable_Generic::cast(given)) {
    const List_Generic items = TRY(iterable->toList());
    return bytes_of_items(items.copyItems());
  }
  return Result<ByteArray>::unchecked(ByteArray::getClass().coerce(given));
}

Result<Integer> byte_at(const ByteArray& bytes, std::int64_t index) {
  const auto position = internal::resolve_index(index, bytes.length());
  if (!position) {
    return Error(String("The index {} is out of range for {} bytes.").arg(index, bytes.length()));
  }
  return Integer(static_cast<std::uint8_t>(bytes.data()[*position]));
}

ByteArray slice_of(const ByteArray& bytes, std::int64_t start, std::int64_t stop) {
  const internal::slice_range range = internal::clamp_slice(start, stop, bytes.length());
  return ByteArray(bytes.view().substr(range.start, range.stop - range.start));
}

Result<String> decoded(const ByteArray& bytes) {
  const internal::utf8::measure text = internal::utf8::measure_bytes(bytes.view());
  if (!text.valid) {
    return Error(String("The {} bytes are not valid UTF-8.").arg(bytes.length()));
  }
  return String(bytes.view());
}

}  // namespace

namespace internal {

constinit const class_definition<ByteArray> byte_array_class("ByteArray", [](class_builder<ByteArray>& c) {
  c.module("ling")
      .doc("An immutable sequence of bytes.")
      .parent(I_Immutable::getClass())
      .constructor("value", "From a String (as UTF-8), a ByteArray, or integers from 0 to 255.",
                   [](const Class_Generic&, const Any& value) { return make_byte_array(value); })
      .property("__length__", "The number of bytes.", &ByteArray::length)
      .method("at", "index", "The byte at an index, as an Integer; negative ones count from the end.", &byte_at)
      .method("sliced", "start, stop", "The bytes from a position up to another; negative ones count from the end.",
              &slice_of, {Any(INT64_MAX)})
      .method("toString", "", "The text the bytes are the UTF-8 of.", &decoded);
});

}  // namespace internal

object_value_class& object_value_byte_array::object_class() const { return internal::byte_array_class.required(); }

Type ByteArray::getType() { return Type::of(getClass()); }

Class_Generic ByteArray::getClass() { return Class_Generic(internal::byte_array_class.required()); }

}  // namespace ling
