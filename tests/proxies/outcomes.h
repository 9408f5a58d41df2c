// Rows of operations on presented Python objects, and what comes of them.
#pragma once

#include "bridge/python.h"
#include "ling/ling.h"

namespace ling::cpython {

// The text of a result: of an Error its message behind "Error: ".
inline std::string outcome_text(const Any& of) { return std::string(display_text(internal::unwrap(of)).view()); }

// An expected text that ends in "…" is the beginning of the one that came.
inline void expect_outcome(const Any& result, const std::string& expected, const std::string& what = "") {
  const std::string text = outcome_text(result), more = "…";
  const bool begins = expected.ends_with(more) && text.starts_with(expected.substr(0, expected.size() - more.size()));
  EXPECT_TRUE(begins || text == expected) << what << "\n  gives " << text << "\n  not   " << expected;
}

inline void expect_outcomes(const std::vector<std::pair<Any, const char*>>& rows) {
  for (const auto& [result, expected] : rows) {
    expect_outcome(result, expected);
  }
}

// A property, whose name begins with a dot here, is read; a method is called with the arguments.
inline Any ask(const Any& value, const char* member, std::vector<Any> arguments = {}) {
  return member[0] == '.' ? value.propertyValue(meta_property_untyped(member + 1))
                          : call_method(value, meta_method_untyped(member), arguments);
}

// A member of the object that an expression gives, what it answers, and the `repr` of the object afterwards where it
// changes.
struct member_row {
  std::string object;
  const char* member;
  std::vector<Any> arguments;
  const char* answer;
  const char* after = nullptr;
};
inline void expect_answers(const std::vector<member_row>& rows) {
  for (const member_row& row : rows) {
    const std::string what = row.object + " " + row.member;
    const PyObjectPtr object = eval(row.object);
    ASSERT_TRUE(object) << what;
    const Py_ssize_t references = Py_REFCNT(object.get());
    const std::string before = repr(object);
    expect_outcome(ask(from_python_locked(object.get()), row.member, row.arguments), row.answer, what);
    EXPECT_EQ(repr(object), row.after == nullptr ? before : row.after) << what;
    EXPECT_EQ(Py_REFCNT(object.get()), references) << what;
  }
}

}  // namespace ling::cpython
