// The peer: the same objects, described the way pybind11's own documentation does.
#include "contestants.h"

#include <pybind11/embed.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>

namespace py = pybind11;

namespace benchmarks {
namespace {

struct counter {
  std::int64_t value = large_number;
  std::shared_ptr<counter> child;
  std::int64_t add(std::int64_t number) const { return value + number; }
  std::int64_t measure(const std::string& text) const { return value + static_cast<std::int64_t>(text.size()); }
};

struct numbers {
  std::vector<std::int64_t> items = large_numbers();
};

PYBIND11_EMBEDDED_MODULE(contestant_pybind11, module) {
  module.attr("kind") = py::class_<counter, std::shared_ptr<counter>>(module, "Counter")
                            .def(py::init<>())
                            .def_readwrite("value", &counter::value)
                            .def_property_readonly("child", [](const counter& self) { return self.child; })
                            .def("add", &counter::add)
                            .def("sum", &counter::add, py::arg("number"))
                            .def("measure", &counter::measure);
  py::class_<numbers>(module, "Numbers")
      .def("__len__", [](const numbers& self) { return self.items.size(); })
      .def("__getitem__",
           [](const numbers& self, std::size_t index) {
             if (index >= self.items.size()) {
               throw py::index_error();
             }
             return self.items[index];
           })
      .def(
          "__iter__", [](const numbers& self) { return py::make_iterator(self.items.begin(), self.items.end()); },
          py::keep_alive<0, 1>());
  module.def("function", [](std::int64_t number) { return number + 1; });

  auto subject = std::make_shared<counter>();
  subject->child = std::make_shared<counter>();
  module.attr("subject") = subject;
  module.attr("numbers") = numbers();
}

}  // namespace
}  // namespace benchmarks
