// Signatures in the way Python writes them.
#include "lingobject/python_signature.h"

#include "ling/class.h"
#include "ling/reflection.h"
#include "ling/signature.h"
#include "python/convert.h"

#include <algorithm>

namespace ling::cpython {

namespace {

// The classes whose values arrive in Python as objects of Python's own types. Not asked of the conversion: that would
// make the wrapper types of all other classes, and these texts are part of wrapper types.
struct native_name {
  std::string_view class_name;
  std::string_view python_name;
};
constexpr native_name native_names[] = {
    {"ling.Boolean",   "bool"    },
    {"ling.ByteArray", "bytes"   },
    {"ling.Date",      "date"    },
    {"ling.DateTime",  "datetime"},
    {"ling.Decimal",   "Decimal" },
    {"ling.Float",     "float"   },
    {"ling.Integer",   "int"     },
    {"ling.None",      "None"    },
    {"ling.String",    "str"     },
    {"ling.Time",      "time"    },
    {"ling.Tuple",     "tuple"   },
};

String python_name_of(object_value_class& of_class) {
  String name = qualname(Class_Generic(of_class));
  const auto* found = std::find_if(std::begin(native_names), std::end(native_names),
                                   [&](const native_name& row) { return name == row.class_name; });
  return found == std::end(native_names) ? name : String(found->python_name);
}

String type_name(const Type& type) {
  string_builder text;
  const Type unwrapped = unwrapped_type(type);
  for (object_value_class* alternative : unwrapped.object().alternatives()) {
    if (!text.empty()) {
      text.append(" | ");
    }
    text.append(python_name_of(*alternative));
  }
  return text.build();
}

String value_text(const Any& value) {
  const auto code = to_code(value);
  internal::tolerate_error(code);
  return code ? code.value() : String("...");
}

constexpr signature_style python_style{type_name, value_text, "*", ""};

}  // namespace

String signature_text(const I_Callable_Generic& callable) {
  const auto declared = callable.signature();
  if (!declared) {
    return {};
  }
  const Signature& signature = declared.value();
  String text = signature.toString(python_style);
  return unwrapped_type(signature.resultType()).is_untyped() ? String("{} -> object").arg(text) : text;
}

}  // namespace ling::cpython
