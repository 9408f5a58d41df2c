// The dynamic library of the interpreter itself.
#pragma once

namespace ling::cpython {

// Makes the interpreter's symbols visible to Python's own extension modules, which are linked against nothing. To be
// called before the interpreter starts; without effect where it is not needed.
void open_interpreter_library() noexcept;

// Lets the interpreter take UTF-8 where python3 does and an embedded interpreter would take ASCII: under a locale that
// says nothing about the encoding, and when the environment asks for it. To be called before the interpreter starts.
void choose_text_encoding() noexcept;

}  // namespace ling::cpython
