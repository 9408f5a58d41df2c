// The module `ling`: the runtime's own classes and functions, for hosts and scripts alike.
#include "ling/detail/definitions.h"
#include "ling/ling.h"

namespace ling {

namespace {

constexpr const class_definition_base* built_in_classes[] = {
    &internal::none_class,
    &internal::undefined_class,
    &internal::boolean_class,
    &internal::integer_class,
    &internal::float_class,
    &internal::string_class,
    &internal::byte_array_class,
    &internal::ordering_class,
    &internal::date_class,
    &internal::time_class,
    &internal::date_time_class,
    &internal::decimal_class,
    &internal::class_class,
    &internal::callable_class,
    &internal::type_class,
    &internal::parameter_class,
    &internal::signature_class,
    &internal::property_class,
    &internal::computed_class,
    &internal::error_class,
    &internal::stop_iteration_class,
    &internal::bad_argument_class,
    &internal::evaluation_error_class,
    &internal::module_class,
    &internal::evaluation_scope_class,
    &internal::logger_class,
    &internal::log_record_class,
    &internal::external_class,
    &internal::weak_reference_class,
    &internal::list_class,
    &internal::hash_map_class,
    &internal::hash_set_class,
    &internal::tuple_class,
    &internal::i_immutable_class,
    &internal::i_cloneable_class,
    &internal::i_runtime_only_class,
    &internal::i_has_name_class,
    &internal::i_has_doc_class,
    &internal::i_has_code_class,
    &internal::i_iterator_class,
    &internal::i_iterable_class,
    &internal::i_sequence_class,
    &internal::i_mutable_sequence_class,
    &internal::i_tuple_class,
    &internal::i_map_class,
    &internal::i_mutable_map_class,
    &internal::i_set_class,
    &internal::i_mutable_set_class,
    &internal::i_language_class,
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
  add("equal_objects", "a, b", "Whether two values are equal, in an order or not.", &equal_objects);
  add("method_of", "value, name", "The method of a value, none when there is none.",
      [](const Any& value, std::string_view name) {
        const internal::name_to_look_up wanted(name);
        return method_of(value, meta_method_untyped(*wanted));
      });
  add("property_of", "value, name", "The property of a value, none when there is none.",
      [](const Any& value, std::string_view name) {
        const internal::name_to_look_up wanted(name);
        return property_of(value, meta_property_untyped(*wanted));
      });
  add("own_methods_of", "value", "The methods of this value alone, by name.", &own_methods_of);
  add("own_properties_of", "value", "The properties of this value alone, by name.", &own_properties_of);
  add("insert_property_value", "value, name, property_value", "Gives a value a property of its own.",
      [](const Any& value, std::string_view name, const Any& property_value) {
        const internal::name_to_look_up given(name);
        return insert_property_value(value, meta_property_untyped(*given), property_value);
      });
}

Result<None> make_module_ling() {
  const Module ling = get_module("ling").value();
  ling.setDoc("The object runtime: its classes and what can be asked of any value.");
  for (const class_definition_base* each : built_in_classes) {
    ling.addClass(each->required());
  }
  add_functions(ling);
  return None();
}

const struct module_ling_registration {
  module_ling_registration() { internal::add_init_handler(InitLevel::Runtime, &make_module_ling); }
} registered;

}  // namespace

}  // namespace ling
