// Names beginning with "_" that wrappers answer for. All others are Python's own affair.
#pragma once

#include "lingobject/slots.h"

#include <string_view>

namespace ling::cpython {

struct special_name {
  std::string_view name;
  // Nothing to say when the value lacks what the name stands for: Python's own lookup decides then.
  slot_result (*read)(const Any& value);
};

// The row of a name, null when it is not special.
const special_name* find_special_name(std::string_view name) noexcept;

}  // namespace ling::cpython
