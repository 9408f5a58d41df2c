// The texts of plain values, written behind what is there already.
#pragma once

#include "ling/number.h"

#include <string>
#include <string_view>

namespace ling::internal {

// Between double quotes, with escapes. Text keeps what is above ASCII, bytes do not.
void write_quoted(std::string& out, std::string_view bytes, bool is_text);

void write_integer(std::string& out, const object_value_integer& integer);

// The shortest text that reads back as the same number, told from an integer by its point, exponent or name.
void write_float(std::string& out, double number);

}  // namespace ling::internal
