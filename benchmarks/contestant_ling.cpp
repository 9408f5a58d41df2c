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
      .method("add", "number", "The sum of both numbers.", &counter::add);
});

ling::Any checked(ling::Any value) {
  if (ling::is_error_result(value)) {
    std::fprintf(stderr, "%s\n", ling::Error::unchecked(value).message().c_str());
    std::exit(1);
  }
  return value;
}

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

void publish_ling_module() {
  const ling::Class_Generic counters(counter_class.required());
  const ling::List<ling::Integer> numbers;
  for (const std::int64_t number : large_numbers()) {
    numbers.append(number);
  }
  const ling::HashMap_Generic locals;
  locals.set("subject", checked(counters(checked(counters()))));
  locals.set("numbers", numbers);
  locals.set("function", ling::make_function("function", "number", "The next number.",
                                             [](std::int64_t number) { return number + 1; }));
  locals.set("name", module_of(contestant::ling));
  checked(
      language_function("evaluate")("import sys, types\n"
                                    "module = sys.modules[name] = types.ModuleType(name)\n"
                                    "module.subject, module.numbers, module.function = subject, numbers, function",
                                    ling::EvaluationScope({}, {}, locals, {})));
}

}  // namespace benchmarks
