// Decimals across the border.
#include "bridge/dates_and_decimals.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/instance_test.h"
#include "python/module_attribute.h"
#include "python/recursion_guard.h"

namespace ling::cpython {

namespace {

// Each direction keeps the class that it found first.
constinit const module_attribute decimal_class_to_python("decimal", "Decimal");
constinit const module_attribute decimal_class_from_python("decimal", "Decimal");

}  // namespace

PyObjectPtr decimal_to_python(const Decimal& value) {
  PyObject* const decimal_class = decimal_class_to_python.get();
  return PyObjectPtr(decimal_class == nullptr ? nullptr
                                              : PyObject_CallFunction(decimal_class, "s", value.toString().c_str()));
}

bool is_decimal(PyObject* object) {
  PyObject* const decimal_class = decimal_class_from_python.get();
  return decimal_class != nullptr && is_instance(object, decimal_class);
}

Any decimal_from_python(PyObject* object) {
  // A text that claims to be a decimal, and is its own text besides, would be converted for ever.
  const recursion_guard guard(" while converting a decimal");
  const PyObjectPtr text(guard ? PyObject_Str(object) : nullptr);
  if (!text) {
    return capture_error_or("Unable to convert Python decimal to string.");
  }
  Any converted = from_python_locked(text.get());
  const auto numeral = String::cast(converted);
  return numeral ? Any(Decimal::fromString(*numeral)) : converted;
}

}  // namespace ling::cpython
