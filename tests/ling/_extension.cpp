// A plug-in that leaves what it does while it is loaded to the case: its entry points and its two init handlers call
// functions of the module `test.extension`.
#include "ling/ling.h"

#include <stdexcept>

namespace {

ling::Any call_case(const char* function) {
  const auto functions = ling::find_module("test.extension").value().callables();
  return ling::I_Callable_Generic::unchecked(functions.get(function))();
}

template <int number>
ling::Result<ling::None> handler() {
  const ling::Any outcome = call_case(number == 1 ? "first" : "second");
  if (ling::is_error_result(outcome)) {
    return ling::Error::unchecked(outcome);
  }
  return ling::None();
}

[[maybe_unused]] const bool queued = [] {
  ling::internal::add_init_handler(ling::InitLevel::Classes, &handler<1>);
  ling::internal::add_init_handler(ling::InitLevel::Functions, &handler<2>);
  return true;
}();

void call_or_throw(const char* function) {
  const ling::Any outcome = call_case(function);
  if (ling::is_error_result(outcome) && ling::Error::unchecked(outcome).isOutOfMemory()) {
    throw std::bad_alloc();
  }
  if (ling::is_error_result(outcome)) {
    throw std::runtime_error(ling::Error::unchecked(outcome).message().c_str());
  }
}

}  // namespace

extern "C" void corvantis_extension_init() { call_or_throw("entry"); }
extern "C" void corvantis_extension_bind_api() { call_or_throw("bind"); }
