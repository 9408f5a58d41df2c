// Calling a wrapped value.
#pragma once

#include "lingobject/slots.h"

#include <array>
#include <memory>
#include <span>

namespace ling::cpython {

// The items of a Python tuple as a row of values.
class argument_row {
 public:
  explicit argument_row(PyObject* tuple);
  argument_row(const argument_row&) = delete;
  argument_row& operator=(const argument_row&) = delete;

  // The Error of an item that does not fit into a value; null when all do.
  const Any* failure() const noexcept { return failure_; }
  operator std::span<const Any>() const noexcept { return {more_ ? more_.get() : few_.data(), length_}; }

 private:
  std::size_t length_;
  const Any* failure_ = nullptr;
  std::array<Any, 8> few_;  // most calls allocate nothing
  std::unique_ptr<Any[]> more_;
};

// tp_call.
slot_result call(const Any& value, PyObject* arguments, PyObject* keywords);

}  // namespace ling::cpython
