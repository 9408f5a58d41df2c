// Extension modules of Windows name the library that each symbol comes from: there is nothing to make visible.
#include "extension/startup_steps.h"

namespace ling::cpython {

void open_interpreter_library() noexcept {}

// Texts of the system are Unicode here.
void choose_text_encoding() noexcept {}

}  // namespace ling::cpython
