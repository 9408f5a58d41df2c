// Texts of attributes that are missing.
#include "lingobject/missing_attribute.h"

#include "ling/class.h"
#include "ling/detail/declarations.h"
#include "ling/reflection.h"
#include "lingobject/attribute_name.h"

#include <array>
#include <bit>

namespace ling::cpython {

namespace {

struct kept_message {
  const object_value_class* of_class = nullptr;  // classes of objects are immortal
  PyObject* name = nullptr;                      // an own reference, as the next
  PyObject* message = nullptr;
  std::uint64_t as_of = 0;  // qualified names change when something is declared
};

// Direct-mapped. Guarded by the interpreter lock.
constinit std::array<kept_message, 256> kept_messages{};

kept_message& place_of(const object_value_class& of_class, const PyObject* name) noexcept {
  const auto address = std::bit_cast<std::uintptr_t>(&of_class) ^ std::bit_cast<std::uintptr_t>(name);
  return kept_messages[(address >> 4) % kept_messages.size()];
}

PyObjectPtr make_message(object_value_class& of_class, PyObject* name) {
  const utf8_text text(name);
  if (!text) {
    return {};
  }
  return to_python_locked(
      String("'{}' object has no attribute '{}'").arg(qualname(Class_Generic(of_class)), text.view()));
}

// Null with an exception set when there is no memory.
PyObjectPtr message_of(object_value_class& of_class, PyObject* name) {
  const std::uint64_t now = internal::declarations();
  kept_message& place = place_of(of_class, name);
  if (place.name == name && place.of_class == &of_class && place.as_of == now) [[likely]] {
    return PyObjectPtr::share(place.message);
  }
  PyObjectPtr message = make_message(of_class, name);
  if (message && may_be_kept(name)) {
    const PyObjectPtr former_name(std::exchange(place.name, PyObjectPtr::share(name).release()));
    const PyObjectPtr former_message(std::exchange(place.message, PyObjectPtr::share(message.get()).release()));
    place.of_class = &of_class;
    place.as_of = now;
  }
  return message;
}

}  // namespace

slot_result error_no_attribute(object_value_class& of_class, PyObject* name) {
  const PyObjectPtr message = message_of(of_class, name);
  if (message) {
    PyErr_SetObject(PyExc_AttributeError, message.get());
  }
  return slot_result::raised();
}

}  // namespace ling::cpython
