// Items by position and by key, membership, length.
#include "ling/detail/container_keys.h"
#include "ling/hash_set.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "lingobject/host_call.h"
#include "lingobject/ling_object.h"
#include "lingobject/slices.h"
#include "lingobject/slot_bodies.h"
#include "python/pending_exception.h"
#include "python/python_text.h"

#include <optional>

namespace ling::cpython {

namespace {

// The wrapped value, or what a lazy one yields, which may be an Error.
class subject {
 public:
  explicit subject(PyObject* self)
      : forced_(value_in(self).has(object_traits::lazy) ? internal::unwrap(value_in(self)) : Any()),
        value_(forced_.empty() ? value_in(self) : forced_) {}
  subject(const subject&) = delete;
  subject& operator=(const subject&) = delete;
  const Any& operator*() const noexcept { return value_; }

 private:
  const Any forced_;
  const Any& value_;
};

template <class Object>
Object& object_of(const Any& value) noexcept {
  return *static_cast<Object*>(value.get());
}

bool is_map(const Any& value) noexcept {
  return value.type() == ObjectType::HashMap ||
         (value.type() == ObjectType::Instance && I_Map_Generic::matches(value.get()));
}
bool is_sequence(const Any& value) noexcept {
  return value.type() == ObjectType::List || I_Sequence_Generic::matches(value.get());
}

// --- length ----------------------------------------------------------------------------------------------------------

Any length_of(const Any& value) {
  switch (value.type()) {
    case ObjectType::List:
      return borrowed<List_Generic>(value)->length();
    case ObjectType::HashMap:
      return borrowed<HashMap_Generic>(value)->length();
    case ObjectType::HashSet:
      return borrowed<HashSet_Generic>(value)->length();
    default:
      break;
  }
  const bool has_length = class_of(value).object().has_flag(class_flags::dynamic_members) ||
                          property_of(value, members::property::__length__).has_value();
  return has_length ? internal::unwrap(value.propertyValue(members::property::__length__)) : Any();
}

Py_ssize_t fail(slot_result failure) { return std::move(failure).to_status(); }

// --- keys ------------------------------------------------------------------------------------------------------------

// An int that fits 64 bits, of exactly that type.
std::optional<std::int64_t> exact_int(PyObject* object) noexcept {
  int overflow = 0;
  if (Py_TYPE(object) != &PyLong_Type) {
    return std::nullopt;
  }
  const std::int64_t value = PyLong_AsLongLongAndOverflow(object, &overflow);
  return overflow == 0 ? std::optional(value) : std::nullopt;
}

// An int or a str of exactly these types as a key of the runtime's containers, which need no value of it; it is good
// for as long as the object. Empty for what must be converted, as must a str with lone surrogates.
std::optional<internal::plain_key> plain_key_in(PyObject* object) noexcept {
  if (Py_TYPE(object) == &PyUnicode_Type) {
    Py_ssize_t size = 0;
    if (const char* text = utf8_in(object, &size)) [[likely]] {
      return internal::plain_key(std::string_view(text, static_cast<std::size_t>(size)));
    }
    forget_exception();
    return std::nullopt;
  }
  const auto number = exact_int(object);
  return number ? std::optional(internal::plain_key(*number)) : std::nullopt;
}

// A position in a sequence, read from what Python handed over.
class position {
 public:
  explicit position(PyObject* key) {
    if (const auto number = exact_int(key)) [[likely]] {
      index_ = *number;
      return;
    }
    const operand index(key);
    if (index.failed()) {
      failure_ = index.error();
    } else if (const auto integer = Integer::cast(index.value()); integer && integer->is_signed()) {
      index_ = integer->value();
    } else {
      is_none_ = true;
    }
  }

  bool ok() const noexcept { return failure_.empty() && !is_none_; }
  std::int64_t index() const noexcept { return index_; }
  slot_result failure(const Any& value) const {
    return is_none_ ? slot_result(slot_exception::type_error,
                                  String("The indices of {} are integers or slices.").arg(qualname(class_of(value))))
                    : runtime_error(Error::unchecked(failure_));
  }

