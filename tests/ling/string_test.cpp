// Texts and byte arrays: validity, positions in code points, and what scripts can do with them.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

TEST(String, ReplacesEveryMaximalPartOfIllFormedBytes) {
  const std::tuple<const char*, std::string_view, std::string_view, std::size_t> cases[] = {
      {"well-formed", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "aé€😀", 4},
      {"stray continuation", "a\x80z", "a\uFFFDz", 3},
      {"overlong of three", "\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD", 3},
      {"surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD", 3},
      {"last before and first after the surrogates", "\xED\x9F\xBF\xEE\x80\x80", "\xED\x9F\xBF\xEE\x80\x80", 2},
      {"cut after three of four, then text", "\xF0\x9F\x98z", "\uFFFDz", 2},
      {"cut by another lead", "\xE2\x82\xC3\xA9", "\uFFFDé", 2},
      {"highest code point", "\xF4\x8F\xBF\xBF", "\U0010FFFF", 1},
      {"above the highest", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD", 4},
      {"never a lead", "\xFE\xFF\xF5", "\uFFFD\uFFFD\uFFFD", 3},
      {"bad byte behind a long ASCII run", "0123456789abcdef\xFF", "0123456789abcdef\uFFFD", 17},
      {"zero bytes are characters", std::string_view("a\0b", 3), std::string_view("a\0b", 3), 3},
  };
  for (const auto& [what, bytes, expected, length] : cases) {
    const String text(bytes);
    EXPECT_EQ(text.view(), expected) << what;
    EXPECT_EQ(text.length(), length) << what;
    EXPECT_EQ(text.c_str()[text.size()], '\0') << what;
  }
}

TEST(String, CountsPositionsInCodePoints) {
  const String text("añ€😀z€");
  ASSERT_EQ(text.length(), 6u);
  const std::tuple<std::int64_t, std::int64_t, const char*> slices[] = {
      {0,         1,         "a"    },
      {1,         3,         "ñ€"},
      {-1,        INT64_MAX, "€"  },
      {-3,        -1,        "😀z"},
      {4,         2,         ""     },
      {-100,      2,         "añ"  },
      {100,       200,       ""     },
      {INT64_MIN, INT64_MIN, ""     }
  };
  for (const auto& [start, stop, expected] : slices) {
    EXPECT_EQ(text.sliced(start, stop), expected) << start << ".." << stop;
  }
  EXPECT_EQ(text.substr(2, 2), "€😀");
  EXPECT_EQ(text.substr(0).get(), text.get()) << "the whole text needs no copy";

  EXPECT_EQ(text.find("€", 3), 5);
  EXPECT_EQ(text.find("€", 6), String::npos);
  EXPECT_EQ(text.find("", 6), 6);
  EXPECT_EQ(text.find("", 7), String::npos);
  EXPECT_EQ(text.rfind("€"), 5);
}

TEST(String, TakesTextApartAndPutsItTogether) {
  EXPECT_EQ(text(call(",a,,ü,", "split", ",")), "[\"\", \"a\", \"\", \"ü\", \"\"]");
  EXPECT_EQ(String("aXbXX").replaced("X", "--"), "a--b----");
  EXPECT_EQ(String("aaa").replaced("aa", "b"), "ba");
  EXPECT_EQ(String("abc").replaced("", "-"), "abc");
  EXPECT_EQ(String(" \t\nä b\r\v\f ").trimmed(), "ä b");
  EXPECT_EQ(string_builder().append("a").append(String("é")).append('!').build(), "aé!");
  EXPECT_EQ(String("{} of {}: {}").arg(1, "x", List_Generic{"y"}), "1 of x: [\"y\"]");
  EXPECT_EQ(String("{} and {}").arg("{}"), "{} and {}") << "what was filled in is no placeholder";
  EXPECT_EQ(String("{{}").arg(1, 2), "{1");
}

TEST(String, SharesTheEmptyTextAndOneHash) {
  EXPECT_EQ(String().get(), String("").get());
  EXPECT_EQ(String().get(), String("abc").substr(3).get());
  EXPECT_TRUE(String().has(object_traits::immortal));
  const String text("the hash is made on first request");
  const std::uint64_t expected = hash_of(String(text.view()));
  on_eight_threads([&](int) { EXPECT_EQ(hash_of(text), expected); });
}

TEST(String, AnswersScripts) {
  const method_row rows[] = {
      {"at",     {-2}, "å"                                                             },
      {"at",     {7},  "Error: The index 7 is out of range for a text of length 7."     },
      {"split",  {""}, "BadArgument: The separator must be one ASCII character, not ''."},
      {"toUtf8", {},   "b\"sm\\xc3\\xb6rg\\xc3\\xa5s\""                                 },
  };
  expect_methods([] { return "smörgås"; }, rows);
}

TEST(ByteArray, AnswersScripts) {
  const method_row rows[] = {
      {"at",       {-1},    "255"                                            },
      {"at",       {3},     "Error: The index 3 is out of range for 3 bytes."},
      {"sliced",   {1},     "b\"z\\xff\""                                    },
      {"sliced",   {1, -1}, "b\"z\""                                         },
      {"toString", {},      "Error: The 3 bytes are not valid UTF-8."        },
  };
  expect_methods([] { return ByteArray(std::string_view("\x00z\xFF", 3)); }, rows);
  EXPECT_EQ(text(call(String("ä").toUtf8(), "toString")), "ä");
}

}  // namespace
