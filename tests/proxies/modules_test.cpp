// Python modules as the host sees them.
#include "bridge/python.h"
#include "bridge/python_modules.h"
#include "ling/ling.h"
#include "proxies/python_module.h"

namespace ling::cpython {
namespace {

// A Python module made of statements, exported under the host's name "test.<name>".
class PythonModule : public PythonTest {
 protected:
  static Result<Module> exported(const std::string& name, const std::string& statements) {
    const PyObjectPtr made = run("import sys, types\nresult = sys.modules['" + name + "'] = types.ModuleType('" + name +
                                 "', 'Its doc.')\nexec('''" + statements + "''', result.__dict__)");
    EXPECT_TRUE(made);
    return export_python_module(String("test.{}").arg(name.c_str()), name.c_str());
  }
  static std::string names(const HashMap_Generic& map) {
    return std::string(display_text(*I_Map_Generic::unchecked(map).keys()).view());
  }
  static Any member(const Any& value, const char* name) { return value.propertyValue(meta_property_untyped(name)); }
};

TEST_F(PythonModule, ShowsWhatItHoldsUnderPublicNames) {
  const auto module = exported("shop",
                               "import datetime\n"
                               "class Item:\n  'A thing.'\n  def weigh(self, n: int): return n\n"
                               "Alias, Day, _Hidden = Item, datetime.date, Item\n"
                               "def open(door=1): return door\n"
                               "rate, stock, _secret = 2.5, [1, 2], 3\n"
                               "globals()[''] = globals()[5] = huge = 1 << 80");
  ASSERT_TRUE(module) << display_text(module).view();
  EXPECT_TRUE(CPythonModule::matches(module->get()));
  EXPECT_EQ(module->name().view(), "test.shop");
  EXPECT_EQ(module->doc().view(), "Its doc.");
  EXPECT_EQ(names(module->classes()), "[\"Item\", \"Alias\", \"Day\"]");
  EXPECT_EQ(names(module->callables()), "[\"open\"]");
  EXPECT_EQ(display_text(member(*module, "rate")), "2.5");
  EXPECT_EQ(repr(to_python(member(*module, "stock"))), "[1, 2]");
  EXPECT_TRUE(is_error_result(member(*module, "huge"))) << "beyond the host's integers";
  EXPECT_TRUE(is_error_result(member(*module, "_secret")));

  const auto item = Class_Generic::unchecked(module->classes().get(String("Item")));
  EXPECT_EQ(qualname(item).view(), "test.shop.Item");
  EXPECT_TRUE(item.is_same(member(*module, "Alias")));
  EXPECT_EQ(qualname(member(*module, "Day")).view(), "ling.Date") << "a class that has a home keeps it";
  const auto open = module->boundMethod(meta_method_untyped("open"));
  ASSERT_TRUE(open);
  EXPECT_EQ(display_text((*open)()), "1");
  EXPECT_TRUE(open->declaringContext().is_same(*module));
}

TEST_F(PythonModule, IsTheHomeOfTheClassesThatItDefines) {
  const auto user = exported("user",
                             "import types\nfrom types import SimpleNamespace as Other\n"
                             "class Own: pass\nOwn.__module__ = \"owner\"");
  ASSERT_TRUE(user);
  const Any own = user->classes().get(String("Own"));
  EXPECT_EQ(qualname(own).view(), "test.user.Own") << "the first that shows a homeless class";
  PyObject* const type = to_python(own).release();
  PyDict_SetItemString(PyImport_GetModuleDict(), "own_type", type);
  const auto owner = exported("owner", "import sys\nOwn = sys.modules[\"own_type\"]");
  ASSERT_TRUE(owner);
  EXPECT_EQ(qualname(own).view(), "test.owner.Own");
}

TEST_F(PythonModule, IsTheSameWhenExportedAgain) {
  const auto first = exported("again", "x = 1"), second = exported("again", "x = 2");
  ASSERT_TRUE(first && second);
  EXPECT_TRUE(first->is_same(*second));
  EXPECT_EQ(display_text(member(*second, "x")), "1");
  ASSERT_FALSE(insert_module(Module("test.taken")).is_error());
  EXPECT_TRUE(exported("taken", "").is_error());
}

TEST_F(PythonModule, IsNotMadeWhenTheImportFails) {
  const auto missing = export_python_module("test.nowhere", "no_such_module");
  ASSERT_TRUE(missing.is_error());
  EXPECT_EQ(missing.error().message().view(), "No module named 'no_such_module'");
  EXPECT_FALSE(find_module("test.nowhere"));
}

TEST_F(PythonModule, IsLinkedToTheModuleAroundIt) {
  const auto outer = exported("outer", "inner = 0"), inner = exported("outer.inner", "x = 1");
  ASSERT_TRUE(outer && inner);
  EXPECT_TRUE(member(*outer, "inner").is_same(*inner));
}

TEST_F(PythonModule, IsMadeOnceByEightThreads) {
  Any made[8];
  on_eight_threads([&](int thread) {
    const GilGuard gil;
    made[thread] = export_python_module("test.json", "json");
  });
  for (const Any& each : made) {
    EXPECT_TRUE(CPythonModule::matches(each.get()) && each.is_same(made[0]));
  }
}

TEST_F(PythonModule, TreeIsThereFromTheStart) {
  for (const char* name : {"python", "python.builtins", "python.collections", "python.collections.abc",
                           "python.datetime", "python.decimal", "python.sys", "python.types", "python.typing"}) {
    const auto module = find_module(name);
    ASSERT_TRUE(module) << name;
    const std::string_view text = name;
    const std::size_t dot = text.rfind('.');
    if (dot != std::string_view::npos) {
      const auto parent = find_module(text.substr(0, dot));
      EXPECT_TRUE(member(*parent, name + dot + 1).is_same(*module)) << name;
    }
  }
  const auto python = find_module("python");
  EXPECT_EQ(display_text(member(*python, "icon")), ":/ling/icons/py.svg");
  EXPECT_TRUE(python->doc().contains("Python\xC3\xA2\xE2\x82\xAC\xE2\x84\xA2s elegant syntax"));
}

}  // namespace
}  // namespace ling::cpython
