// What can be asked of any value: its class, members, identity, hash, order and text.
//
// Member lookup asks, in this order: the members of the object alone, the class (own and inherited members), the hooks
// of a class with dynamic members. The `raw_` forms ask the object and the class only, never a hook or a meta-method.
// A class that has the meta-method of an operation (`__property__`, `__removeMethod__`, …) answers for its instances.
//
// Threads: any. Foreign code (meta-methods, hooks, getters) runs on the calling thread without any lock of the runtime.
//
// Defined in classes/class_of.cpp, member_lookup.cpp and member_access.cpp, what works on any value in algorithms/.
#pragma once

#include "ling/boolean.h"
#include "ling/class.h"
#include "ling/hash_map.h"
#include "ling/ordering.h"

namespace ling {

// The class of a value. `raw_class_of` answers for the handle as it is; `class_of` for the value behind a lazy one.
LING_API Class_Generic raw_class_of(const Any& value);
LING_API Class_Generic class_of(const Any& value);
// The name of a class, callable or module with that of its declaring context: "shop.Inventory", "shop.Inventory.add".
// For any other value that of its class.
LING_API String qualname(const Any& value);

// Where the object could not be asked for the member, the union has no value, and holds the Error that says why.
LING_API Union<I_Callable_Generic, None> method_of(const Any& value, meta_method_untyped name);
LING_API Union<I_Callable_Generic, None> raw_method_of(const Any& value, meta_method_untyped name);
LING_API Union<Property, None> property_of(const Any& value, meta_property_untyped name);
LING_API Union<Property, None> raw_property_of(const Any& value, meta_property_untyped name);
// Snapshots: String to I_Callable_Generic, String to Property.
LING_API HashMap_Generic own_methods_of(const Any& value);
LING_API HashMap_Generic own_properties_of(const Any& value);
// Gives the object a property of its own with that value; replaces one it has. Values that can have no members of their
// own (numbers, texts, containers) give an Error. `raw_insert_property` takes any property and asks no meta-method.
LING_API Result<None> insert_property_value(const Any& value, meta_property_untyped name, const Any& property_value);
LING_API Result<None> raw_insert_property(const Any& value, meta_property_untyped name, const Property& property);
LING_API Result<None> insert_method(const Any& value, meta_method_untyped name, const I_Callable_Generic& method);
// The members of this value alone, none when it has none of that name.
LING_API Union<Property, None> own_property_of(const Any& value, meta_property_untyped name);
LING_API Union<I_Callable_Generic, None> own_method_of(const Any& value, meta_method_untyped name);
// Takes a member of its own from the value; whether it had one.
LING_API Result<Boolean> remove_property(const Any& value, meta_property_untyped name);
LING_API Result<Boolean> remove_method(const Any& value, meta_method_untyped name);

// Calls a method by name. What it returns, an Error among others; a missing method is `error_method_not_found`.
LING_API Any call_method(const Any& value, meta_method_untyped name, std::span<const Any> arguments);
LING_API Error error_method_not_found(const Any& value, meta_method_untyped name);
LING_API Error error_property_not_found(const Any& value, meta_property_untyped name);

// The value converted to a class, or an Error: `of_class.coerce(value)`.
inline Any coerce(const Any& value, const Class_Generic& of_class) { return of_class.coerce(value); }

// A number that no other live object has. Values that stand for one thing, as for an object of another language, have
// one number.
LING_API std::uint64_t object_id(const Any& value) noexcept;
// Equal immutable values have equal hashes. Mutable containers inside a tuple count only by kind; a mutable value
// itself hashes by identity.
LING_API std::uint64_t hash_of(const Any& value);

// How two values compare. Numbers compare by value whatever their kind, texts and byte arrays by bytes, tuples and
// lists item by item; maps and sets are equal or incomparable; methods with a receiver are equal when method and
// receiver are; instances by their `__compare__`, else by their `__equals__`, else by identity. Values of different
// kinds are incomparable. An Error when one of the two methods gives one, or when the values nest too deeply.
LING_API Result<Ordering> compare_objects(const Any& a, const Any& b);
// The same as a number, Incomparable for an error.
LING_API ordering_value compare_objects_value(const Any& a, const Any& b);
// Whether two values are equal, which values without an order may be, too: what containers go by when they look for a
// value or are compared. As compare_objects, but `__equals__` comes before `__compare__`.
LING_API Result<Boolean> equal_objects(const Any& a, const Any& b);

// The text of a value for people. A text is itself; in containers it is quoted. Containers that hold themselves show
// "[...]" in that place. An Error when a `__display__` gives one.
LING_API Result<String> display(const Any& value);
// The same; an error is shown in the text.
LING_API String display_text(const Any& value);

}  // namespace ling
