// Members beyond those of the class: of one object, by meta-methods, by hooks; and overloads with and without receiver.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

I_Callable_Generic constant(int value) {
  return make_function("constant", "", "", [value] { return value; });
}
const meta_property_untyped x_property("x");
const meta_method_untyped x_method("x");

Any instance_with_methods(const std::vector<std::pair<const char*, I_Callable_Generic>>& methods) {
  auto& of_class = *new object_value_class("Remote");
  for (const auto& [name, method] : methods) {
    of_class.add_method_unsafe(name, method);
  }
  return of_class.allocate_instance();
}

TEST(MetaMethods, TakeOverMemberAccess) {
  std::vector<std::pair<const char*, I_Callable_Generic>> failing;
  for (const char* name :
       {"__propertyValue__", "__setPropertyValue__", "__property__", "__ownProperty__", "__method__", "__ownMethod__",
        "__insertProperty__", "__insertMethod__", "__removeProperty__", "__removeMethod__", "__ownProperties__"}) {
    failing.emplace_back(name, echo(name));
  }
  const Any remote = instance_with_methods(failing);
  expect_outcomes({
      {remote.propertyValue(x_property), R"(Error: __propertyValue__("x",))"},
      {remote.setPropertyValue(x_property, 7), R"(Error: __setPropertyValue__("x", 7))"},
      {property_of(remote, x_property), R"(Error: __property__("x",))"},
      {own_property_of(remote, x_property), R"(Error: __ownProperty__("x",))"},
      {call(remote, "x"), R"(Error: __method__("x",))"},
      {own_method_of(remote, x_method), R"(Error: __ownMethod__("x",))"},
      {insert_property_value(remote, x_property, 1), R"(Error: __insertProperty__("x", <ling.Property>))"},
      {insert_method(remote, x_method, constant(1)), R"(Error: __insertMethod__("x", <function constant>))"},
      {remove_property(remote, x_property), R"(Error: __removeProperty__("x",))"},
      {remove_method(remote, x_method), R"(Error: __removeMethod__("x",))"},
      {own_properties_of(remote), "{}"},
  });
  EXPECT_FALSE(raw_property_of(remote, x_property)) << "the raw forms ask no meta-method";

  const Any obliging = instance_with_methods({
      {"__propertyValue__",    answer(5)                                        },
      {"__setPropertyValue__", answer(7)                                        },
      {"__property__",         answer(Property::constant(5))                    },
      {"__method__",           answer(constant(6))                              },
      {"__ownMethod__",        answer("neither")                                },
      {"__ownMethods__",       answer(make_map({"x", 1}))                       },
      {"__insertMethod__",     answer(make_computed<Any>([] { return None(); }))},
      {"__removeProperty__",   answer(false)                                    },
      {"__removeMethod__",     answer("neither")                                },
  });
  expect_outcomes({
      {obliging.setPropertyValue(x_property, 7), "None"},
      {property_of(obliging, x_property).value().read(obliging), "5"},
      {call(obliging, "x"), "6"},
      {own_method_of(obliging, x_method), "None"},
      {own_methods_of(obliging), "{\"x\": 1}"},
      {insert_method(obliging, x_method, constant(1)), "None"},
      {remove_property(obliging, x_property), "false"},
      {remove_method(obliging, x_method), "BadArgument: Expected Boolean, got String: neither"},
  });
}

TEST(Instance, HasMembersOfItsOwn) {
  auto& of_class = *new object_value_class("Plain");
  of_class.add_method_unsafe("x", constant(1));
  of_class.add_property_unsafe("x", Property::constant(1));
  const Any one = of_class.allocate_instance();
  const Any other = of_class.allocate_instance();
  EXPECT_FALSE(insert_method(one, x_method, constant(2)).is_error());
  EXPECT_FALSE(insert_property_value(one, x_property, 3).is_error());
  EXPECT_TRUE(own_property_of(one, x_property));
  EXPECT_FALSE(own_method_of(other, x_method)) << "that of the class is not its own";
  expect_outcomes({
      {call(one, "x"), "2"},
      {property(one, "x"), "3"},
      {call(other, "x"), "1"},
      {remove_method(one, x_method), "true"},
      {remove_method(one, x_method), "false"},
      {remove_property(one, x_property), "true"},
      {own_properties_of(one).length(), "0"},
      {insert_method(5, x_method, constant(1)), "Error: The method 'x' cannot be added to a value of class Integer."},
      {remove_property(5, x_property), "false"},
      {insert_property_value(Class_Generic(of_class), meta_property_untyped("all"), 4), "None"},
      {insert_method(Class_Generic(of_class), meta_method_untyped("all"), echo("all")), "None"},
      {property(other, "all"), "4"},
      {call(other, "all", 5), "Error: all()"}, // a method of the class takes no receiver
  });
  EXPECT_EQ(text(call(one, "x")), "1");
}

TEST(InstanceThreads, ChangeMembersAndFieldsAtOnce) {
  auto& of_class = *new object_value_class("Busy");
  of_class.add_field_unsafe("field", 0, "");
  const meta_field_untyped field("field");
  const Any object = of_class.allocate_instance();
  on_eight_threads([&](int thread) {
    const meta_property_untyped mine(String("p{}").arg(thread));
    for (int i = 0; i < 300; ++i) {
      object.setFieldValue(field, 5000 + i);
      ASSERT_TRUE(Integer::matches(object.fieldValue(field).get()));
      ASSERT_FALSE(insert_property_value(object, mine, i).is_error());
      ASSERT_EQ(text(object.propertyValue(mine)), std::to_string(i));
      ASSERT_LE(own_properties_of(object).length(), 8u);
      ASSERT_TRUE(remove_property(object, mine).value().value());
    }
  });
}

