// What the tests share: calls by name as scripts make them, tables of what comes of them, instances that act up while
// they are compared or destroyed, and eight threads.
#pragma once

#include "ling/ling.h"

#include <gtest/gtest.h>

#include <barrier>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace ling::testing {

using namespace ling;  // so that one directive gives a test both

template <class... Arguments>
Any call(const Any& value, std::string_view method, const Arguments&... arguments) {
  const Any row[] = {Any(arguments)..., Any()};
  return call_method(value, meta_method_untyped(method), std::span<const Any>(row, sizeof...(Arguments)));
}

template <class... Values>
std::vector<Any> values(const Values&... all) {
  return {Any(all)...};
}

inline Any property(const Any& value, std::string_view name) {
  return value.propertyValue(meta_property_untyped(name));
}

template <class... Arguments>
Any construct(const Class_Generic& of_class, const Arguments&... arguments) {
  return static_cast<const I_Callable_Generic&>(of_class)(arguments...);
}

// Of keys and values in turn.
inline HashMap_Generic make_map(const std::vector<Any>& pairs) {
  HashMap_Generic map;
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    map.set(pairs[i], pairs[i + 1]);
  }
  return map;
}
inline HashSet_Generic make_set(const std::vector<Any>& items) {
  return HashSet_Generic::unchecked(construct(HashSet_Generic::getClass(), List_Generic(items)));
}

inline std::string text(const Any& value) { return std::string(display_text(value).view()); }

// The message of an Error; for any other value its text, so that a failing expectation says what came instead.
inline std::string message(const Any& value) {
  return is_error_result(value) ? std::string(Error::unchecked(value).message().view()) : "no error: " + text(value);
}

// What something gave, and the text that shows it: an Error begins with its class.
struct outcome {
  Any value;
  std::string_view expected;
};
inline void expect_outcomes(std::initializer_list<outcome> rows) {
  for (const outcome& each : rows) {
    EXPECT_EQ(text(each.value), each.expected);
  }
}

// A method that scripts call, and what it gives.
struct method_row {
  const char* method;
  std::vector<Any> arguments;
  std::string_view result;
  std::string_view after = {};  // how the receiver is shown then, if the method changes it
};
inline void expect_methods(const std::function<Any()>& make_receiver, std::span<const method_row> rows) {
  for (const method_row& each : rows) {
    const Any receiver = make_receiver();
    const std::string before = text(receiver);
    const Any result = call_method(receiver, meta_method_untyped(each.method), each.arguments);
    EXPECT_EQ(text(result), each.result) << each.method << text(Tuple_Generic(each.arguments));
    EXPECT_EQ(text(receiver), each.after.empty() ? before : each.after) << each.method;
  }
}

// A method that answers with an Error that shows what it was given.
inline I_Callable_Generic echo(const String& name) {
  return method_builder_base(name, "self, all...", "", {}, true).body([name](const Any&, const Variadic& all) -> Any {
    return Error(String("{}{}").arg(name, all));
  });
}
// One that takes anything and answers a value.
inline I_Callable_Generic answer(const Any& value) {
  return method_builder_base("answer", "all...", "", {}, true).body([value](const Variadic&) { return value; });
}

// A value whose behaviour is C++ functions; its hash is always the same, so that keys of it meet in the table, and that
// of no other value in these tests.
struct Actor {
  std::function<Any(const Any& other)> compare = [](const Any&) -> Any { return Undefined(); };
  std::function<void()> destroy = [] {};

  Actor() = default;
  explicit Actor(std::function<Any(const Any&)> compare_function) : compare(std::move(compare_function)) {}
  Actor(Actor&& other) noexcept
      : compare(std::exchange(other.compare, {})), destroy(std::exchange(other.destroy, [] {})) {}
  ~Actor() { destroy(); }
};

inline constinit const class_definition<Actor> actor_class("Actor", [](class_builder<Actor>& c) {
  c.module("test.containers")
      .parent(I_Immutable::getClass())
      .method(Any::__hash__, "", [](const Actor&) { return 1234567890; })
      .method(Any::__compare__, "other", [](const Actor& self, const Any& other) { return self.compare(other); });
});

inline Any make_actor(std::function<Any(const Any&)> compare) {
  return make<object_value_native<Actor>>(actor_class.required(), std::move(compare));
}
inline Any make_mortal(std::function<void()> destroy) {
  Any value = make<object_value_native<Actor>>(actor_class.required());
  native_cast<Actor>(value)->destroy = std::move(destroy);
  return value;
}

// Runs `work(thread number)` on eight threads that start at once.
template <class Work>
void on_eight_threads(Work work) {
  constexpr int count = 8;
  std::barrier start(count);
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& each : threads) {
    each.join();
  }
}

}  // namespace ling::testing
