// This project: the same objects as host objects of the runtime, handed to Python by evaluated code.
#include "contestants.h"
#include "ling/ling.h"

#include <cstdio>
#include <cstdlib>

namespace benchmarks {
namespace {

struct counter {
  std::int64_t value = large_number;
  ling::Any child;
  std::int64_t add(std::int64_t number) const { return value + number; }
  std::int64_t measure(const std::string& text) const { return value + static_cast<std::int64_t>(text.size()); }
};

const ling::class_definition<counter> counter_class("Counter", [](ling::class_builder<counter>& c) {
  c.module("contestants")
      .doc("A number, and another counter.")
      .constructor("child", "A counter.",
                   [](ling::Any child) {
                     return counter{large_number, child};
                   },
                   {ling::Any()})
      .property(
          "value", "The number.", [](const counter& self) { return self.value; },
          [](counter& self, std::int64_t value) { self.value = value; })
      .property("child", "The other counter.", [](const counter& self) { return self.child; })
      .method("add", "number", "The sum of both numbers.", &counter::add)
      .method("sum", "number", "The sum of both numbers.", &counter::add)
      .method("measure", "text", "The sum of the number and the length of the text.", &counter::measure);
});

}  // namespace

ling::I_Callable_Generic language_function(const char* name) {
  const auto module = ling::find_module("ling.cpython");
  const ling::Any function = module ? module->callables().get(name) : ling::Any();
  if (ling::is_none(function)) {
    std::fprintf(stderr, "ling.cpython has no function %s\n", name);
    std::exit(1);
  }
  return ling::I_Callable_Generic::unchecked(function);
}

ling::Any check(ling::Any value) {
  if (ling::is_error_result(value)) {
    std::fprintf(stderr, "%s\n", ling::Error::unchecked(value).message().c_str());
    std::_Exit(1);
  }
  return value;
}

ling::Any run_python(const char* code, const char* variable, const ling::Any& value) {
  const ling::HashMap_Generic locals;
  locals.set(variable, value);
  return check(language_function("evaluate")(code, ling::EvaluationScope({}, {}, locals, {})));
}

void publish_ling_module() {
  const ling::Class_Generic counters(counter_class.required());
  const ling::List<ling::Integer> numbers;
  const ling::HashMap_Generic int_map;
  const ling::HashMap_Generic text_map;
  for (const std::int64_t number : large_numbers()) {
    numbers.append(number);
    int_map.set(number, number);
    text_map.set(ling::String("key {}").arg(number), number);
  }
  const ling::HashMap_Generic members;
  members.set("subject", check(counters(check(counters()))));
  members.set("kind", counters);
  members.set("numbers", numbers);
  members.set("int_map", int_map);
  members.set("text_map", text_map);
  members.set("function", ling::make_function("function", "number", "The next number.",
                                              [](std::int64_t number) { return number + 1; }));
  run_python(
      "import sys, types\n"
      "module = sys.modules['contestant_ling'] = types.ModuleType('contestant_ling')\n"
      "for name in members: setattr(module, name, members[name])",
      "members", members);
}

}  // namespace benchmarks
