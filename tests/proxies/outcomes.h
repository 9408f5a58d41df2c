// Rows of operations on presented Python objects, and what comes of them.
#pragma once

#include "bridge/python.h"
#include "ling/ling.h"

namespace ling::cpython {

// The text of a result: of an Error its message behind "Error: ".
inline std::string outcome_text(const Any& result) {
  return std::string(display_text(internal::unwrap(result)).view());
}

// An expected text that ends in "…" is the beginning of the one that came.
inline bool is_expected(const std::string& text, std::string_view expected) {
  constexpr std::string_view more = "…";
  return expected.ends_with(more) ? text.starts_with(expected.substr(0, expected.size() - more.size()))
                                  : text == expected;
}

// A member of the object that an expression gives, called with the arguments (a property, whose name begins with a dot
// here, is read), what it answers, and the `repr` of the object afterwards where it changes.
struct member_row {
  std::string object;
  const char* member;
  std::vector<Any> arguments;
  const char* answer;
  const char* after = nullptr;
};

inline Any ask_member(const Any& value, const member_row& row) {
  return row.member[0] == '.' ? value.propertyValue(meta_property_untyped(row.member + 1))
                              : call_method(value, meta_method_untyped(row.member), row.arguments);
}

inline void expect_answers(std::initializer_list<member_row> rows) {
  for (const member_row& row : rows) {
    const std::string what = row.object + " " + row.member;
    const PyObjectPtr object = eval(row.object);
    ASSERT_TRUE(object) << what;
    const Py_ssize_t references = Py_REFCNT(object.get());
    const std::string before = repr(object);
    const std::string answer = outcome_text(ask_member(from_python_locked(object.get()), row));
    EXPECT_TRUE(is_expected(answer, row.answer)) << what << "\n  gives " << answer << "\n  not   " << row.answer;
    EXPECT_EQ(repr(object), row.after == nullptr ? before : row.after) << what;
    EXPECT_EQ(Py_REFCNT(object.get()), references) << what;
    EXPECT_EQ(PyErr_Occurred(), nullptr) << what;
    PyErr_Clear();
  }
}

}  // namespace ling::cpython
