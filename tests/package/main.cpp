// The smallest host: asks for a language that it has not loaded.
#include "corvantis/python_language.h"

int main() { return ling::PythonLanguage::evaluateExpression("1 + 2").is_error() ? 0 : 1; }