struct Bag {
  Any x = Error("nothing in it");
};
constinit const class_definition<Bag> bag_class("Bag", [](class_builder<Bag>& c) {
  static constexpr dynamic_member_hooks hooks{
      [](const Any&, const name_entry& name) -> Any { return name.text == "size" ? Any(constant(99)) : Any(); },
      [](const Any& self, const name_entry&) { return native_cast<Bag>(self)->x; },
      [](const Any& self, const name_entry& name, const Any& value) -> Any {
        native_cast<Bag>(self)->x = value;
        return name.text == "locked" ? Any(Error("locked")) : Any();
      },
  };
  c.module("test.members").constant("fixed", 1, "").hooks(hooks);
});

TEST(Hooks, AnswerForMembersThatTheClassDoesNotRegister) {
  auto& derived = *new object_value_class("DerivedBag");
  derived.add_parent_unsafe(bag_class.required());
  for (const Any& bag : {bag_class.required().allocate_instance(), derived.allocate_instance()}) {
    expect_outcomes({
        {property(bag,                                         "fixed"), "1"                   },
        {property(bag,                                         "x"),     "Error: nothing in it"},
        {bag.setPropertyValue(meta_property_untyped("locked"), 1),       "Error: locked"       },
        {bag.setPropertyValue(x_property,                      4),       "None"                },
        {property(bag,                                         "x"),     "4"                   },
        {call(bag,                                             "size"),  "99"                  },
    });
    EXPECT_FALSE(raw_method_of(bag, meta_method_untyped("size")));
  }
}

TEST(Multimethod, ListsItsIndependentFunctions) {
  const auto with_receiver = method_builder_base("f", "self", "", {}, true).body([](const Any&) { return 1; });
  const auto alone = make_function("f", "a, b", "", [](int, int) { return 2; });
  const Any value = make<object_value_multimethod>("f", std::vector<I_Callable_Generic>{with_receiver, alone});
  const auto f = I_Callable_Generic::unchecked(value);
  const auto& multimethod = static_cast<const object_value_multimethod&>(*value.get());
  ASSERT_EQ(multimethod.independent_functions().size(), 1u);
  EXPECT_TRUE(multimethod.independent_functions().front().is_same(alone));
  EXPECT_FALSE(f.isIndependent());
  get_module("test.members").value().addCallable("f", f);
  EXPECT_EQ(qualname(alone), "test.members.f");
  EXPECT_TRUE(f.isIndependent()) << "a function of a module takes no receiver";
  EXPECT_EQ(multimethod.independent_functions().size(), 2u);
}

struct Impostor {};
constinit const class_definition<Impostor> impostor_class("Impostor", [](class_builder<Impostor>& c) {
  c.module("test.members").parent(Module::getClass()).parent(Logger::getClass()).parent(Type::getClass());
});

TEST(Handle, IsNotTakenInByADescendantWithOtherData) {
  const Any impostor = impostor_class.required().allocate_instance();
  EXPECT_FALSE(Module::cast(impostor));
  EXPECT_FALSE(Logger::cast(impostor));
  EXPECT_FALSE(Type::cast(impostor));
  EXPECT_TRUE(is_error_result(property(impostor, "importance")));
  auto& plain_descendant = *new object_value_class("PlainEvaluationError");
  plain_descendant.add_parent_unsafe(EvaluationError::getClass().object());
  EXPECT_FALSE(EvaluationError::cast(Error(plain_descendant, "without a place")));
  EXPECT_EQ(text(property(construct(plain_descendant, "m", 1, 2), "line")), "2");
}

constinit const class_definition<void> table_class("TableScope", [](class_builder<void>& c) {
  c.module("test.members").parent(I_Map_Generic::getClass());
});

TEST(EvaluationScope, TakesMapsOrNone) {
  const Class_Generic scope = EvaluationScope::getClass();
  const Any read_only = table_class.required().allocate_instance();
  EXPECT_TRUE(EvaluationScope::cast(construct(scope, 1, read_only)).value().globals().is_same(read_only));
  EXPECT_EQ(message(construct(scope, 1, 2)),
            "Bad call of 'ling.EvaluationScope.__init__': the argument 'globals' must be I_Map | None, not Integer: 2");
  EXPECT_TRUE(is_error_result(construct(scope, None(), None(), None(), read_only))) << "variables come back into it";
  EXPECT_EQ(text(property(construct(scope, 1, make_map({1, 1}), make_map({2, 2}), make_map({3, 3})), "outLocals")),
            "{3: 3}");
}

TEST(Names, AreKeptForWhatIsDeclaredOnly) {
  EXPECT_FALSE(initialize().is_error());
  const Module ling = get_module("ling").value();
  const Any instance = make<object_value_instance>(*new object_value_class("Owner"));
  expect_outcomes({
      {call(ling, "method_of", instance, "data1"), "None"},
      {call(ling, "property_of", instance, "data1"), "None"},
      {call(ling, "insert_property_value", instance, "data1", 7), "None"},
      {call(ling, "insert_property_value", instance, "data1", 8), "None"},
      {call(ling, "own_properties_of", instance), R"({"data1": <ling.Property>})"},
  });
  EXPECT_EQ(internal::find_interned("data1"), nullptr);
  const internal::name_to_look_up name("data1");
  const meta_property_untyped own(*name);
  expect_outcomes({
      {instance.setPropertyValue(own, 9), "Error: The property 'data1' is read-only for '<Owner>'."},
      {property(instance, "data1"), "8"}, // declares the name
      {instance.propertyValue(own), "8"},
      {remove_property(instance, own), "true"},
      {instance.propertyValue(own), "Error: The property 'data1' is missing in 'Owner'."},
  });
}

}  // namespace
