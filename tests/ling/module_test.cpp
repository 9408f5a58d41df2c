// Modules: names, the links between parents and children, members, and the table that all threads share.
#include "ling/testing.h"

#include <atomic>

namespace {

using namespace ling::testing;

constinit const class_definition<void> gadget_class("Gadget", [](class_builder<void>& c) { c.doc("A thing."); });

I_Callable_Generic answer(int value) {
  return make_function("answer", "", "", [value] { return value; });
}

TEST(Module, RefusesNamesWithEmptyParts) {
  for (const char* name : {"", ".", ".a", "a.", "a..b"}) {
    const std::string expected =
        "A module name is made of parts between dots, none of them empty: '" + std::string(name) + "'.";
    for (const Any& result :
         values(get_module(name), insert_module(Module(name)), register_function(name, "f", answer(1)))) {
      EXPECT_EQ(message(result), expected);
    }
    EXPECT_FALSE(find_module(name)) << name;
  }
}

TEST(Module, IsAPropertyOfItsParentWhicheverCameFirst) {
  const Module child("test.late.child");
  const Module grandchild("test.late.child.of");
  const Module parent("test.late");
  for (const Module& each : {grandchild, child, parent}) {
    ASSERT_FALSE(insert_module(each).is_error());
  }
  EXPECT_TRUE(property(parent, "child").is_same(child));
  EXPECT_TRUE(property(child, "of").is_same(grandchild));
  EXPECT_TRUE(is_error_result(property(parent, "of"))) << "only the module right above";
  EXPECT_EQ(message(insert_module(Module("test.late"))), "There is a module of that name already: 'test.late'.");
  const Module made = get_module("test.early.child").value();
  EXPECT_TRUE(property(find_module("test.early").value(), "child").is_same(made));
}

TEST(Module, DeclaresWhatIsAddedToItFirst) {
  const Module module = get_module("test.attributes").value();
  const Module other = get_module("test.other").value();
  const auto first = answer(1);
  module.addCallable("answer", first);
  other.addCallable("alias", first);
  module.addCallable("answer", answer(2));
  module.addClass(gadget_class.required());
  module.addProperty("doc", Property::constant("hides"));
  expect_outcomes({
      {call(module, "answer"), "2"},
      {call(other, "alias"), "1"},
      {qualname(first), "test.attributes.answer"},
      {qualname(Class_Generic(gadget_class.required())), "test.attributes.Gadget"},
      {qualname(module), "test.attributes"},
      {property(module, "doc"), "hides"},
      {property(other, "doc"), ""},
      {register_property("test.other", "answer", Property::constant(42)), "None"},
      {property(other, "answer"), "42"},
      {property(other, "importance"), "0"},
      {other.setPropertyValue(meta_property_untyped("importance"), 10), "None"},
      {other.setPropertyValue(meta_property_untyped("doc"), "told"), "None"},
      {other.setPropertyValue(meta_property_untyped("inlined"), true), "None"},
      {other.setPropertyValue(meta_property_untyped("inlined"), false), "None"},
      {Tuple_Generic({other.importance(), other.doc(), other.isInlined()}), "(10, \"told\", false)"},
  });
}

TEST(Module, FindsTypesByName) {
  const Module module = get_module("test.inlined").value();
  auto& gizmo = *new object_value_class("Gizmo");
  module.addClass(gizmo);
  module.addClass(*new object_value_class("List"));  // hides nothing of the runtime
  EXPECT_FALSE(find_type("Gizmo")) << "only inlined modules lend their names";
  module.setInlined();
  const std::pair<const char*, Any> cases[] = {
      {"Gizmo",              Class_Generic(gizmo)        },
      {"test.inlined.Gizmo", Class_Generic(gizmo)        },
      {"List",               List_Generic::getClass()    },
      {"ling.List",          List_Generic::getClass()    },
      {"External",           External_Generic::getClass()},
      {"nowhere.List",       {}                          },
      {"",                   {}                          },
  };
  for (const auto& [name, of_class] : cases) {
    const auto found = find_type(name);
    EXPECT_TRUE((found ? Any(found->toClass()) : Any()).is_same(of_class)) << name;
  }
  module.setInlined(false);
}

TEST(ModuleThreads, MakeEveryModuleOnceAndLinkAll) {
  constexpr int rounds = 50;
  std::atomic<int> inserted = 0;
  on_eight_threads([&](int thread) {
    for (int i = 0; i < rounds; ++i) {
      const String name = String("test.raced{}").arg(i);
      const String child_name = String("{}.child").arg(name);
      // Half of the threads bring the parent, the others the child, or both in one step.
      if (thread == 7) {
        EXPECT_FALSE(get_module(child_name).is_error());
      } else if (!insert_module(Module(thread % 2 == 0 ? name : child_name)).is_error()) {
        ++inserted;
      }
      ASSERT_FALSE(register_function(name, String("f{}").arg(thread), answer(thread)).is_error());
      EXPECT_EQ(text(call(find_module(name).value(), String("f{}").arg(thread).view())), std::to_string(thread));
    }
  });
  EXPECT_LE(inserted, 2 * rounds);
  for (int i = 0; i < rounds; ++i) {
    const Module parent = find_module(String("test.raced{}").arg(i)).value();
    EXPECT_TRUE(property(parent, "child").is_same(find_module(String("test.raced{}.child").arg(i)).value()));
    EXPECT_EQ(parent.callables().length(), 8u);
  }
}

}  // namespace
