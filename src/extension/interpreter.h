// The embedded interpreter: started once, on first need, and never finalised.
#pragma once

namespace ling::cpython {

// Starts the interpreter unless it runs. Every operation that needs Python calls this before it takes the lock. The
// first caller starts it, others wait for the start to end; a waiting thread that holds the lock gives it back
// meanwhile. A call made by the start itself returns at once. Afterwards one atomic read.
void ensure_interpreter() noexcept;

}  // namespace ling::cpython
