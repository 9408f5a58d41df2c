// Code as the body of a function: every line gets a tab, but for those inside of literals.
//
// Python reads what comes of this, so lines and literals must be seen here as Python's tokenizer sees them: a line that
// is taken for a part of a literal gets no tab, and if it were none it would stand outside of the function.
#include "python/function_body.h"

#include "python/python_api.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

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

// From Python 3.12 on, what stands between the braces of an f-string is code, with literals of any quotes in it.
bool formats_hold_code() noexcept {
  static const bool do_they = std::strtol(Py_GetVersion() + 2, nullptr, 10) >= 12;  // behind "3."
  return do_they;
}

// The word that ends right before a position in a line.
std::string_view word_before(std::string_view line, std::size_t position) noexcept {
  const auto belongs_to_word = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || (c & 0x80) != 0;
  };
  std::size_t start = position;
  while (start > 0 && belongs_to_word(line[start - 1])) {
    --start;
  }
  return line.substr(start, position - start);
}

// Follows literals from line to line.
class literal_scanner {
 public:
  // Whether what comes next stands inside of a literal.
  bool is_inside() const noexcept { return !open_.empty(); }

  void scan(std::string_view line) {
    for (std::size_t position = 0; position < line.size();) {
      position += is_text() ? scan_text(line.substr(position)) : scan_code(line, position);
    }
  }

 private:
  // A literal that is not closed yet, or the part of one that a brace has opened.
  struct level {
    enum class kind : unsigned char {
      literal,
      field,   // the code between the braces
      format,  // what follows the code behind a colon
    };
    kind what;
    bool has_fields;
    bool is_raw;
    std::string_view quote;    // what closes the literal
    std::size_t brackets = 0;  // that the code of a field has opened
  };

  bool is_text() const noexcept { return is_inside() && open_.back().what != level::kind::field; }

  // What follows return how much of the line they have dealt with.

  std::size_t scan_code(std::string_view line, std::size_t position) {
    const std::size_t found = line.find_first_of(is_inside() ? "\"'#()[]{}:" : "\"'#", position);
    if (found == std::string_view::npos || line[found] == '#') {
      return line.size() - position;
    }
    const char c = line[found];
    const std::size_t passed = found - position + 1;
    if (c == '"' || c == '\'') {
      return passed - 1 + open_literal(line, found);
    }
    level& field = open_.back();
    if (c == '(' || c == '[' || c == '{') {
      ++field.brackets;
    } else if (c == ':') {
      field.what = field.brackets == 0 ? level::kind::format : field.what;
    } else if (field.brackets > 0) {
      --field.brackets;
    } else if (c == '}') {
      open_.pop_back();
    }
    return passed;
  }

  std::size_t open_literal(std::string_view line, std::size_t position) {
    constexpr std::string_view prefixes[] = {"f", "fr", "rf", "t", "tr", "rt"};
    std::string prefix(word_before(line, position));
    std::ranges::transform(prefix, prefix.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
    const bool has_fields = formats_hold_code() && std::ranges::find(prefixes, prefix) != std::end(prefixes);
    const std::string_view three = line[position] == '"' ? R"(""")" : "'''";
    const std::string_view quote = three.substr(0, line.substr(position).starts_with(three) ? 3 : 1);
    open_.push_back({level::kind::literal, has_fields, prefix.find('r') != std::string::npos, quote});
    return quote.size();
  }

  std::size_t scan_text(std::string_view line) {
    level& current = open_.back();
    if (line.front() == '\\') {
      return std::min(line.size(), length_of_escape(line, current));
    }
    if (line.starts_with(current.quote)) {
      const std::size_t length = current.quote.size();
      open_.pop_back();
      return length;
    }
    if (current.quote.size() == 1 && ends_line(line.front())) {
      if (current.what == level::kind::format) {
        current.what = level::kind::field;
      } else {
        open_.clear();  // never closed
      }
    } else if (current.has_fields && line.front() == '{') {
      if (current.what == level::kind::literal && line.starts_with("{{")) {
        return 2;
      }
      open_.push_back({level::kind::field, true, current.is_raw, current.quote});
    } else if (current.what == level::kind::format && line.front() == '}') {
      open_.pop_back();
    }
    return 1;
  }

  static std::size_t length_of_escape(std::string_view line, const level& of) noexcept {
    if (of.has_fields && (line.substr(1).starts_with('{') || line.substr(1).starts_with('}'))) {
      return 1;  // braces cannot be escaped
    }
    if (of.has_fields && !of.is_raw && line.starts_with("\\N{")) {
      const std::size_t end = line.find('}');
      return end == std::string_view::npos ? 3 : end + 1;
    }
    return line.substr(1).starts_with("\r\n") ? 3 : 2;
  }

  std::vector<level> open_;  // innermost last
};

// Whether there is more on the line than blanks, a continuation and a comment.
bool has_code(std::string_view line) noexcept {
  const std::size_t start = line.find_first_not_of(" \t\f\\\r\n");
  return start != std::string_view::npos && line[start] != '#';
}

// Behind the last form feed among the blanks of the line: Python counts columns anew from there.
std::size_t place_of_tab(std::string_view line) noexcept {
  const std::size_t blanks = std::min(line.find_first_not_of(" \t\f"), line.size());
  const std::size_t form_feed = line.substr(0, blanks).rfind('\f');
  return form_feed == std::string_view::npos ? 0 : form_feed + 1;
}

}  // namespace

void append_function_body(std::string& source, std::string_view code) {
  const bool wants_continuation = code.ends_with('\\');
  bool any_code = false;
  literal_scanner literals;
  std::string_view line;
  do {
    line = take_line(code);
    if (literals.is_inside()) {
      source.append(line);
    } else {
      const std::size_t start = place_of_tab(line);
      // Of a statement that begins with a continuation, the column is that of the backslash, unless that is the first.
      const bool is_continuation = line.substr(start).starts_with('\\');
      source.append(line.substr(0, start)).append(is_continuation ? "" : "\t").append(line.substr(start));
      any_code = any_code || has_code(line);
    }
    literals.scan(line);
  } while (!line.empty() && ends_line(line.back()));
  source.append("\n");
  if (!any_code) {
    source.append("\tpass\n");
  } else if (wants_continuation) {
    source.append("\t\n");  // what the code wants to be continued must not be continued by what comes next
  }
}

}  // namespace ling::cpython
