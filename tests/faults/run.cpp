// Tries every scenario with allocations that fail: exactly the n-th for every n until none is left to fail, every n-th,
// and several in a row. Each must give its result or say that memory has run out, must be done or not done, and must
// work the next time. A process for each scenario, so that a crash or a hang is told with its name and its number.
#include "faults/run.h"

#include "faults/attempt.h"
#include "language/evaluation.h"
#include "ling/ling.h"
#include "python/interpreter.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <regex>
#include <string>

namespace faults {

namespace {

using namespace ling;
using namespace ling::cpython;

constexpr unsigned patience = 60;  // seconds, for what takes milliseconds
constexpr plan nothing_fails{1, 1, 0};

struct mode {
  const char* text;
  std::size_t count;        // how many fail in a row; without end: every n-th
  bool first_time = false;  // in processes that have not done it before

  plan what_fails(std::size_t n) const { return {n, count == without_end ? n : 1, count}; }
};
// Never all from one on: some versions of the interpreter wait for memory when they look for the handler of an
// exception.
constexpr mode modes[] = {
    {"only, the first time, the allocation", 1, true},
    {"only the allocation", 1},
    {"every allocation", without_end},
    {"eight allocations from", 8},
    {"a thousand from", 1000},
};

// What the process that tries tells the one that watches.
struct progress {
  std::size_t mode;
  std::size_t n;
  std::size_t trials;
  std::size_t complaints;
  char outcome[4096], before[4096], after[4096];

  void next_mode() {
    ++mode;
    n = 1;
  }
  void complain(const char* name, const std::string& what) {
    ++complaints;
    std::printf("%s: %s %zu: %s\n", name, modes[mode].text, n, what.c_str());
    std::fflush(stdout);
  }
};

struct options {
  std::regex wanted{""};
  std::size_t only_mode = SIZE_MAX;  // whose last fault shows its call stacks
  std::size_t limit = 5000;

