// The dynamic library of the interpreter itself.
#pragma once

namespace ling::cpython {

// Makes the interpreter's symbols visible to Python's own extension modules, which are linked against nothing. To be
// called before the interpreter starts; without effect where it is not needed.
void open_interpreter_library() noexcept;

}  // namespace ling::cpython
