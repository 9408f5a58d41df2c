// What was declared so far, for those who keep what they have found out about names and classes.
#pragma once

#include "ling/export.h"

#include <cstdint>

namespace ling::internal {

// Raised whenever a name is interned for the first time and whenever a class comes to be declared somewhere: as long as
// it is the same, a name that nothing declares is still such a name, and qualified names are what they were.
LING_API std::uint64_t declarations() noexcept;
void note_declaration() noexcept;

}  // namespace ling::internal
