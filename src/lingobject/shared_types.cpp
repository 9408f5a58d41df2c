// The five wrapper types for values of classes that nobody declares, and what tells them apart.
#include "ling/published.h"
#include "lingobject/dir_listing.h"
#include "lingobject/slot_bodies.h"
#include "lingobject/type_objects.h"

#include <array>
#include <memory>

namespace ling::cpython {

namespace {

// One row per combination of flags that matters. The first row whose tested flags have the wanted values counts.
struct shared_row {
  std::uint64_t tested;
  std::uint64_t wanted;
  sequence_methods* sequence;
  mapping_methods* mapping;
};

using namespace class_flags;
constexpr std::uint64_t all = callable | collection | sequence;
constexpr shared_row shared_rows[] = {
    {callable, callable,              &minimal_sequence,    nullptr         },
    {all,      0,                     &minimal_sequence,    nullptr         },
    {all,      class_flags::sequence, &full_sequence,       &wrapper_mapping},
    {all,      collection,            &membership_sequence, &wrapper_mapping},
    {all,      collection | sequence, &full_sequence,       &wrapper_mapping},
};
constexpr std::size_t callable_row = 0;

constexpr std::size_t row_of(std::uint64_t flags) {
  std::size_t i = 0;
  while ((flags & shared_rows[i].tested) != shared_rows[i].wanted) {
    ++i;
  }
  return i;
}
// Every combination has a row, or this does not compile.
static_assert(row_of(all) == callable_row && row_of(0) == 1 && row_of(class_flags::sequence) == 2 &&
              row_of(collection) == 3 && row_of(collection | class_flags::sequence) == 4);

// The interpreter's own lookups of special methods ask the type and never the attributes of the instance.
constinit PyMethodDef shared_methods[] = {
    {"__dir__", list_attributes, METH_NOARGS, "The names of the attributes."},
    {},
};

// Of values that can be called.
void fill_call_slots(type_object& type) {
  type.tp_call = call_slot<call>;
  type.tp_vectorcall_offset = offsetof(callable_wrapper_object, vectorcall);
  type.tp_flags |= has_vectorcall;
  type.tp_dealloc = callable_wrapper_dealloc;
}

constinit std::array<internal::published<PyTypeObject>, std::size(shared_rows)> shared_types{};

PyTypeObject* make_shared_type(std::size_t row) {
  // Never freed, not even the one that came too late: an instance may exist already.
  auto* type = new type_object{};
  fill_common_slots(*type);
  type->tp_name = shared_type_name;
  type->tp_doc = "Wrapper around of a Ling object";
  if (row == callable_row) {
    fill_call_slots(*type);
  }
  type->tp_as_sequence = shared_rows[row].sequence;
  type->tp_as_mapping = shared_rows[row].mapping;
  type->tp_methods = shared_methods;  // types made for one class inherit them
  if (PyType_Ready(type_of_layout(*type)) != 0) {
    return nullptr;
  }
  return shared_types[row].publish(type_of_layout(*type));
}

PyTypeObject* shared_type(std::size_t row) {
  PyTypeObject* made = shared_types[row].get();
  return made != nullptr ? made : make_shared_type(row);
}

}  // namespace

void fill_common_slots(type_object& type) {
  // One reference more than the owner's, so that nobody can release the last one.
  Py_SET_REFCNT(reinterpret_cast<PyObject*>(&type), 2);
  type.tp_basicsize = sizeof(wrapper_object);
  type.tp_dealloc = wrapper_dealloc;
  type.tp_repr = unary_slot<code_text>;
  type.tp_str = unary_slot<plain_text>;
  type.tp_hash = hash_slot<hash>;
  type.tp_getattro = attribute_slot<get_attribute>;
  type.tp_setattro = set_attribute_slot<set_attribute>;
  type.tp_as_number = &wrapper_numbers;
  type.tp_richcompare = compare_slot<compare>;
  type.tp_iter = unary_slot<iterate>;
  type.tp_iternext = next_slot<next_item>;
}

void fill_slots_of_class(type_object& type, const object_value_class& of_class) {
  if (of_class.has_flag(callable)) {
    fill_call_slots(type);
  } else {
    type.tp_call = call_slot<call>;  // says that the value cannot be called
  }
  const shared_row& row = shared_rows[row_of(of_class.flags() & ~callable)];
  type.tp_as_sequence = row.sequence;
  type.tp_as_mapping = row.mapping;
}

PyTypeObject* shared_type_of(std::uint64_t class_flags) { return shared_type(row_of(class_flags)); }

PyTypeObject* shared_callable_type() { return shared_type(callable_row); }

}  // namespace ling::cpython
