// Python as one of the host's languages, through the handle that hosts use.
#include "bridge/python.h"
#include "corvantis/python_language.h"
#include "ling/ling.h"

namespace ling {
namespace {

using cpython::repr;
using cpython::to_python;

class Language : public cpython::PythonTest {
 protected:
  static std::string text(const Any& outcome) { return std::string(display_text(outcome).view()); }
};

TEST_F(Language, EvaluatesFromTheClass) {
  const HashMap_Generic locals;
  locals.set("y", 41);
  const EvaluationScope scope(Any("me"), {}, locals, {});
  EXPECT_EQ(text(CPythonLanguage::evaluateExpression("y + 1", scope)), "42");
  EXPECT_EQ(text(CPythonLanguage::evaluate("return self, y", scope)), "('me', 41)");
  EXPECT_TRUE(CPythonLanguage::resolve("nosuchmodule.x").is_error());
  EXPECT_EQ(text(CPythonLanguage::toCode(List_Generic({1, "a"}))), "[1, \"a\"]");
  EXPECT_EQ(text(CPythonLanguage::toCode(Error("no paper"))), "");
}

TEST_F(Language, IsOneObject) {
  const auto language = PythonLanguage::instance();
  ASSERT_TRUE(language);
  EXPECT_TRUE(language->is_same(*PythonLanguage::instance()));
  EXPECT_TRUE(language->is_same(language->propertyValue(members::property::instance)));
  EXPECT_FALSE(PythonLanguage::cast(Any()));
  const auto general = I_Language::cast(*language);
  ASSERT_TRUE(general && PythonLanguage::cast(*general));
  EXPECT_TRUE(general->canEvaluate());
  EXPECT_EQ(text(general->name()), "CPython");
  EXPECT_EQ(text(general->evaluate("return 1", None())), "1");
}

TEST_F(Language, NamesItsModulesInEvaluatedCodeByTheirRootOnly) {
  EXPECT_EQ(text(CPythonLanguage::evaluate("return 'python' in globals() and 'python.sys' not in globals()")), "true");
  EXPECT_EQ(text(CPythonLanguage::evaluateExpression("python.datetime.date(2020, 2, 29).isoformat()")), "2020-02-29");
}

}  // namespace
}  // namespace ling
