// The texts that are kept.
#include "python/attribute_text.h"

#include "ling/detail/immortal.h"

#include <array>
#include <string>
#include <utility>

namespace ling::cpython {

namespace {

struct kept_text {
  std::string name;
  PyObjectPtr text;
};

// Bounded in number and size, since names may come as data. Guarded by the interpreter lock, outlives all static
// objects.
constexpr std::size_t most_texts = 512;
constexpr std::size_t longest_name = 64;
using kept_texts = std::array<kept_text, most_texts>;
kept_texts& all_kept() {
  static internal::immortal<kept_texts> kept;
  return kept.object;
}

}  // namespace

PyObjectPtr attribute_text(const name_entry& name) {
  kept_text& place = all_kept()[name.hash % most_texts];
  if (place.text && place.name == name.text) [[likely]] {
    return PyObjectPtr::share(place.text.get());
  }
  // Not interned: there are versions that keep what is interned for ever.
  PyObjectPtr text(PyUnicode_FromStringAndSize(name.text.data(), static_cast<Py_ssize_t>(name.text.size())));
  if (text && name.text.size() <= longest_name) {
    kept_text made{std::string(name.text), PyObjectPtr::share(text.get())};
    std::swap(place, made);
  }
  return text;
}

}  // namespace ling::cpython