 private:
  std::int64_t index_ = 0;
  bool is_none_ = false;  // the key is no position at all
  Any failure_;
};

slot_result read_item(const Any& value, std::int64_t index) {
  if (value.type() == ObjectType::List) [[likely]] {
    return result_of(object_of<object_value_list>(value).at(index));
  }
  const Any row[] = {index};
  return call_method_of(value, members::at, row);
}

slot_result assign_item(const Any& value, std::int64_t index, PyObject* new_value) {
  if (new_value == nullptr) {
    const Any row[] = {index};
    return call_method_of(value, members::removeAt, row);
  }
  const operand item(new_value);
  if (item.failed()) {
    return runtime_error(item.error());
  }
  if (value.type() == ObjectType::List && object_of<object_value_list>(value).has_described_set()) [[likely]] {
    return result_of(
        internal::guarded([&] { return object_of<object_value_list>(value).set_checked(index, item.value()); }));
  }
  const Any row[] = {index, item.value()};
  return call_method_of(value, members::set, row);
}

// Of the runtime's maps.
slot_result assign_plain_key(const Any& value, const internal::plain_key& key, PyObject* new_value) {
  const operand item(new_value);
  if (item.failed()) {
    return runtime_error(item.error());
  }
  auto& map = object_of<object_value_hash_map>(value);
  if (map.has_described_set()) [[likely]] {
    return result_of(internal::guarded([&] { return map.set_checked(key, item.value()); }));
  }
  const Any row[] = {key.value(), item.value()};
  return call_method_of(value, members::set, row);
}

slot_result assign_key(const Any& value, PyObject* python_key, PyObject* new_value) {
  // Converting a plain key would run nobody's code: it may as well come after the value, or not at all.
  if (value.type() == ObjectType::HashMap && new_value != nullptr) [[likely]] {
    if (const auto key = plain_key_in(python_key)) {
      return assign_plain_key(value, *key, new_value);
    }
  }
  const operand key(python_key);
  if (key.failed()) {
    return runtime_error(key.error());
  }
  if (new_value == nullptr) {
    const Any row[] = {key.value()};
    return call_method_of(value, members::remove, row);
  }
  const operand item(new_value);
  if (item.failed()) {
    return runtime_error(item.error());
  }
  const Any row[] = {key.value(), item.value()};
  return call_method_of(value, members::set, row);
}

// An item of the runtime's own containers that is found without anybody's code; nothing to say otherwise.
slot_result own_item(const Any& value, PyObject* key) {
  switch (value.type()) {
    case ObjectType::List:
      if (const auto index = exact_int(key)) [[likely]] {
        return result_of(object_of<object_value_list>(value).at(*index));
      }
      break;
    case ObjectType::HashMap:
      if (const auto plain = plain_key_in(key)) [[likely]] {
        auto outcome = object_of<object_value_hash_map>(value).find(*plain);
        if (outcome && outcome->found) [[likely]] {
          Any& item = outcome->value;
          return result_of(item.has(object_traits::lazy) ? internal::unwrap(item) : std::move(item));
        }
      }
      break;
    default:
      break;
  }
  return slot_result::absent();
}

slot_result subscript(const Any& value, PyObject* key) {
  const recursion_guard guard;
  if (!guard) {
    return slot_result::raised();
  }
  if (is_map(value)) {
    const operand map_key(key);
    return map_key.failed() ? runtime_error(map_key.error())
                            : result_of(internal::unwrap(borrowed<I_Map_Generic>(value)->get(map_key.value())));
  }
  if (PySlice_Check(key) && is_sequence(value)) {
    return read_slice(value, key);
  }
  const position index(key);
  return index.ok() ? read_item(value, index.index()) : index.failure(value);
}

slot_result assign_subscript(const Any& value, PyObject* key, PyObject* new_value) {
  const recursion_guard guard;
  if (!guard) {
    return slot_result::raised();
  }
  if (is_map(value)) {
    return assign_key(value, key, new_value);
  }
  if (PySlice_Check(key) && is_sequence(value)) {
    return new_value == nullptr ? delete_slice(value, key) : assign_slice(value, key, new_value);
  }
  const position index(key);
  return index.ok() ? assign_item(value, index.index(), new_value) : index.failure(value);
}

slot_result error_no_value(PyObject* key) { return {slot_exception::key_error, display_text(from_python_locked(key))}; }

// Whether one of the runtime's own maps or sets holds a key; empty when that takes a value of the key.
std::optional<int> own_contains(const Any& value, PyObject* item) {
  const ObjectType kind = value.type();
  if (kind != ObjectType::HashMap && kind != ObjectType::HashSet) {
    return std::nullopt;
  }
  const auto key = plain_key_in(item);
  if (!key) {
    return std::nullopt;
  }
  const auto found = kind == ObjectType::HashMap ? object_of<object_value_hash_map>(value).contains(*key)
                                                 : object_of<object_value_hash_set>(value).contains(*key);
  return found ? std::optional<int>(*found) : std::nullopt;
}

// What the caller wrote: Python has added the length to a negative index, which may have left it negative.
std::int64_t index_as_given(PyObject* self, Py_ssize_t index) {
  if (index >= 0) {
    return index;
  }
  const auto length = Integer::cast(length_of(*subject(self)));
  return length ? index - length->value() : index;
}

}  // namespace

Py_ssize_t length_slot(PyObject* self) noexcept {
  return guarded<Py_ssize_t>(-1, [&]() -> Py_ssize_t {
    const subject value(self);
    const recursion_guard guard;
    if (!guard) {
      return -1;
    }
    const Any length = is_error_result(*value) ? *value : length_of(*value);
    if (is_error_result(length)) {
      return fail(runtime_error(Error::unchecked(length)));
    }
    if (!Integer::matches(length.get())) {
      return fail({slot_exception::type_error, "Object is not a Ling sequence."});
    }
    const Integer count = Integer::unchecked(length);
    if (!count.is_signed() || count.value() < 0) {
      return fail({slot_exception::runtime_error, String("The length is not a number of items: {}").arg(length)});
    }
    return static_cast<Py_ssize_t>(count.value());
  });
}

PyObject* item_slot(PyObject* self, Py_ssize_t index) noexcept {
  return guarded<PyObject*>(nullptr,
                            [&] { return read_item(*subject(self), index_as_given(self, index)).to_object(); });
}

int assign_item_slot(PyObject* self, Py_ssize_t index, PyObject* value) noexcept {
  return guarded<int>(-1, [&] { return assign_item(*subject(self), index_as_given(self, index), value).to_status(); });
}

int contains_slot(PyObject* self, PyObject* item) noexcept {
  return guarded<int>(-1, [&] {
    if (const auto found = own_contains(value_in(self), item)) {
      return *found;
    }
    const subject value(self);
    const operand wanted(item);
    if (wanted.failed()) {
      return runtime_error(wanted.error()).to_status();
    }
    const recursion_guard guard;
    if (!guard) {
      return -1;
    }
    const Any found = internal::unwrap(borrowed<I_Iterable_Generic>(*value)->contains(wanted.value()));
    return is_error_result(found) ? runtime_error(Error::unchecked(found)).to_status()
                                  : int{Boolean::from(found).value()};
  });
}

PyObject* subscript_slot(PyObject* self, PyObject* key) noexcept {
  return guarded<PyObject*>(nullptr, [&] {
    const Any* wrapped = wrapped_value(self);
    if (wrapped == nullptr) [[unlikely]] {
      return error_no_value(key).to_object();
    }
    slot_result item = own_item(*wrapped, key);
    return (item.is_absent() ? subscript(*subject(self), key) : std::move(item)).to_object();
  });
}

int assign_subscript_slot(PyObject* self, PyObject* key, PyObject* value) noexcept {
  return guarded<int>(-1, [&] {
    return (wrapped_value(self) == nullptr ? error_no_value(key) : assign_subscript(*subject(self), key, value))
        .to_status();
  });
}

}  // namespace ling::cpython
