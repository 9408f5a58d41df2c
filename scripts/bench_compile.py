"""What described classes cost to build: the same classes described for the project and for pybind11, compiled alone."""

import pathlib
import re
import resource
import statistics
import subprocess
import sysconfig
import tempfile

import bench_report

ROOT = pathlib.Path(__file__).resolve().parent.parent
CLASSES = 30
TIMES = 3
# What the preset `release` compiles with.
COMPILER = ("g++", "-std=c++20", "-O2", "-DNDEBUG", "-fPIC", "-fvisibility=hidden", "-c")
INCLUDED = {
    "ling": ("-I", str(ROOT / "src")),
    "pybind11": ("-I", "/usr/include", "-I", sysconfig.get_path("include")),
}

DATA = """
struct thing{n} {{
  std::int64_t number = {n};
  std::string name = "thing {n}";
  std::int64_t add(std::int64_t other) const {{ return number + other; }}
  double scale(double factor) const {{ return static_cast<double>(number) * factor; }}
  std::string label(const std::string& prefix, std::int64_t count) const {{ return prefix + std::to_string(count); }}
  void rename(const std::string& to) {{ name = to; }}
}};
"""
LING = """
const ling::class_definition<thing{n}> definition{n}("Thing{n}", [](ling::class_builder<thing{n}>& c) {{
  c.module("things")
      .doc("A thing.")
      .constructor("", "A thing.", [] {{ return thing{n}(); }})
      .property(
          "number", "A number.", [](const thing{n}& self) {{ return self.number; }},
          [](thing{n}& self, std::int64_t value) {{ self.number = value; }})
      .property("name", "A name.", [](const thing{n}& self) {{ return self.name; }})
      .method("add", "other", "The sum.", &thing{n}::add)
      .method("scale", "factor", "The product.", &thing{n}::scale)
      .method("label", "prefix, count", "A text.", &thing{n}::label)
      .method("rename", "to", "Names it.", &thing{n}::rename);
}});
const ling::class_registration registered{n}{{definition{n}}};
"""
PYBIND11 = """
void define{n}(pybind11::module_& module) {{
  pybind11::class_<thing{n}>(module, "Thing{n}", "A thing.")
      .def(pybind11::init<>(), "A thing.")
      .def_property(
          "number", [](const thing{n}& self) {{ return self.number; }},
          [](thing{n}& self, std::int64_t value) {{ self.number = value; }}, "A number.")
      .def_property_readonly("name", [](const thing{n}& self) {{ return self.name; }}, "A name.")
      .def("add", &thing{n}::add, "The sum.", pybind11::arg("other"))
      .def("scale", &thing{n}::scale, "The product.", pybind11::arg("factor"))
      .def("label", &thing{n}::label, "A text.", pybind11::arg("prefix"), pybind11::arg("count"))
      .def("rename", &thing{n}::rename, "Names it.", pybind11::arg("to"));
}}
"""
STANDARD = "#include <cstdint>\n#include <string>\n"


def source(header, description, end=""):
    body = "".join((DATA + description).format(n=n) for n in range(CLASSES))
    return f"#include {header}\n{STANDARD}namespace {{\n{body}}}\n{end}"


def sources():
    """(row, contestant) -> text."""
    calls = "".join(f"  define{n}(module);\n" for n in range(CLASSES))
    described = f"{CLASSES} classes"
    return {
        (described, "ling"): source('"ling/ling.h"', LING),
        (described, "pybind11"): source("<pybind11/pybind11.h>", PYBIND11,
                                        f"PYBIND11_MODULE(things, module) {{\n{calls}}}\n"),
        ("the header alone", "ling"): '#include "ling/ling.h"\n',
        ("the header alone", "pybind11"): "#include <pybind11/pybind11.h>\n",
    }


def compile_once(text, contestant, folder):
    """Seconds of processor time, and the bytes of code and constants in the object file."""
    path = pathlib.Path(folder) / "source.cpp"
    path.write_text(text, encoding="utf-8")
    made = path.with_suffix(".o")
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([*COMPILER, *INCLUDED[contestant], path, "-o", made], check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    sizes = subprocess.run(["size", made], check=True, capture_output=True, text=True).stdout
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, int(sizes.splitlines()[1].split()[0])


def result(row, contestant, unit, samples):
    return {"group": "Compile", "row": row, "contestant": contestant, "parameter": 0, "unit": unit,
            "median": statistics.median(samples), "low": min(samples), "high": max(samples), "samples": len(samples),
            "large": unit == "s" and max(samples) - min(samples) > bench_report.SETTLED * statistics.median(samples)}


def measure_all(patterns):
    """In turns, so that what else the machine does falls on both alike; (results, failures)."""
    texts = {key: text for key, text in sources().items()
             if not patterns or any(re.search(p, f"Compile: {key[0]}") for p in patterns)}
    measured = {key: [] for key in texts}
    with tempfile.TemporaryDirectory() as folder:
        for _ in range(TIMES):
            for key, text in texts.items():
                measured[key].append(compile_once(text, key[1], folder))
    results = []
    for (row, contestant), samples in measured.items():
        seconds, sizes = zip(*samples)
        results.append(result(row, contestant, "s", seconds))
        if row != "the header alone":
            results.append(result(f"{row}, object code", contestant, "bytes", sizes))
    return results, []
