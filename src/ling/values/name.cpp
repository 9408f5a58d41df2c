// The table of interned names, and the names the runtime knows from the start.
#include "ling/name.h"

#include "ling/detail/declarations.h"
#include "ling/detail/immortal.h"
#include "ling/interfaces.h"
#include "ling/spinlock.h"
#include "ling/string.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

namespace ling {

namespace {

// FNV-1a: constexpr, so that predeclared names need no initialiser.
constexpr std::uint32_t hash_text(std::string_view text) noexcept {
  std::uint32_t hash = 0x811c9dc5u;
  for (const char each : text) {
    hash = (hash ^ static_cast<unsigned char>(each)) * 0x01000193u;
  }
  return hash ^ (hash >> 15);
}

}  // namespace

// Names that C++ code uses before any static initialiser has run are constants, entered into the table when it is made.
// One list: a name that is both a method and a property has one entry.
#define LING_OPERATOR_NAME(name)                                                          \
  namespace {                                                                             \
  constinit name_entry entry_of_meta_##name{"__" #name "__", hash_text("__" #name "__")}; \
  }                                                                                       \
  constinit const meta_method_untyped Any::__##name##__{entry_of_meta_##name};
LING_META_METHODS(LING_OPERATOR_NAME)
#undef LING_OPERATOR_NAME

namespace {
#define LING_ENTRY(name) constinit name_entry entry_of_##name{#name, hash_text(#name)};
LING_INTERFACE_METHODS(LING_ENTRY)
LING_ENTRY(keys)
LING_ENTRY(values)
LING_ENTRY(keysType)
LING_ENTRY(valuesType)
LING_ENTRY(elementsType)
LING_ENTRY(name)
LING_ENTRY(doc)
LING_ENTRY(code)
LING_ENTRY(instance)
LING_ENTRY(canEvaluate)
#undef LING_ENTRY
constinit name_entry& entry_of___length__ = entry_of_meta_length;
}  // namespace

namespace members {
#define LING_NAME(name) constinit const meta_method_untyped name{entry_of_##name};
LING_INTERFACE_METHODS(LING_NAME)
#undef LING_NAME
namespace property {
#define LING_NAME(name) constinit const meta_property_untyped name{entry_of_##name};
LING_INTERFACE_PROPERTIES(LING_NAME)
#undef LING_NAME
}  // namespace property
}  // namespace members

namespace {

// Sharded, so that threads that look up texts do not queue behind each other. Never destroyed: names are used at exit.
class name_table {
 public:
  name_table() {
#define LING_ENTER_META(name) enter(entry_of_meta_##name);
#define LING_ENTER(name) enter(entry_of_##name);
    LING_META_METHODS(LING_ENTER_META)
    LING_INTERFACE_METHODS(LING_ENTER)
    LING_INTERFACE_PROPERTIES(LING_ENTER)
#undef LING_ENTER
#undef LING_ENTER_META
  }

  static name_table& instance() {
    static internal::immortal<name_table> table;
    return table.object;
  }

  const name_entry* find(std::string_view text, std::uint32_t hash) noexcept {
    shard& where = shard_of(hash);
    const std::lock_guard guard(where.lock);
    const auto found = where.entries.find(text);
    return found == where.entries.end() ? nullptr : found->second;
  }
  const name_entry& insert(std::string_view text, std::uint32_t hash) {
    shard& where = shard_of(hash);
    const std::lock_guard guard(where.lock);
    if (const auto found = where.entries.find(text); found != where.entries.end()) {
      return *found->second;
    }
    const std::string& kept = where.texts.emplace_back(text);
    const name_entry& entry = where.storage.emplace_back(std::string_view(kept), hash);
    where.entries.emplace(entry.text, &entry);
    internal::note_declaration();
    return entry;
  }

 private:
  struct hasher {
    std::size_t operator()(std::string_view text) const noexcept { return hash_text(text); }
  };
  struct shard {
    spinlock lock;
    std::unordered_map<std::string_view, const name_entry*, hasher> entries;
    std::deque<std::string> texts;
    std::deque<name_entry> storage;
  };

  void enter(const name_entry& entry) { shard_of(entry.hash).entries.emplace(entry.text, &entry); }
  shard& shard_of(std::uint32_t hash) noexcept { return shards_[(hash >> 24) % shard_count]; }

  static constexpr std::size_t shard_count = 16;
  shard shards_[shard_count];
};

}  // namespace

namespace internal {

namespace {
constinit std::atomic<std::uint64_t> declaration_count{0};
}  // namespace

std::uint64_t declarations() noexcept { return declaration_count.load(std::memory_order_acquire); }
void note_declaration() noexcept { declaration_count.fetch_add(1, std::memory_order_release); }

const name_entry& intern(std::string_view text) { return name_table::instance().insert(text, hash_text(text)); }

const name_entry* find_interned(std::string_view text) noexcept {
  return name_table::instance().find(text, hash_text(text));
}

name_to_look_up::name_to_look_up(std::string_view text) noexcept
    : own_(text, hash_text(text)), interned_(name_table::instance().find(text, own_.hash)) {}

name_to_look_up::~name_to_look_up() { const Any text = Any::adopt(own_.string.get()); }

String name_string(const name_entry& entry) {
  return String::unchecked(Any::share(entry.string.get_or_make([&] { return String(entry.text); })));
}

}  // namespace internal
}  // namespace ling
