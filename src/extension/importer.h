// The importer that lets Python code import the host's modules.
#pragma once

namespace ling::cpython {

// Puts the importer at the front of `sys.meta_path`, where it answers for "ling" and what lies below it. Host modules
// cannot be imported when this fails; nothing else is affected. The lock must be held.
void install_importer();

}  // namespace ling::cpython
