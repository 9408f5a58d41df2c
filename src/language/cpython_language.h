// CPythonLanguage: the class through which the host sees Python as one of its languages.
#pragma once

#include "ling/class_builder.h"

namespace ling::cpython {

extern const class_definition<void> cpython_language_class;

// What the host's module `python` says of itself. The apostrophe of "Python's" is the three characters by which hosts
// know the text.
extern const char language_doc[];
extern const char language_icon[];

}  // namespace ling::cpython
