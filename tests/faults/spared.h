// What of the interpreter is spared, because it does not survive a lack of memory.
#pragma once

namespace faults {

// Once, before anything is tried.
void spare_what_breaks();

}  // namespace faults
