// Extension libraries: plug-ins that bring modules, classes and languages.
//
// An extension is a dynamic library that exports `corvantis_extension_init` and may export
// `corvantis_extension_bind_api`, plain C functions without arguments. Its static initialisers queue its init handlers.
#pragma once

#include "ling/string.h"
#include "ling/union.h"

namespace ling {

class None;

// Loads the library, calls its entry points and runs the init handlers it queued. The library stays loaded. Errors name
// the file, the missing symbol, and what the system said. Loading the same file again does nothing.
LING_API Result<None> load_extension(const String& path);

}  // namespace ling
