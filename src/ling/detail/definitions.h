// The built-in classes: one declaration per definition, so that the module `ling` can register them all.
#pragma once

#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/date.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/detail/iterator.h"
#include "ling/error.h"
#include "ling/evaluation_scope.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/lazy.h"
#include "ling/list.h"
#include "ling/logger.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/ordering.h"
#include "ling/string.h"
#include "ling/time.h"
#include "ling/tuple.h"

namespace ling::internal {

extern constinit const class_definition<None> none_class;
extern constinit const class_definition<Undefined> undefined_class;
extern constinit const class_definition<Boolean> boolean_class;
extern constinit const class_definition<Integer> integer_class;
extern constinit const class_definition<Float> float_class;
extern constinit const class_definition<String> string_class;
extern constinit const class_definition<ByteArray> byte_array_class;
extern constinit const class_definition<Ordering> ordering_class;

extern constinit const class_definition<Date> date_class;
extern constinit const class_definition<Time> time_class;
extern constinit const class_definition<DateTime> date_time_class;
extern constinit const class_definition<Decimal> decimal_class;

extern constinit const class_definition<Class_Generic> class_class;
extern constinit const class_definition<I_Callable_Generic> callable_class;
extern constinit const class_definition<I_Callable_Generic> function_class;
extern constinit const class_definition<Type> type_class;
extern constinit const class_definition<Parameter> parameter_class;
extern constinit const class_definition<Signature> signature_class;
extern constinit const class_definition<Property> property_class;
extern constinit const class_definition<Computed_Generic> computed_class;
extern constinit const class_definition<Error> error_class;
extern constinit const class_definition<StopIteration> stop_iteration_class;
extern constinit const class_definition<BadArgument> bad_argument_class;
extern constinit const class_definition<EvaluationError> evaluation_error_class;

extern constinit const class_definition<Module> module_class;
extern constinit const class_definition<EvaluationScope> evaluation_scope_class;
extern constinit const class_definition<Logger> logger_class;
extern constinit const class_definition<LogRecord> log_record_class;
extern constinit const class_definition<External_Generic> external_class;
extern constinit const class_definition<WeakReference> weak_reference_class;

extern constinit const class_definition<List_Generic> list_class;
extern constinit const class_definition<HashMap_Generic> hash_map_class;
extern constinit const class_definition<HashSet_Generic> hash_set_class;
extern constinit const class_definition<Tuple_Generic> tuple_class;
extern constinit const class_definition<snapshot_iterator> iterator_class;

extern constinit const class_definition<void> i_immutable_class;
extern constinit const class_definition<void> i_cloneable_class;
extern constinit const class_definition<void> i_runtime_only_class;
extern constinit const class_definition<void> i_has_name_class;
extern constinit const class_definition<void> i_has_doc_class;
extern constinit const class_definition<void> i_has_code_class;
extern constinit const class_definition<void> i_iterator_class;
extern constinit const class_definition<void> i_iterable_class;
extern constinit const class_definition<void> i_sequence_class;
extern constinit const class_definition<void> i_mutable_sequence_class;
extern constinit const class_definition<void> i_tuple_class;
extern constinit const class_definition<void> i_map_class;
extern constinit const class_definition<void> i_mutable_map_class;
extern constinit const class_definition<void> i_set_class;
extern constinit const class_definition<void> i_mutable_set_class;
extern constinit const class_definition<void> i_language_class;

// Whether the class of an object descends from the one described here. A class that is not built yet, which building
// would take memory for, has no descendants.
inline bool is_object_of(const object_value& object, const class_definition_base& definition) {
  const object_value_class& of_object = object.object_class();
  const object_value_class* const of_class = definition.if_built();
  return of_class != nullptr && of_object.is_ancestor(*of_class);
}

// Whether an object is behind a handle whose class is described here. The class alone does not tell: a class with C++
// data of its own may name that class as a parent.
template <class Object>
bool is_handle_object(const object_value* object, const class_definition_base& definition) {
  return object != nullptr && object->has(object_traits::instance) && is_object_of(*object, definition) &&
         dynamic_cast<const Object*>(object) != nullptr;
}

}  // namespace ling::internal