  bool wants_mode(std::size_t which) const { return only_mode == SIZE_MAX || only_mode == which; }
};

// --- processes -------------------------------------------------------------------------------------------------------

// How a process of its own ends that does the work, which gives the exit status.
int status_of(const std::function<int()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const int status = work();
    std::fflush(stdout);
    std::_Exit(status);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

// The answer of a process of its own; this one dies as that one does.
bool apart(const std::function<bool()>& work) {
  constexpr int no = 1;
  const int status = status_of([&] { return work() ? 0 : no; });
  if (status != 0 && !(WIFEXITED(status) && WEXITSTATUS(status) == no)) {
    std::raise(WIFSIGNALED(status) ? WTERMSIG(status) : SIGABRT);
  }
  return status == 0;
}

// --- trying ----------------------------------------------------------------------------------------------------------

class trials {
 public:
  trials(const scenario& row, const options& chosen, progress& shared)
      : row_(row), what_(row), chosen_(chosen), shared_(shared) {}

  void run() {
    if (modes[shared_.mode].first_time) {
      run_first_time();
      return;
    }
    for (int i = 0; i < 4; ++i) {
      find_expectations();
    }
    for (; shared_.mode < std::size(modes); shared_.next_mode()) {
      for (; is_wanted() && try_once(); ++shared_.n) {
      }
    }
  }

 private:
  bool is_wanted() const { return shared_.n <= chosen_.limit && chosen_.wants_mode(shared_.mode); }

  // What comes of it without faults.
  void find_expectations() {
    const auto note = [](char(&place)[4096], const std::string& text) {
      std::snprintf(place, sizeof place, "%s", text.c_str());
    };
    act(nothing_fails);
    note(shared_.outcome, what_.outcome);
    note(shared_.after, what_.value(row_.state));
    what_.before();
    note(shared_.before, what_.value(row_.state));
    depth_ = what_.value("dig()");
  }

  // Each number in a process of its own.
  void run_first_time() {
    apart([&] { return find_expectations(), true; });
    depth_ = what_.value("dig()");
    // Making types for all there is takes very many allocations, one much like the other.
    while (is_wanted() && apart([&] { return try_once(); })) {
      shared_.n += 1 + shared_.n / 100;
    }
    shared_.next_mode();
  }

  std::size_t act(const plan& what_fails) {
    alarm(patience);
    what_.before();
    return what_.act(what_fails);
  }

  // False when nothing has failed.
  bool try_once() {
    const plan what_fails = modes[shared_.mode].what_fails(shared_.n);
    show_failures(shared_.mode == chosen_.only_mode && shared_.n == chosen_.limit);
    const std::size_t failed = act(what_fails);
    show_failures(false);
    if (failed == 0) {
      return false;
    }
    ++shared_.trials;
    const bool is_refused = what_.outcome == memory_error ||
                            (*row_.also != '\0' && std::regex_search(what_.outcome, std::regex(row_.also)));
    if (!is_refused && what_.outcome != shared_.outcome) {
      complain("gives " + what_.outcome);
    }
    const std::string state = what_.value(row_.state);
    if (state != shared_.after && (state != shared_.before || !is_refused)) {
      complain("leaves " + state);
    }
    if (PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      complain("leaves an exception pending");
    }
    if (const std::string now = what_.value("dig()"); now != depth_) {
      complain("leaves a depth of " + std::exchange(depth_, now) + " for " + now);
    }
    act(nothing_fails);
    if (what_.outcome != shared_.outcome) {
      complain("gives afterwards " + what_.outcome);
    }
    if (const std::string again = what_.value(row_.state); again != shared_.after) {
      complain("leaves afterwards " + again);
    }
    if (shared_.mode == 1) {
      check_leaks(what_fails);
    }
    return true;
  }

  // The same fault again and again must not need more and more memory. Caches fill up; what grows a few times must keep
  // on growing. What fails may be another allocation from then on.
  void check_leaks(const plan& what_fails) {
    constexpr int few = 4, many = 200;
    for (const int times : {few, many, many}) {
      if (growth(what_fails, times) < times) {
        return;
      }
    }
    complain("leaks");
  }
  long long growth(const plan& what_fails, int times) {
    long long held = 0;
    for (int i = 0; i <= 2 * times; ++i) {
      act(what_fails);
      if (failed_in_python_code()) {
        return 0;
      }
      what_.outcome.clear();
      if (i == times) {
        held = live_blocks_in_use();
      }
    }
    return live_blocks_in_use() - held;
  }
  long long live_blocks_in_use() {
    what_.before();
    what_.value("gc.collect()");
    return live_blocks();
  }

  void complain(const std::string& what) { shared_.complain(row_.name, what); }

  const scenario& row_;
  attempt what_;
  const options& chosen_;
  progress& shared_;
  std::string depth_;
};

void try_scenario(const scenario& row, const options& chosen, progress& shared) {
  if (initialize().is_error() || ensure_interpreter().is_error()) {
    give_up("The runtime does not start.");
  }
  spare_what_breaks();
  get_logger().setSink([](const LogRecord&) {});
  const GilGuard lock;
  trials(row, chosen, shared).run();
}

// The start of the runtime and the interpreter, which a process sees once. What it lacks then may be missing for ever,
// but the interpreter evaluates. Whether something has failed.
bool start_once(progress& shared) {
  alarm(patience);
  spare_python_code();  // modules are compiled on the way
  arm(modes[shared.mode].what_fails(shared.n));
  const Result<None> results[] = {initialize(), ensure_interpreter()};
  const std::size_t failed = disarm();
  ++shared.trials;
  for (const Result<None>& result : results) {
    if (result.is_error() && !result.error().isOutOfMemory()) {
      shared.complain("start", "gives " + std::string(display_text(result).view()));
    }
  }
  if (const String sum = display_text(evaluate_expr("1 + 1", {})); sum != "2") {
    shared.complain("start", "gives afterwards " + std::string(sum.view()));
  }
  return failed != 0;
}
void try_start(const options& chosen, progress& shared) {
  if (!modes[shared.mode].first_time && chosen.wants_mode(shared.mode) && start_once(shared)) {
    shared.n += 1 + shared.n / 10;
  } else {
    shared.next_mode();
  }
}

// In processes of their own, each of which goes on where the one before it has died. Whether all is well.
bool watch(const char* name, const options& chosen, const std::function<void(progress&)>& work) {
  if (!std::regex_search(name, chosen.wanted)) {
    return true;
  }
  constexpr int most_deaths = 20;
  auto& shared = *static_cast<progress*>(
      mmap(nullptr, sizeof(progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  shared.n = 1;
  int deaths = 0;
  for (bool ended = false; !ended && deaths < most_deaths;) {
    const int status = status_of([&] { return work(shared), 0; });
    ended = WIFEXITED(status) && shared.mode == std::size(modes);
    if (status != 0) {
      const char* const how = WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "ends the process";
      std::printf("%s: %s %zu: %s\n", name, modes[shared.mode].text, shared.n, how);
      ++deaths;
      ++shared.n;
    }
  }
  std::printf("%s: %zu trials, %zu complaints, %d deaths\n", name, shared.trials, shared.complaints, deaths);
  return deaths == 0 && shared.complaints == 0;
}

}  // namespace

int run_scenarios(int count, char** arguments) {
  setenv("PYTHONMALLOC", "malloc", 1);  // or the interpreter's own pools would serve most of what it needs
  setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
  options chosen;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--mode") {
      chosen.only_mode = std::strtoul(arguments[++i], nullptr, 10);
    } else if (argument == "--until") {
      chosen.limit = std::strtoul(arguments[++i], nullptr, 10);
    } else if (argument == "--spare-python-code") {
      spare_python_code();
    } else {
      chosen.wanted = arguments[i];
    }
  }
  bool well = watch("start", chosen, [&](progress& shared) { try_start(chosen, shared); });
  for (const scenario& row : scenarios()) {
    well &= watch(row.name, chosen, [&](progress& shared) { try_scenario(row, chosen, shared); });
  }
  return well ? 0 : 1;
}

}  // namespace faults
