// Signatures in the way Python writes them: "(path: str, flags: int = 0, *rest) -> bool".
#pragma once

#include "ling/callable.h"

namespace ling::cpython {

// Empty when the signature cannot be told. The lock must be held.
String signature_text(const I_Callable_Generic& callable);

}  // namespace ling::cpython
