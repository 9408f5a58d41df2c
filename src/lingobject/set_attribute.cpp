// Writing and deleting attributes.
#include "ling/instance.h"
#include "ling/property.h"
#include "ling/reflection.h"
#include "lingobject/attribute_name.h"
#include "lingobject/host_call.h"
#include "lingobject/slot_bodies.h"

namespace ling::cpython {

namespace {

// What is wrong when the host refuses a value; the texts differ by who refused.
slot_result result_of_write(const Any& outcome, const char* text, const name_entry& name) {
  if (!is_error_result(outcome)) {
    return outcome;
  }
  const Error error = Error::unchecked(outcome);
  return runtime_error(error, String(text).arg(name.text, error.message()));
}

slot_result error_read_only(const name_entry& name) {
  return slot_result(slot_exception::runtime_error, String("Read-only attribute: {}.").arg(name.text));
}

slot_result error_not_deletable(const name_entry& name) {
  return slot_result(slot_exception::attribute_error, String("Attribute cannot be deleted: {}.").arg(name.text));
}

slot_result write_member(const Any& value, const name_entry& name, const Any& new_value) {
  const recursion_guard guard;
  if (!guard) {
    return slot_result::raised();
  }
  const meta_property_untyped property_name(name);
  if (const auto property = property_of(value, property_name); property && property.value().hasSetter()) {
    return result_of_write(property.value().write(value, new_value), "{}: {}.", name);
  }
  const class_member* member = class_of(value).object().find_member(name);
  if (member != nullptr && !member->property.empty()) {
    return error_read_only(name);
  }
  if (member != nullptr && member->field != nullptr) {
    return result_of_write(value.setFieldValue(meta_field_untyped(name), new_value), "{}: {}", name);
  }
  return result_of_write(insert_property_value(value, property_name, new_value), "{}: {}", name);
}

// Only what was added to the object itself can be taken away from it.
slot_result delete_member(const Any& value, const name_entry& name) {
  if (raw_method_of(value, Any::__removeProperty__)) {
    const Any arguments[] = {internal::name_string(name)};
    return result_of_write(call_method(value, Any::__removeProperty__, arguments), "{}: {}", name);
  }
  if (value.has(object_traits::instance)) {
    auto& instance = static_cast<object_value_instance&>(*value.get());
    if (instance.remove_own_property(name) || instance.remove_own_method(name)) {
      return Any();
    }
  }
  return error_not_deletable(name);
}

// Apart from properties of its own, a lazy value has the attributes of what it yields.
slot_result write_lazy(const Any& value, PyObject* name, PyObject* new_value) {
  const PyObjectPtr yielded = yielded_object(value);
  const bool written = yielded && PyObject_SetAttr(yielded.get(), name, new_value) == 0;
  return written ? slot_result(Any()) : slot_result::raised();
}

}  // namespace

slot_result set_attribute(const Any& value, PyObject* name, PyObject* new_value) {
  const member_name entry(name);
  if (!entry) {
    return slot_result::raised();
  }
  if (value.has(object_traits::lazy) && !raw_property_of(value, meta_property_untyped(*entry))) [[unlikely]] {
    return write_lazy(value, name, new_value);
  }
  if (new_value == nullptr) {
    return delete_member(value, *entry);
  }
  const operand given(new_value);
  return given.failed() ? runtime_error(given.error()) : write_member(value, *entry, given.value());
}

slot_result set_property(const Any& value, const name_entry* name, PyObject* new_value) {
  if (name == nullptr || name->text.empty()) {
    return slot_result(slot_exception::attribute_error, "Invalid Ling property name.");
  }
  if (value.has(object_traits::lazy)) [[unlikely]] {
    const Any yielded = internal::unwrap(value);
    return is_error_result(yielded) ? slot_result(yielded) : set_property(yielded, name, new_value);
  }
  const auto property = property_of(value, meta_property_untyped(*name));
  if (!property) {
    return slot_result(slot_exception::attribute_error, String("Attribute not found: {}.").arg(name->text));
  }
  if (new_value == nullptr) {
    return error_not_deletable(*name);
  }
  if (!property.value().hasSetter()) {
    return error_read_only(*name);
  }
  const operand given(new_value);
  return given.failed() ? runtime_error(given.error()) : result_of(property.value().write(value, given.value()));
}

}  // namespace ling::cpython
