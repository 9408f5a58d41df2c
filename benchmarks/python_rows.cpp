// Rows in which Python works on the contestants' objects: the same loop, once per contestant.
//
// A loop is compiled anew for every contestant, because the interpreter rewrites a loop's instructions for the types it
// meets first. What the loop itself costs is the row `empty_loop`.
#include "contestants.h"

#include <benchmark/benchmark.h>
#include <pybind11/embed.h>

#include <string>

namespace py = pybind11;

namespace benchmarks {
namespace {

struct row {
  const char* name;
  const char* object;  // of the contestant's module: `w` in the code
  const char* code;
};

constexpr row rows[] = {
    {"attribute_read",    "subject",  "w.value"                    },
    {"attribute_write",   "subject",  "w.value = 1000000"          },
    {"attribute_missing", "subject",  "getattr(w, 'nothing', None)"},
    {"method_call",       "subject",  "w.add(1)"                   },
    {"function_call",     "function", "w(1)"                       },
    {"index",             "numbers",  "w[7]"                       },
    {"make_wrapper",      "subject",  "w.child"                    },
};
constexpr row iteration = {"iteration", "numbers", nullptr};
constexpr row empty_loop = {"empty_loop", nullptr, "pass"};

constexpr int batch = 20'000;

std::string text_of(const row& of) {
  const std::string body = of.code != nullptr
                               ? "  for _ in range(n):\n    " + std::string(of.code)
                               : "  for _ in range(n // " + std::to_string(item_count) + "):\n    for _ in w: pass";
  return "def loop(w, n):\n" + body + "\n";
}

py::object compile(const row& of) {
  py::dict names;
  py::exec(text_of(of), names);
  return names["loop"];
}

void run(benchmark::State& state, const row& of, const char* module) {
  const py::gil_scoped_acquire lock;
  try {
    const py::object loop = compile(of);
    py::object object = py::none();
    if (of.object != nullptr) {
      object = py::module_::import(module).attr(of.object);
    }
    loop(object, static_cast<int>(item_count));  // fails here, if it fails
    while (state.KeepRunningBatch(batch)) {
      loop(object, batch);
    }
  } catch (const py::error_already_set& error) {
    state.SkipWithError(error.what());
  }
}

void add(const row& of) {
  for (const contestant who : contestants) {
    benchmark::RegisterBenchmark((std::string(of.name) + "/" + name_of(who)).c_str(), run, of, module_of(who));
  }
}

}  // namespace

void register_python_rows() {
  for (const row& of : rows) {
    add(of);
  }
  add(iteration);
  benchmark::RegisterBenchmark("empty_loop/python", run, empty_loop, "");
}

}  // namespace benchmarks
