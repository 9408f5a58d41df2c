// Python modules as the host sees them.
#include "proxies/outcomes.h"
#include "proxies/python_module.h"
#include "python/python_modules.h"

namespace ling::cpython {
namespace {

using PythonModule = PythonTest;

// A Python module made of statements, exported under the host's name "test.<name>".
Result<Module> exported(const std::string& name, const std::string& statements) {
  EXPECT_TRUE(run("import sys, types\nresult = sys.modules['" + name + "'] = types.ModuleType('" + name +
                  "', 'Its doc.')\nexec('''" + statements + "''', result.__dict__)"));
  return export_python_module(String("test.{}").arg(name.c_str()), name.c_str());
}

TEST_F(PythonModule, ShowsWhatItHoldsUnderPublicNames) {
  const auto module = exported("shop", R"(
class Item: pass
Alias, _Hidden = Item, Item
def open(door=1): return door
rate, _secret = 2.5, 3
globals()[""] = globals()[5] = huge = 1 << 80)");
  ASSERT_TRUE(module) << outcome_text(module);
  const auto open = module->boundMethod(meta_method_untyped("open")).value();
  const Any item = module->classes().get(String("Item"));
  expect_outcomes({
      {module->doc(), "Its doc."},
      {I_Map_Generic::unchecked(module->classes()).keys(), "[\"Item\", \"Alias\"]"},
      {I_Map_Generic::unchecked(module->callables()).keys(), "[\"open\"]"},
      {ask(*module, ".rate"), "2.5"},
      {ask(*module, ".huge"), "Error: int too big to convert"},
      {qualname(item), "test.shop.Item"},
      {open(), "1"},
  });
  EXPECT_TRUE(item.is_same(ask(*module, ".Alias")));
  EXPECT_TRUE(open.declaringContext().is_same(*module));
  EXPECT_TRUE(is_error_result(ask(*module, "._secret")));
}

TEST_F(PythonModule, IsTheHomeOfTheClassesThatItDefines) {
  const auto user = exported("user", "class Own: pass\nOwn.__module__ = \"owner\"");
  const Any own = user->classes().get(String("Own"));
  EXPECT_EQ(qualname(own).view(), "test.user.Own") << "the first that shows a homeless class";
  ASSERT_TRUE(exported("owner", "from user import Own"));
  EXPECT_EQ(qualname(own).view(), "test.owner.Own");
}

TEST_F(PythonModule, IsMadeOnceAndLinkedToTheModuleAroundIt) {
  const auto outer = exported("outer", "inner = 0"), inner = exported("outer.inner", "x = 1");
  EXPECT_TRUE(ask(*outer, ".inner").is_same(*inner));
  EXPECT_TRUE(exported("outer.inner", "x = 2").value().is_same(*inner));
  expect_outcome(ask(*inner, ".x"), "1");
  ASSERT_FALSE(insert_module(Module("test.taken")).is_error());
  EXPECT_TRUE(exported("taken", "").is_error());
  on_eight_threads([&](int) {
    const GilGuard gil;
    static_cast<void>(export_python_module("test.json", "json"));
    EXPECT_TRUE(export_python_module("test.json", "json").value().is_same(*find_module("test.json")));
  });
  expect_outcome(export_python_module("test.none", "no_such_module"), "Error: No module named 'no_such_module'");
  EXPECT_FALSE(find_module("test.none"));
}

TEST_F(PythonModule, TreeIsThereFromTheStart) {
  const auto python = find_module("python").value();
  EXPECT_TRUE(
      ask(find_module("python.collections").value(), ".abc").is_same(find_module("python.collections.abc").value()));
  expect_outcome(ask(python, ".icon"), ":/ling/icons/py.svg");
  EXPECT_TRUE(python.doc().contains("Python\xC3\xA2\xE2\x82\xAC\xE2\x84\xA2s elegant syntax"));
}

}  // namespace
}  // namespace ling::cpython
