// What the host sees under a name: a module, a class or a callable, described for people or as JSON.
#pragma once

#include "ling/string.h"
#include "ling/union.h"

#include <string>

namespace ling::command {

enum class description_format { text, json };

// The description of "shop", "shop.Inventory" or "shop.open"; an Error when there is nothing of that name.
Result<String> describe(const std::string& name, description_format format);

}  // namespace ling::command
