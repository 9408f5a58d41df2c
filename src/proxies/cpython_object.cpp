// The class CPythonObject.
#include "proxies/cpython_object.h"

#include "proxies/object_members.h"
#include "proxies/object_order.h"
#include "python/error_bridge.h"

namespace ling::cpython {

namespace {

// For a method, which is given the name as a text.
template <class R, class... Arguments>
auto by_text(R (*member)(const CPythonObject& self, const name_entry& name, Arguments... arguments)) {
  return [member](const CPythonObject& self, const String& name, Arguments... arguments) -> R {
    const internal::name_to_look_up wanted(name.view());
    return member(self, *wanted, arguments...);
  };
}

constexpr dynamic_member_hooks hooks = {&method_hook, &getter_hook, &setter_hook, &drain_hook};

}  // namespace

constinit const class_definition<CPythonObject> cpython_object_class(
    "CPythonObject", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("Proxy wrapper around of 'PyObject'.")
          .hooks(hooks)
          .method(Any::__setPropertyValue__, "name, value", by_text(&set_object_property))
          .method(Any::__removeProperty__, "name", by_text(&remove_object_member))
          .method(Any::__removeMethod__, "name", by_text(&remove_object_member))
          .method(Any::__propertyValue__, "name", by_text(&object_property_value))
          .method(Any::__property__, "name", by_text(&object_property))
          .method(Any::__ownProperty__, "name", by_text(&object_property))
          .method(Any::__ownProperties__, "", [](const CPythonObject&) { return HashMap<String, Property>(); })
          .method(Any::__ownMethods__, "", [](const CPythonObject&) { return HashMap<String, I_Callable_Generic>(); })
          .method(Any::__ownMethod__, "name", by_text(&object_method))
          .method(Any::__method__, "name", by_text(&object_method))
          .method(Any::__insertProperty__, "name, property", by_text(&insert_object_property))
          .method(Any::__insertMethod__, "name, method", by_text(&insert_object_method))
          .method(Any::__display__, "", &display_object)
          .method(Any::__compare__, "other", &compare_object)
          .method(Any::__equals__, "other", &object_equals)
          .method(Any::__hash__, "", &object_hash);
    });

Type CPythonObject::getType() { return Type::of(getClass()); }
Class_Generic CPythonObject::getClass() { return cpython_object_class.required(); }

Any make_python_object(PyObjectPtr_Borrowed object) { return make_python_object(cpython_object_class, object); }

Any make_python_object(const class_definition<CPythonObject>& of_class, PyObjectPtr_Borrowed object) {
  return make<object_value_python_object>(of_class.required(), PyObjectPtr::share(object));
}

PyObjectPtr python_object_of(const Any& value) noexcept {
  return CPythonObject::matches(value.get()) ? CPythonObject::unchecked(value).python_object() : PyObjectPtr();
}

Any allocate_python_object(object_value_class& of_class) { return make<object_value_python_object>(of_class); }

bool ends_asking(const Any& answer) {
  return answer.has(internal::intolerable) || (is_error_result(answer) && interpreter_has_ended());
}

Error error_null_object() { return Error("The object is null."); }

}  // namespace ling::cpython
