// Modules: named collections of classes, callables and properties, and the process-wide table of them.
//
// A module's members can be reached as its attributes: a module has a class of its own, derived from Module, which has
// the module's classes as properties and its callables as methods; its properties are its own. A module `a.b` is also
// the constant property `b` of module `a`.
//
// Threads: the table and every module may be used and changed from any thread.
#pragma once

#include "ling/class.h"
#include "ling/hash_map.h"
#include "ling/instance.h"

#include <atomic>
#include <vector>

namespace ling {

class LING_API object_value_module : public object_value_instance {
 public:
  // Makes a class of its own for the module, derived from `base`, the class Module or a descendant of it.
  object_value_module(object_value_class& base, String name);

  const String& name() const noexcept { return name_; }
  const HashMap_Generic& classes() const noexcept { return classes_; }
  const HashMap_Generic& callables() const noexcept { return callables_; }
  String doc() const;
  void set_doc(String doc);
  Any importance() const;
  void set_importance(Any importance);
  bool is_inlined() const noexcept { return inlined_.load(std::memory_order_relaxed); }
  void set_inlined(bool inlined) noexcept;

 private:
  const String name_;
  const HashMap_Generic classes_;
  const HashMap_Generic callables_;
  String doc_;
  Any importance_;
  std::atomic<bool> inlined_{false};

  friend struct module_table;
  std::atomic<object_value_module*> next_{nullptr};            // in the order of creation
  std::atomic<object_value_module*> next_in_bucket_{nullptr};  // with the same hash of the name
  std::atomic<object_value_module*> next_sibling_{nullptr};    // with the same hash of the name of the module around it
};

class LING_API Module : public Handle<Module, object_value_module> {
  LING_HANDLE(Module, object_value_module)
  // A module that is not in the table yet; see `insert_module`.
  explicit Module(const String& name);

  String name() const { return object().name(); }
  // Live maps, String to Class_Generic and String to I_Callable_Generic, in the order of registration.
  HashMap_Generic classes() const { return object().classes(); }
  HashMap_Generic callables() const { return object().callables(); }
  String doc() const { return object().doc(); }
  void setDoc(const String& doc) const { object().set_doc(doc); }
  // How prominently tools show the module: 0 by default; 10 keeps it out of evaluated code altogether.
  Any importance() const { return object().importance(); }
  void setImportance(const Any& importance) const { object().set_importance(importance); }
  // Whether the names in the module are visible to evaluated code without the module's name.
  bool isInlined() const noexcept { return object().is_inlined(); }
  void setInlined(bool inlined = true) const noexcept { object().set_inlined(inlined); }

  // Adds a class or a callable and makes the module its declaring context, unless it has one. What was there under that
  // name is replaced.
  void addClass(const Class_Generic& of_class) const;
  void addCallable(const String& name, const I_Callable_Generic& callable) const;
  void addProperty(const String& name, const Property& property) const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// Guards changes of the module table; held for a few instructions, never while foreign code runs. Lookups take no lock.
extern LING_API spinlock g_modules_lock;

// All modules in the order of their creation: a snapshot.
LING_API std::vector<Module> modules();
LING_API Union<Module, None> find_module(const String& name);
// The module of that name, made when there is none, its parents too. An Error for a name with an empty part.
LING_API Result<Module> get_module(const String& name);
// Puts a finished module into the table and links it to its parent and to its children, as far as they are there. An
// Error when the name is taken, or when it or a part of it is empty.
LING_API Result<None> insert_module(const Module& module);

// A number that changes whenever there may be a difference in which modules code can name, or which are inlined: when
// a module whose name has no dot, or an inlined one, is put into the table, and when the importance or the mark of a
// module is set. What is in a module has versions of its own: those of its maps.
LING_API std::uint64_t visible_modules_version() noexcept;

// The type of a class by name: "List", or "shop.Inventory" with its module. Short names are looked for in the module
// `ling`, then in inlined modules.
LING_API Union<Type, None> find_type(const String& name);
// The process-wide table of global variables, String to Any: live.
LING_API HashMap_Generic globals();

}  // namespace ling
