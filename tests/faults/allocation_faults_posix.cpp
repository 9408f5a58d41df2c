// The allocation functions of the program, in front of those of the C library (glibc). What the C++ library, the
// interpreter and everything else allocate comes through here.
#include "faults/allocation_faults.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace faults {

namespace {

struct state {
  plan what_fails;
  std::size_t seen = 0;
  std::size_t failed = 0;
  bool in_python_code = false;
};
constinit state current{};
constinit thread_local bool exposed = false;

constinit std::atomic<long long> blocks{0};
constinit std::atomic<bool> shown{false};
constinit std::atomic<bool> spared{false};

void look_at_stack() noexcept {
  const exposure rest(false);
  void* frames[64];
  const int count = backtrace(frames, 64);
  current.in_python_code = false;
  Dl_info place;
  for (int i = 3; i < count && dladdr(frames[i], &place) != 0 && std::strstr(place.dli_fname, "ling") == nullptr &&
                  std::strstr(place.dli_fname, "fault_tests") == nullptr;
       ++i) {
    current.in_python_code |=
        place.dli_sname != nullptr && std::strcmp(place.dli_sname, "_PyEval_EvalFrameDefault") == 0;
  }
  if (shown.load(std::memory_order_relaxed)) {
    constexpr char title[] = "--- an allocation fails:\n";
    static_cast<void>(write(STDERR_FILENO, title, sizeof title - 1) + 1);
    backtrace_symbols_fd(frames, count, STDERR_FILENO);
  }
}

bool must_fail() noexcept {
  if (!exposed) [[likely]] {
    return false;
  }
  const plan& what_fails = current.what_fails;
  const std::size_t number = ++current.seen;
  if (number < what_fails.first || (number - what_fails.first) % what_fails.period != 0 ||
      current.failed == what_fails.count) {
    return false;
  }
  ++current.failed;
  look_at_stack();
  if (current.in_python_code && spared.load(std::memory_order_relaxed)) {
    return false;
  }
  errno = ENOMEM;
  return true;
}

void* counted(void* block) noexcept {
  if (block != nullptr) {
    blocks.fetch_add(1, std::memory_order_relaxed);
  }
  return block;
}

}  // namespace

void arm(const plan& what_fails) noexcept {
  current = {what_fails};
  exposed = true;
}
std::size_t disarm() noexcept {
  exposed = false;
  return current.failed;
}
bool failed_in_python_code() noexcept { return current.in_python_code; }
exposure::exposure(bool is_exposed) noexcept : was_exposed_(std::exchange(exposed, is_exposed)) {}
exposure::~exposure() { exposed = was_exposed_; }
long long live_blocks() noexcept { return blocks.load(std::memory_order_relaxed); }
void spare_python_code() noexcept { spared.store(true, std::memory_order_relaxed); }
void show_failures(bool is_shown) noexcept { shown.store(is_shown, std::memory_order_relaxed); }

}  // namespace faults

extern "C" {

void* malloc(std::size_t size) noexcept { return faults::must_fail() ? nullptr : faults::counted(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) noexcept {
  return faults::must_fail() ? nullptr : faults::counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
  if (block == nullptr) {
    return malloc(size);
  }
  return faults::must_fail() ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return faults::must_fail() ? nullptr : faults::counted(__libc_memalign(alignment, size));
}

void free(void* block) noexcept {
  if (block != nullptr) {
    faults::blocks.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(block);
  }
}

}  // extern "C"
