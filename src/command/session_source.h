// The text of session.py, which the build puts into the program.
#pragma once

namespace ling::command {

extern const char session_source[];

}  // namespace ling::command
