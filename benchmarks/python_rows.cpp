// Rows in which Python works on the contestants' objects: the same loop, once per contestant.
//
// A loop is compiled anew for every contestant, because the interpreter rewrites a loop's instructions for the types it
// meets first. What the loop itself costs is the row `empty_loop`.
#include "cases.h"
#include "contestants.h"

#include <pybind11/embed.h>

#include <memory>

namespace py = pybind11;

namespace benchmarks {
namespace {

struct row {
  const char* name;
  const char* object;          // of the contestant's module: `w` in the code
  const char* code;            // null: an iteration
  const char* setup = "pass";  // before the loop
};

constexpr row rows[] = {
    {"attribute_read", "subject", "w.value"},
    {"attribute_write", "subject", "w.value = 1000000"},
    {"attribute_missing", "subject", "getattr(w, 'nothing', None)"},
    {"hasattr", "subject", "hasattr(w, 'nothing')"},
    {"attribute_missing_caught", "subject", "try: w.nothing\n    except AttributeError: pass"},
    {"method_call", "subject", "w.add(1)"},
    {"method_call_text", "subject", "w.measure('a lamp of copper')"},
    {"keyword_call", "subject", "w.sum(number=1)"},
    {"bound_method_call", "subject", "call(1)", "call = w.add"},
    {"function_call", "function", "w(1)"},
    {"index", "numbers", "w[7]"},
    {"iteration", "numbers", nullptr},
    {"make_wrapper", "subject", "w.child"},
    {"construct", "kind", "w()"},
};
constexpr row map_rows[] = {
    {"map_read_int",    "int_map",  "w[1000007]"                },
    {"map_read_text",   "text_map", "w['key 1000007']"          },
    {"map_write_int",   "int_map",  "w[1000007] = 1000000"      },
    {"map_write_text",  "text_map", "w['key 1000007'] = 1000000"},
    {"map_in_int",      "int_map",  "1000007 in w"              },
    {"map_in_text",     "text_map", "'key 1000007' in w"        },
    {"map_get_int",     "int_map",  "w.get(1000007)"            },
    {"map_get_text",    "text_map", "w.get('key 1000007')"      },
    {"map_get_default", "text_map", "w.get('nothing', None)"    },
};

const char group[] = "Python asks";
const char map_group[] = "Python asks maps";

// A failure of Python's as the text of one line.
template <class F>
void locked(const F& body) {
  const py::gil_scoped_acquire lock;
  try {
    body();
  } catch (const py::error_already_set& error) {
    throw failure(error.what());
  }
}

std::string text_of(const char* setup, const char* code) {
  const std::string body =
      code != nullptr ? "  for _ in range(n):\n    " + std::string(code) : "  for _ in range(n):\n    for _ in w: pass";
  return "def loop(w, n):\n  " + std::string(setup) + "\n" + body + "\n";
}

// The loop and what it works on, made when it is run for the first time and never dropped.
struct prepared_loop {
  py::object loop;
  py::object subject;
};

run_turns loop_over(const std::string& module, const row& of, const std::string& setup, const std::string& code) {
  return [=, prepared = std::make_shared<prepared_loop*>(nullptr)](std::int64_t turns) {
    locked([&] {
      if (*prepared == nullptr) {
        py::dict names;
        py::exec(text_of(setup.c_str(), of.code == nullptr ? nullptr : code.c_str()), names);
        const py::object subject =
            of.object ? py::object(py::module_::import(module.c_str()).attr(of.object)) : py::none();
        *prepared = new prepared_loop{names["loop"], subject};
      }
      (*prepared)->loop((*prepared)->subject, turns);
    });
  };
}

void add(const std::string& in, const std::string& who, const row& of, const std::string& setup,
         const std::string& code) {
  add_case({.group = in,
            .row = of.name,
            .contestant = who,
            .operations = of.code == nullptr ? item_count : 1,
            .measure = processor_time(loop_over("contestant_" + who, of, setup, code))});
}

// The contestant's own code for the row where it names one; nothing when it leaves the row out.
void add_python_contestant(const std::string& who, const row& of) {
  locked([&] {
    const py::module_ module = py::module_::import(("contestant_" + who).c_str());
    const py::object codes = py::getattr(module, "codes", py::none());
    std::string code = of.code != nullptr ? of.code : "";
    if (!codes.is_none()) {
      if (!codes.contains(of.name)) {
        return;
      }
      const py::object own = codes[of.name];
      code = own.is_none() ? code : own.cast<std::string>();
    }
    const py::dict setups = py::getattr(module, "setups", py::dict());
    add(group, who, of, setups.contains(of.name) ? setups[of.name].cast<std::string>() : of.setup, code);
  });
}

// Objects that are kept: how much larger the process becomes.
void add_memory(const std::string& who) {
  constexpr std::int64_t objects = 1'000'000;
  add_case({.group = "Memory",
            .row = "object with its wrapper",
            .contestant = who,
            .unit = "bytes",
            .operations = objects,
            .measure = memory_growth([who](std::int64_t turns) {
              locked([&] {
                const py::object kind = py::module_::import(("contestant_" + who).c_str()).attr("kind");
                py::dict names;
                names["kind"] = kind;
                py::exec("def make(n): return [kind() for _ in range(n)]\n", names);
                names["make"](turns * objects).release();
              });
            }),
            .countable = false});
}

}  // namespace

void register_python_rows() {
  add(group, "python", {"empty_loop", nullptr, "pass"}, "pass", "pass");
  const auto others = python_contestants();
  for (const row& of : rows) {
    for (const contestant who : contestants) {
      add(group, name_of(who), of, of.setup, of.code != nullptr ? of.code : "");
    }
    for (const std::string& who : others) {
      add_python_contestant(who, of);
    }
  }
  add(map_group, "python", {"empty_loop", nullptr, "pass"}, "pass", "pass");
  for (const row& of : map_rows) {
    for (const char* who : {"ling", "dict"}) {
      add(map_group, who, of, of.setup, of.code);
    }
  }
  for (const char* who : {"ling", "pybind11", "raw", "plain"}) {
    add_memory(who);
  }
}

}  // namespace benchmarks
