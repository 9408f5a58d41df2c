// Signatures in the way Python writes them.
#include "lingobject/python_signature.h"

#include "ling/class.h"
#include "ling/reflection.h"
#include "ling/signature.h"
#include "python/convert.h"
#include "python/type_table.h"

namespace ling::cpython {

namespace {

// Not asked of the conversion: that would make the wrapper types of all other classes, and these texts are part of
// wrapper types.
String python_name_of(object_value_class& of_class) {
  for (const type_row& row : type_rows()) {
    if (!row.in_signatures.empty() && &row.get_class().object() == &of_class) {
      return String(row.in_signatures);
    }
  }
  return qualname(Class_Generic(of_class));
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
