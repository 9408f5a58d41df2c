// The classes of the interfaces. What is expected is what a conforming class has; what is declared here as a method
// works for every class that has the expected members.
#include "ling/detail/definitions.h"
#include "ling/interfaces.h"

namespace ling::internal {

namespace {

// What every interface has.
class_builder<void>& interface(class_builder<void>& c, const char* doc) {
  return c.module("ling").doc(doc).flags(class_flags::interface);
}

}  // namespace

constinit const class_definition<void> i_immutable_class("I_Immutable", [](class_builder<void>& c) {
  interface(c, "Values that never change, and so may be keys of maps and members of sets.");
});

constinit const class_definition<void> i_cloneable_class("I_Cloneable", [](class_builder<void>& c) {
  interface(
      c,
      "Values that can be copied. Methods: clone(), a copy that shares what it holds; deepClone(), a copy with copies "
      "of what it holds.")
      .expects("clone, deepClone");
});

constinit const class_definition<void> i_runtime_only_class("I_RuntimeOnly", [](class_builder<void>& c) {
  interface(c, "Values that mean nothing outside the running process: they are never saved.");
});

constinit const class_definition<void> i_has_name_class("I_HasName", [](class_builder<void>& c) {
  interface(c, "Values with a name. Property: name, a String.").expects("name");
});

constinit const class_definition<void> i_has_doc_class("I_HasDoc", [](class_builder<void>& c) {
  interface(c, "Values with a text for people that explains them. Property: doc, a String.").expects("doc");
});

constinit const class_definition<void> i_has_code_class("I_HasCode", [](class_builder<void>& c) {
  interface(c, "Values with a source text. Property: code, a String.").expects("code");
});

// --- iteration -------------------------------------------------------------------------------------------------------

constinit const class_definition<void> i_iterator_class("I_Iterator", [](class_builder<void>& c) {
  interface(c, "Gives one item after the other. Method: next(), the next item or the Error StopIteration.")
      .expects("next");
});

constinit const class_definition<void> i_iterable_class("I_Iterable", [](class_builder<void>& c) {
  interface(c, "Values whose items can be gone through. Method: iter(), a new I_Iterator; optional: contains(value).")
      .expects("iter, contains")
      .method("toList", "", "All items as a List.", [](const I_Iterable_Generic& self) { return self.toList(); });
});

constinit const class_definition<void> i_sequence_class("I_Sequence", [](class_builder<void>& c) {
  interface(c,
            "Items by position; negative positions count from the end. Properties: __length__, elementsType; methods: "
            "at(index), atOr(index, default), indexOf(value, from), sliced(start, stop), contains(value), iter().")
      .expects("__length__, elementsType, at, atOr, indexOf, sliced")
      .parent(I_Iterable_Generic::getClass())
      .flags(class_flags::sequence | class_flags::collection);
});

constinit const class_definition<void> i_mutable_sequence_class("I_MutableSequence", [](class_builder<void>& c) {
  interface(c,
            "Sequences that can be changed. Methods: set(index, value), append(value), appendAt(index, value), "
            "extend(values), removeAt(index, count), removeOne(value), pop(index), clear().")
      .expects("set, append, appendAt, extend, removeAt, removeOne, pop, clear")
      .parent(I_Sequence_Generic::getClass());
});

constinit const class_definition<void> i_tuple_class("I_Tuple", [](class_builder<void>& c) {
  interface(c, "Sequences that never change.").parent(I_Sequence_Generic::getClass());
});

// --- maps and sets ---------------------------------------------------------------------------------------------------

constinit const class_definition<void> i_map_class("I_Map", [](class_builder<void>& c) {
  interface(c,
            "Values by key. Properties: __length__, keys, values, keysType, valuesType; methods: get(key, default), "
            "contains(key), iter() over the keys.")
      .expects("__length__, keys, values, keysType, valuesType, get")
      .parent(I_Iterable_Generic::getClass())
      .flags(class_flags::collection);
});

constinit const class_definition<void> i_mutable_map_class("I_MutableMap", [](class_builder<void>& c) {
  interface(c, "Maps that can be changed. Methods: set(key, value); remove(key), the removed value; clear().")
      .expects("set, remove, clear")
      .parent(I_Map_Generic::getClass());
});

constinit const class_definition<void> i_set_class("I_Set", [](class_builder<void>& c) {
  interface(c, "Values without repetition. Property: __length__; methods: contains(value), iter().")
      .expects("__length__")
      .parent(I_Iterable_Generic::getClass())
      .flags(class_flags::collection);
});

constinit const class_definition<void> i_mutable_set_class("I_MutableSet", [](class_builder<void>& c) {
  interface(
      c,
      "Sets that can be changed. Methods: insert(value), whether it was not there; remove(value), whether it was; "
      "extend(values); clear().")
      .expects("insert, remove, extend, clear")
      .parent(I_Set_Generic::getClass());
});

// --- languages -------------------------------------------------------------------------------------------------------

constinit const class_definition<void> i_language_class("I_Language", [](class_builder<void>& c) {
  interface(c,
            "A scripting language. Properties: name, canEvaluate; methods: toCode(value), resolve(name), "
            "evaluateExpression(code, scope), evaluate(code, scope).")
      .expects("instance, canEvaluate, toCode, resolve, evaluateExpression, evaluate")
      .parent(I_HasName::getClass());
});

}  // namespace ling::internal
