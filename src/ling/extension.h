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
// the file, the missing symbol, and what the system said; a file whose entry point failed can be loaded again. Loading
// the same file again does nothing and answers what its init handlers answered. The path is UTF-8; a relative one
// counts from the current directory.
//
// Any thread; what the library does while it is loaded runs on the calling one. One thread at a time loads or
// initialises, others wait for it, without the locks of languages that they hold; so what succeeded is initialised. A
// library that is loaded from within its own loading is answered at once. Must not be called by a static initialiser,
// nor by a thread that an init handler or an entry point waits for.
LING_API Result<None> load_extension(const String& path);

}  // namespace ling
