// Rows that tell whether cost grows: the same operation where there is little of something and where there is much. A
// row is flat when both cost the same.
#include "cases.h"
#include "contestants.h"
#include "ling/ling.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

namespace benchmarks {
namespace {

using ling::Any;

const char group[] = "Growth";

// Evaluates the text again and again in one scope.
run_turns evaluate_repeatedly(const char* name, const std::string& code, const Any& scope) {
  return [=](std::int64_t turns) {
    const ling::I_Callable_Generic function = language_function(name);
    const ling::String text(code);
    for (std::int64_t i = 0; i < turns; ++i) {
      if (const Any outcome = function(text, scope); ling::is_error_result(outcome)) {
        throw failure(ling::Error::unchecked(outcome).message().c_str());
      }
    }
  };
}

// A Python function of what it works on and the number of turns.
run_turns loop_over(const std::string& statement, const Any& subject) {
  return [=, loop = std::make_shared<Any>()](std::int64_t turns) {
    if (loop->empty()) {
      *loop = run_python(
          "names = {}\nexec('def loop(w, n):\\n  for _ in range(n):\\n    ' + statement, names)\nreturn names['loop']",
          "statement", ling::String(statement));
    }
    check(ling::I_Callable_Generic::unchecked(*loop)(subject, turns));
  };
}

void add(const char* name, std::int64_t parameter, run_turns run) {
  add_case({.group = group,
            .row = name,
            .contestant = "ling",
            .parameter = parameter,
            .measure = processor_time(std::move(run))});
}

// --- members of a class, and depth of inheritance --------------------------------------------------------------------
template <int members>
const ling::class_definition<void> wide_class("Wide", [](ling::class_builder<void>& c) {
  c.module("growth").doc("A class of many members.");
  for (int i = 0; i < members; ++i) {
    c.property(ling::String("member{}").arg(i), "A number.", [](const Any&) { return large_number; });
  }
});

constexpr int depth = 30;
extern const std::array<ling::class_definition<void>, depth> chain;

template <int level>
void describe_level(ling::class_builder<void>& c) {
  c.module("growth").doc("A class in a chain of descendants.");
  if constexpr (level == 0) {
    c.property("member5", "A number.", [](const Any&) { return large_number; });
  } else {
    c.parent(ling::Class_Generic(chain[level - 1].required()));
  }
}

template <int... levels>
constexpr std::array<ling::class_definition<void>, depth> make_chain(std::integer_sequence<int, levels...>) {
  return {ling::class_definition<void>("Level", &describe_level<levels>)...};
}
const std::array<ling::class_definition<void>, depth> chain = make_chain(std::make_integer_sequence<int, depth>());

Any instance_of(const ling::class_definition_base& definition) {
  return ling::make<ling::object_value_instance>(definition.required());
}

void add_class_rows() {
  const char read[] = "w.member5";
  add("attribute_read, members in the class", 10, loop_over(read, instance_of(wide_class<10>)));
  add("attribute_read, members in the class", 1000, loop_over(read, instance_of(wide_class<1000>)));
  add("attribute_read, depth of inheritance", 1, loop_over(read, instance_of(chain.front())));
  add("attribute_read, depth of inheritance", depth, loop_over(read, instance_of(chain.back())));
}

// --- entries in a scope ----------------------------------------------------------------------------------------------
Any scope_of(int entries) {
  const ling::HashMap_Generic locals;
  for (int i = 0; i < entries; ++i) {
    locals.set(ling::String("name{}").arg(i), large_number + i);
  }
  return ling::EvaluationScope({}, {}, locals, {});
}

// --- living wrappers -------------------------------------------------------------------------------------------------
void add_wrapper_rows() {
  constexpr std::int64_t many = 100'000;
  const Any subject = run_python("return __import__('contestant_ling').subject", "unused", 0);
  const auto make = processor_time(loop_over("w.child", subject));
  for (const std::int64_t living : {std::int64_t{1}, many}) {
    add_case({.group = group,
              .row = "make_wrapper, living wrappers",
              .contestant = "ling",
              .parameter = living,
              .measure = [=](std::int64_t turns) {
                const Any kept = run_python(
                    "from contestant_ling import kind\n"
                    "kept = [kind() for _ in range(count)]\nreturn lambda: kept",
                    "count", living);
                return make(turns);
              }});
  }
}

}  // namespace

void register_growth_rows() {
  add_class_rows();
  add_wrapper_rows();
  for (const int entries : {1, 1000}) {
    add("evaluate_expr, entries in the scope", entries,
        evaluate_repeatedly("evaluate_expr", "name0", scope_of(entries)));
  }
  constexpr std::int64_t evaluations = 1'000'000;
  add_case({.group = "Memory",
            .row = "evaluation, of a million of one text",
            .contestant = "ling",
            .unit = "bytes",
            .operations = evaluations,
            .measure =
                [](std::int64_t turns) {
                  const auto run = evaluate_repeatedly("evaluate_expr", "1 + 2", {});
                  run(1000);
                  return memory_growth(run)(turns * evaluations);
                },
            .countable = false});
  constexpr std::int64_t texts = 100'000;
  add_case({.group = "Memory",
            .row = "evaluation, of 100,000 different texts",
            .contestant = "ling",
            .unit = "bytes",
            .operations = texts,
            .measure =
                [](std::int64_t turns) {
                  std::int64_t number = large_number;
                  const run_turns run = [&](std::int64_t count) {
                    for (std::int64_t i = 0; i < count; ++i) {
                      evaluate_repeatedly("evaluate_expr", "1 + " + std::to_string(++number), {})(1);
                    }
                  };
                  // A cache may fill itself first.
                  run(10'000);
                  return memory_growth(run)(turns * texts);
                },
            .countable = false});
}

void register_module_rows(std::int64_t further) {
  for (std::int64_t i = 0; i < further; ++i) {
    check(ling::get_module(ling::String("growth.module{}").arg(i)));
  }
  const auto modules = static_cast<std::int64_t>(ling::modules().size());
  add("evaluate_expr, modules", modules, evaluate_repeatedly("evaluate_expr", "1 + 2", {}));
  const ling::HashMap_Generic locals;
  locals.set("limit", 3);
  add("evaluate, modules", modules,
      evaluate_repeatedly("evaluate", "total = 0\nfor i in range(limit):\n  total += i\nreturn total\n",
                          ling::EvaluationScope({}, {}, locals, {})));
}

}  // namespace benchmarks
