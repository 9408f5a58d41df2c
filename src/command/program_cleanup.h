// What a program has made goes away before the process ends, as far as the interpreter's own end would have taken it:
// the interpreter lives on. Whatever the program has done to its modules is in nobody's way.
#pragma once

#include "command/python_api.h"

#include <vector>

namespace ling::command {

// The operations need the interpreter lock.
class program_cleanup {
 public:
  // Takes what cleaning up needs, before the program can replace it; false when something is missing.
  bool prepare();

  // Lets go of the program's objects. They are finalised; what their finalisers raise is reported as python3 does.
  void run() const;

 private:
  // The contents of a module, and a copy from before the program.
  struct known_module {
    reference names;
    reference before;
  };

  // The namespace of a module that has been forgotten, which dies when nothing else refers to it. Its address alone:
  // nothing says that it is still there.
  struct known_namespace {
    PyObject* names;
    reference alive;  // weakly, an object that the namespace has
  };

  void remember_contents();
  void let_go_of_signal_handlers() const;
  reference forget_modules(PyObject* modules, std::vector<known_namespace>& namespaces) const;
  void empty_left_namespace(const known_namespace& left) const;
  static void watch(PyObject* names, std::vector<known_namespace>& namespaces);
  void collect_garbage() const;

  reference signal_handler_;
  reference set_signal_handler_;
  reference collect_garbage_;
  reference garbage_callbacks_;
  reference referrers_;
  reference modules_before_;
  std::vector<known_module> contents_before_;
};

}  // namespace ling::command
