// The text of session.py, which the build puts into the program.
#pragma once

namespace ling::host {

extern const char session_source[];

}  // namespace ling::host
