// Registration: how a library's static initialisers tell the runtime what they have, and when the runtime makes it.
//
// Static initialisers queue handlers; `initialize` runs them by level once the libraries they belong to are loaded. A
// host calls it at start; loading an extension library calls it again for what came with it.
#pragma once

#include "ling/class.h"

#include <vector>

namespace ling {

enum class InitLevel : int {
  Runtime = 1,   // the runtime's own module
  Classes = 2,   // classes are built and enter their modules
  Services = 3,  // loggers, bridges: what uses classes and runs before the rest
  Properties = 4,
  Functions = 5,
};

namespace internal {

// Makes something ready; an Error (or a C++ exception) stops nothing but is reported by `initialize`.
using init_function = Result<None> (*)();
struct init_handler {
  InitLevel level;
  init_function function;
};

// Queues a handler. Static initialisation or any thread.
LING_API void add_init_handler(InitLevel level, init_function handler);
// The queue itself, for a caller that knows nobody else is using it.
LING_API std::vector<init_handler>& init_handlers_unsafe();

// For a language whose code runs under a lock of its own: calls `wait(argument)` without that lock, which the calling
// thread may hold, and has it again afterwards. Asked of a thread that waits for another one's initialisation, since
// the other one may need the lock. Static initialisation or any thread; must not throw.
using lock_release = void (*)(void (*wait)(void* argument), void* argument);
LING_API void add_lock_release(lock_release without_lock);

}  // namespace internal

// Runs the queued handlers in the order of their levels, each once, handlers queued by handlers included. Returns the
// first Error after all have run. Any thread; handlers run on the calling thread without a lock of the runtime that
// other operations need. One thread at a time initialises or loads an extension, the others wait for their turn; so a
// handler may do either itself, but must not wait for a thread that does.
LING_API Result<None> initialize();

// Adds a callable or a property to the module of that name, which is made when there is none.
LING_API Result<None> register_function(const String& module, const String& name, const I_Callable_Generic& callable);
LING_API Result<None> register_property(const String& module, const String& name, const Property& property);
LING_API Result<None> register_class(const String& module, const Class_Generic& of_class);

}  // namespace ling
