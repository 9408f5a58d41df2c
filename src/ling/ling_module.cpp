// The module `ling`: the runtime's own classes and functions, for hosts and scripts alike.
#include "ling/detail/definitions.h"
#include "ling/ling.h"

namespace ling {

namespace {

constexpr Class_Generic (*built_in_classes[])() = {
    &Boolean::getClass,
    &ByteArray::getClass,
    &Class_Generic::getClass,
    &Error::getClass,
    &EvaluationError::getClass,
    &BadArgument::getClass,
    &StopIteration::getClass,
    &EvaluationScope::getClass,
    &Float::getClass,
    &HashMap_Generic::getClass,
    &HashSet_Generic::getClass,
    &Integer::getClass,
    &List_Generic::getClass,
    &LogRecord::getClass,
    &Logger::getClass,
    &Module::getClass,
    &Ordering::getClass,
    &Parameter::getClass,
    &Property::getClass,
    &Signature::getClass,
    &String::getClass,
    &Tuple_Generic::getClass,
    &Type::getClass,
    &WeakReference::getClass,
    &I_Callable_Generic::getClass,
    &I_Iterable_Generic::getClass,
    &I_Iterator_Generic::getClass,
    &I_Sequence_Generic::getClass,
    &I_MutableSequence_Generic::getClass,
    &I_Map_Generic::getClass,
    &I_MutableMap_Generic::getClass,
    &I_Set_Generic::getClass,
    &I_MutableSet_Generic::getClass,
    &I_Tuple_Generic::getClass,
    &I_Language::getClass,
    &I_HasName::getClass,
    &I_HasDoc::getClass,
    &I_HasCode::getClass,
    &I_Immutable::getClass,
    &I_Cloneable::getClass,
    &I_RuntimeOnly::getClass,
};

void add_functions(const Module& ling) {
  const auto add = [&](const char* name, const char* signature_text, const char* doc, auto function) {
    ling.addCallable(name, make_function(name, signature_text, doc, function));
  };
  add("modules", "", "All modules, in the order of their creation.", &modules);
  add("find_module", "name", "The module of that name, none when there is none.", &find_module);
  add("get_module", "name", "The module of that name, made when there is none.", &get_module);
  add("find_type", "name", "The type of a class by name, with that of its module or without; or none.", &find_type);
  add("globals", "", "The global variables of the process.", &globals);
  add("get_logger", "", "The host's log.", &get_logger);
  add("class_of", "value", "The class of a value.", &class_of);
  add("qualname", "value", "The name of a class, callable or module with that of what declares it.", &qualname);
  add("display", "value", "The text of a value for people.", &display);
  add("object_id", "value", "A number that no other live value has.", &object_id);
  add("hash_of", "value", "The hash of a value; equal immutable values have equal ones.", &hash_of);
  add("compare_objects", "a, b", "How two values compare.", &compare_objects);
  add("method_of", "value, name", "The method of a value, none when there is none.",
      [](const Any& value, std::string_view name) { return method_of(value, meta_method_untyped(name)); });
  add("property_of", "value, name", "The property of a value, none when there is none.",
      [](const Any& value, std::string_view name) { return property_of(value, meta_property_untyped(name)); });
  add("own_methods_of", "value", "The methods of this value alone, by name.", &own_methods_of);
  add("own_properties_of", "value", "The properties of this value alone, by name.", &own_properties_of);
  add("insert_property_value", "value, name, property_value", "Gives a value a property of its own.",
      [](const Any& value, std::string_view name, const Any& property_value) {
        return insert_property_value(value, meta_property_untyped(name), property_value);
      });
}

Result<None> make_module_ling() {
  const Module ling = get_module("ling").value();
  ling.setDoc("The object runtime: its classes and what can be asked of any value.");
  for (const auto make_class : built_in_classes) {
    ling.addClass(make_class());
  }
  add_functions(ling);
  return None();
}

const struct module_ling_registration {
  module_ling_registration() { internal::add_init_handler(InitLevel::Runtime, &make_module_ling); }
} registered;

}  // namespace

}  // namespace ling
