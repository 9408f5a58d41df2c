// Members beyond those of the class: of one object, by meta-methods, by hooks; and overloads with and without receiver.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

I_Callable_Generic constant(int value) {
  return make_function("constant", "", "", [value] { return value; });
}
const meta_property_untyped x_property("x");
const meta_method_untyped x_method("x");

// Records every request that it takes over, and refuses the name "bad".
struct Remote {
  std::string requests;
  Any answer(const char* what, const String& name, const Any& value) {
    requests += text(String("{} {}, ").arg(what, name));
    return name == "bad" ? Any(Error("refused")) : value;
  }
};
constinit const class_definition<Remote> remote_class("Remote", [](class_builder<Remote>& c) {
  const auto takes_name = [](const char* what, const Any& value) {
    return [=](Remote& self, const String& name) { return self.answer(what, name, value); };
  };
  const auto takes_value = [](const char* what, const Any& value) {
    return [=](Remote& self, const String& name, const Any&) { return self.answer(what, name, value); };
  };
  const HashMap_Generic own = make_map({"x", 1});
  const Any five = Property::constant(5);
  const Any six = constant(6);
  c.module("test.members")
      .method(Any::__propertyValue__, "name", takes_name("get", 5))
      .method(Any::__setPropertyValue__, "name, value", takes_value("set", 7))
      .method(Any::__property__, "name", takes_name("property", five))
      .method(Any::__ownProperty__, "name", takes_name("own property", five))
      .method(Any::__method__, "name", takes_name("method", six))
      .method(Any::__ownMethod__, "name", takes_name("own method", six))
      .method(Any::__ownProperties__, "", [own](const Remote&) { return own; })
      .method(Any::__ownMethods__, "", [own](const Remote&) { return own; })
      .method(Any::__insertProperty__, "name, property", takes_value("insert property", true))
      .method(Any::__insertMethod__, "name, method",
              takes_value("insert method", make_computed<Any>([] { return None(); })))
      .method(Any::__removeProperty__, "name", takes_name("remove property", false))
      .method(Any::__removeMethod__, "name", takes_name("remove method", "neither"));
});

TEST(MetaMethods, TakeOverMemberAccess) {
  const Any remote = remote_class.required().allocate_instance();
  const meta_property_untyped bad("bad");
  const meta_method_untyped bad_method("bad");
  expect_outcomes({
      {remote.propertyValue(x_property), "5"},
      {remote.propertyValue(bad), "Error: refused"},
      {remote.setPropertyValue(x_property, 7), "None"},
      {remote.setPropertyValue(bad, 7), "Error: refused"},
      {property_of(remote, x_property).value().read(remote), "5"},
      {property_of(remote, bad), "Error: refused"},
      {own_property_of(remote, x_property).value().read(remote), "5"},
      {call(remote, "x"), "6"},
      {call(remote, "bad"), "Error: refused"},
      {own_method_of(remote, x_method).value()(), "6"},
      {insert_property_value(remote, x_property, 1), "None"},
      {insert_property_value(remote, bad, 1), "Error: refused"},
      {insert_method(remote, x_method, constant(1)), "None"},
      {insert_method(remote, bad_method, constant(1)), "Error: refused"},
      {remove_property(remote, x_property), "false"},
      {remove_method(remote, x_method), "BadArgument: Expected Boolean, got String: neither"},
  });
  EXPECT_EQ(native_cast<Remote>(remote)->requests,
            "get x, get bad, set x, set bad, property x, property bad, own property x, method x, method bad, own "
            "method x, insert property x, insert property bad, insert method x, insert method bad, remove property x, "
            "remove method x, ");
  EXPECT_EQ(own_properties_of(remote).length(), 1u);
  EXPECT_TRUE(own_methods_of(remote).contains("x"));
  EXPECT_FALSE(raw_property_of(remote, x_property)) << "the raw forms ask no meta-method";
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
  });
  EXPECT_EQ(text(call(one, "x")), "1");
}

TEST(Instance, LetsGoOfMembersAndFieldsAfterUnlocking) {
  auto& of_class = *new object_value_class("Holder");
  of_class.add_field_unsafe("field", None(), "");
  const meta_field_untyped field("field");
  const std::function<void(const Any&)> removals[] = {
      [](const Any& object) { (void)remove_property(object, x_property); },
      [](const Any& object) { (void)insert_property_value(object, x_property, 1); },
      [&](const Any& object) { object.setFieldValue(field, 1); },
  };
  for (const auto& remove : removals) {
    const Any object = of_class.allocate_instance();
    int deaths = 0;
    const auto die = [&] { deaths += is_error_result(object.fieldValue(field)) ? 100 : 1; };  // needs the lock
    (void)insert_property_value(object, x_property, make_mortal(die));
    object.setFieldValue(field, make_mortal(die));
    remove(object);
    EXPECT_EQ(deaths, 1);
    (void)remove_property(object, x_property);
    object.setFieldValue(field, None());
    EXPECT_EQ(deaths, 2);
  }
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
}

TEST(Names, AreKeptForWhatIsDeclaredOnly) {
  EXPECT_FALSE(initialize().is_error());
  const Module ling = get_module("ling").value();
  const auto call_function = [&](const char* function, auto... arguments) {
    return I_Callable_Generic::unchecked(ling.callables().get(function))(arguments...);
  };
  auto& of_class = *new object_value_class("Owner");
  const Any instance = make<object_value_instance>(of_class);
  expect_outcomes({
      {call_function("method_of", instance, "data1"), "None"},
      {call_function("property_of", instance, "data1"), "None"},
      {call_function("insert_property_value", 5, "data1", 1),
       "Error: The property 'data1' cannot be added to a value of class Integer."},
      {call_function("insert_property_value", instance, "data1", 7), "None"},
      {call_function("insert_property_value", instance, "data1", 8), "None"},
      {call_function("own_properties_of", instance), R"({"data1": <ling.Property>})"},
  });
  EXPECT_EQ(internal::find_interned("data1"), nullptr);
  const internal::name_to_look_up name("data1");
  const meta_property_untyped own(*name);
  expect_outcomes({
      {instance.propertyValue(own), "8"},
      {instance.setPropertyValue(own, 9), "Error: The property 'data1' is read-only for '<Owner>'."},
      {property(instance, "data1"), "8"},
      {instance.propertyValue(own), "8"},
      {remove_property(instance, own), "true"},
      {instance.propertyValue(own), "Error: The property 'data1' is missing in 'Owner'."}
  });
}

}  // namespace
