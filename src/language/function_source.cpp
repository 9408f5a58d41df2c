// Indenting code that was written without regard to it.
#include "language/function_source.h"

#include <algorithm>
#include <utility>

namespace ling::cpython {

namespace {

// The first line of the code with what ends it, if anything does; the code begins behind it afterwards. Python ends
// lines at a lone carriage return, too.
std::string_view take_line(std::string_view& code) noexcept {
  std::size_t end = code.find_first_of("\r\n");
  if (end != std::string_view::npos) {
    end += code.substr(end).starts_with("\r\n") ? 2 : 1;
  }
  const std::string_view line = code.substr(0, end);
  code.remove_prefix(line.size());
  return line;
}

bool ends_line(char c) noexcept { return c == '\n' || c == '\r'; }

// Follows literals from line to line.
class literal_scanner {
 public:
  // Whether what comes next stands inside of a literal.
  bool is_inside() const noexcept { return !quote_.empty(); }

  void scan(std::string_view line) noexcept {
    while (!line.empty() && (is_inside() || line.front() != '#')) {
      line.remove_prefix(is_inside() ? scan_inside(line) : scan_outside(line));
    }
  }

 private:
  // Both return how much of the line they have dealt with.
  std::size_t scan_outside(std::string_view line) noexcept {
    const std::size_t start = line.find_first_of("\"'#");
    if (start == std::string_view::npos || line[start] == '#') {
      return std::min(start, line.size());
    }
    const std::string_view three = line[start] == '"' ? R"(""")" : "'''";
    quote_ = three.substr(0, line.substr(start).starts_with(three) ? 3 : 1);
    return start + quote_.size();
  }
  std::size_t scan_inside(std::string_view line) noexcept {
    if (line.front() == '\\') {
      return line.substr(1).starts_with("\r\n") ? 3 : std::min<std::size_t>(2, line.size());
    }
    if (line.starts_with(quote_)) {
      return std::exchange(quote_, {}).size();
    }
    if (quote_.size() == 1 && ends_line(line.front())) {
      quote_ = {};  // never closed
    }
    return 1;
  }

  std::string_view quote_;  // what closes the literal; empty outside
};

// Whether there is more on the line than blanks and a comment.
bool has_code(std::string_view line) noexcept {
  const std::size_t start = line.find_first_not_of(" \t\f\r\n");
  return start != std::string_view::npos && line[start] != '#';
}

// Appends the code; returns whether there was any.
bool append_body(std::string& source, std::string_view code) {
  bool any_code = false;
  literal_scanner literals;
  std::string_view line;
  do {
    line = take_line(code);
    source.append(literals.is_inside() ? "" : "\t").append(line);
    literals.scan(line);
    any_code = any_code || has_code(line);
  } while (!line.empty() && ends_line(line.back()));
  source.append("\n");
  return any_code;
}

}  // namespace

std::string function_source(std::string_view code, const std::vector<String>& names) {
  std::string source = "def ling_outer():\n";
  for (const String& name : names) {
    source.append("\tglobal ").append(name.view()).append("\n");
  }
  if (!append_body(source, code)) {
    source.append("\tpass\n");
  } else if (code.ends_with('\\')) {
    source.append("\t\n");  // what the code wants to be continued must not be continued by what comes next
  }
  source.append("ling_store_result( ling_outer() )\n");
  for (const String& name : names) {
    source.append("ling_store_local('").append(name.view()).append("',").append(name.view()).append(")\n");
  }
  return source;
}

}  // namespace ling::cpython
