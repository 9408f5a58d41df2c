// What wrappers answer for names beginning with "_".
#include "lingobject/special_names.h"

#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/detail/try.h"
#include "ling/hash_map.h"
#include "ling/interfaces.h"
#include "ling/module.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "lingobject/dir_listing.h"
#include "lingobject/python_signature.h"

#include <algorithm>

namespace ling::cpython {

namespace {

Result<String> doc_of(const Any& value) {
  if (const auto documented = I_HasDoc::cast(value)) {
    return documented.value().doc();
  }
  return class_of(value).doc();
}

slot_result read_doc(const Any& value) {
  string_builder text;
  if (const auto callable = I_Callable_Generic::cast(value)) {
    text.append(signature_text(callable.value())).append("\n\n");
  }
  text.append(TRY(doc_of(value)));
  return Any(text.build());
}

bool set_annotation(PyObject* annotations, const String& name, const Type& type) {
  const PyObjectPtr key = to_python_locked(name);
  const PyObjectPtr annotation = key ? python_type_of(unwrapped_type(type)) : PyObjectPtr();
  return annotation && PyDict_SetItem(annotations, key.get(), annotation.get()) == 0;
}

slot_result read_annotations(const Any& value) {
  const auto callable = I_Callable_Generic::cast(value);
  if (!callable) {
    return slot_result::absent();
  }
  const Signature signature = TRY(callable.value().signature());
  PyObjectPtr annotations(PyDict_New());
  bool made = static_cast<bool>(annotations);
  for (const Parameter& parameter : signature.parameters()) {
    made = made && set_annotation(annotations.get(), parameter.name(), parameter.type());
  }
  made = made && set_annotation(annotations.get(), "return", signature.resultType());
  return made ? slot_result(std::move(annotations)) : slot_result::raised();
}

slot_result read_copy(const Any& value) {
  if (!I_Cloneable::matches(value.get())) {
    return slot_result::absent();
  }
  const auto method = value.boundMethod(members::clone);
  return method ? slot_result(method) : slot_result::absent();
}

// Python hands the function a record of the copies made so far, of which the host keeps its own.
slot_result read_deepcopy(const Any& value) {
  if (!I_Cloneable::matches(value.get())) {
    return slot_result::absent();
  }
  const auto method = value.boundMethod(members::deepClone);
  if (!method) {
    return slot_result::absent();
  }
  return make_function(members::deepClone.name(), "memo...", method.value().doc(),
                       [bound = method.value()](const Variadic&) { return bound(); });
}

slot_result read_module(const Any& value) {
  Any context;
  if (const auto of_class = Class_Generic::cast(value)) {
    const auto definition = of_class.value().genericDefinition();
    context = (definition ? definition.value() : of_class.value()).declaringContext();
  } else if (const auto callable = I_Callable_Generic::cast(value)) {
    context = callable.value().declaringContext();
  }
  const auto module = Module::cast(context);
  return module ? slot_result(module.value().name()) : slot_result::absent();
}

slot_result read_name(const Any& value) {
  const auto named = I_HasName::cast(value);
  if (!named) {
    return slot_result::absent();
  }
  return Any(TRY(named.value().name()));
}

slot_result read_code(const Any& value) {
  const auto coded = I_HasCode::cast(value);
  if (!coded) {
    return slot_result::absent();
  }
  return Any(TRY(coded.value().code()));
}

slot_result read_bytes(const Any& value) { return ByteArray::getClass().coerce(value); }
slot_result read_bool(const Any& value) { return Boolean::from(value); }

// The list takes the items over; their number must be that of the list.
class list_writer {
 public:
  explicit list_writer(std::size_t length) : list_(PyList_New(static_cast<Py_ssize_t>(length))) {}
  void add(std::string_view text) {
    if (list_) {
      PyObjectPtr item(PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
      if (!item || PyList_SetItem(list_.get(), next_++, item.release()) != 0) {
        list_ = PyObjectPtr();
      }
    }
  }
  slot_result finish() && { return std::move(list_); }

 private:
  PyObjectPtr list_;
  Py_ssize_t next_ = 0;
};

slot_result read_dir(const Any& value) {
  const std::vector<std::string> names = member_names(value);
  list_writer list(names.size());
  for (const std::string& name : names) {
    list.add(name);
  }
  return std::move(list).finish();
}

slot_result read_text_signature(const Any& value) {
  const auto callable = I_Callable_Generic::cast(value);
  return callable ? slot_result(signature_text(callable.value())) : slot_result::absent();
}

constexpr special_name special_names[] = {
    {"__doc__",            read_doc           },
    {"__annotations__",    read_annotations   },
    {"__copy__",           read_copy          },
    {"__deepcopy__",       read_deepcopy      },
    {"__module__",         read_module        },
    {"__name__",           read_name          },
    {"__code__",           read_code          },
    {"__bytes__",          read_bytes         },
    {"__bool__",           read_bool          },
    {"__dir__",            read_dir           },
    {"__text_signature__", read_text_signature},
};

}  // namespace

const special_name* find_special_name(std::string_view name) noexcept {
  const auto* found = std::find_if(std::begin(special_names), std::end(special_names),
                                   [&](const special_name& row) { return row.name == name; });
  return found == std::end(special_names) ? nullptr : found;
}

}  // namespace ling::cpython
