// Conversion of values to classes: only what loses nothing.
#include "ling/ling.h"

#include <gtest/gtest.h>

namespace {

using namespace ling;

// Becomes a String; anything else by the rules of `stubborn`.
struct Label {
  Any converted;
};
constinit const class_definition<Label> label_class("Label", [](class_builder<Label>& c) {
  c.module("test.coerce")
      .constructor("converted", "", [](const Any& converted) { return Label{converted}; })
      .method(Any::__coerce__, "to", [](const Label& self, const Class_Generic& to) {
        return to == String::getClass() ? self.converted : Any(Undefined());
      });
});

TEST(Coerce, ConvertsWithoutLoss) {
  const Class_Generic label(label_class.required());
  const std::tuple<Any, Class_Generic, const char*> cases[] = {
      {"é",                                                      ByteArray::getClass(), "b\"\\xc3\\xa9\""                                              },
      {-9223372036854775808.0,                                    Integer::getClass(),   "-9223372036854775808"                                         },
      {9223372036854775808.0,                                     Integer::getClass(),   "9223372036854775808"                                          },
      {18446744073709551616.0,                                    Integer::getClass(),   "Error: Unable to convert '1.8446744073709552e+19' to Integer."},
      {2.5,                                                       Integer::getClass(),   "Error: Unable to convert '2.5' to Integer."                   },
      {9007199254740992,                                          Float::getClass(),     "9007199254740992.0"                                           },
      {9007199254740993,                                          Float::getClass(),     "Error: Unable to convert '9007199254740993' to Float."        },
      {1,                                                         Boolean::getClass(),   "true"                                                         },
      {2,                                                         Boolean::getClass(),   "Error: Unable to convert '2' to Boolean."                     },
      {1,                                                         String::getClass(),    "Error: Unable to convert '1' to String."                      },
      {label("text"),                                             String::getClass(),    "text"                                                         },
      {label("text"),                                             Integer::getClass(),   "Error: Unable to convert '<test.coerce.Label>' to Integer."   },
      {true,                                                      Integer::getClass(),   "1"                                                            },
      {label(Error("torn")),                                      String::getClass(),    "Error: torn"                                                  },
      {label(5),                                                  String::getClass(),
       "Error: The method '__coerce__' of test.coerce.Label returned ling.Integer instead of ling.String."                                              },
      {Error("plain"),                                            String::getClass(),    "Error: Unable to convert 'Error: plain' to String."           },
      {make_computed<Integer>([] { return Any(Error("late")); }), Integer::getClass(),   "Error: late"                                                  },
  };
  for (const auto& [value, to, expected] : cases) {
    EXPECT_EQ(display_text(to.coerce(value)).view(), expected) << to.name().view();
  }
}

TEST(Coerce, LeavesInstancesAsTheyAre) {
  const Any text = "some text";
  EXPECT_TRUE(String::getClass().coerce(text).is_same(text));
  EXPECT_TRUE(I_Immutable::getClass().coerce(text).is_same(text));
  const Any error = Error("a value like any other");
  EXPECT_TRUE(Error::getClass().coerce(error).is_same(error));
}

}  // namespace
