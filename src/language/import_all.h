// Importing every Python module there is.
#pragma once

#include "ling/error.h"
#include "ling/none.h"
#include "ling/union.h"

namespace ling::cpython {

// Makes every top-level module and what is in its packages a module of the host, under "python." and its own name.
// Modules that cannot be imported are left out. The standard streams, the environment, the working directory and the
// signal handlers are afterwards what they were; what the modules print meanwhile is lost. A call while another one is
// running does nothing. An Error only when the modules cannot be listed or an interrupt came.
Result<None> import_all_modules();

}  // namespace ling::cpython
