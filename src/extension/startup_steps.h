// The steps of the interpreter's start, in the order in which they are taken.
// Defined in the files of their names: interpreter_library_….cpp, module_tree.cpp, importer.cpp.
#pragma once

namespace ling::cpython {

// Makes the interpreter's symbols visible to Python's own extension modules, which are linked against nothing. To be
// called before the interpreter starts; without effect where it is not needed.
void open_interpreter_library() noexcept;

// Lets the interpreter take UTF-8 where python3 does and an embedded interpreter would take ASCII: under a locale that
// says nothing about the encoding, and when the environment asks for it. To be called before the interpreter starts.
void choose_text_encoding() noexcept;

// Makes the module `python` and the modules in it. What cannot be made is left out. The lock must be held.
void build_module_tree();

// Puts the importer at the front of `sys.meta_path`, where it answers for "ling" and what lies below it. Host modules
// cannot be imported when this fails; nothing else is affected. The lock must be held.
void install_importer();

}  // namespace ling::cpython
