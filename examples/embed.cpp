// The smallest useful host: loads the language module, evaluates Python code with variables in and out, lets Python use
// a class of its own, shows where a faulty script is faulty, and uses one of Python's modules without any Python.
//
//   build/release/bin/embed [MODULE_FILE]
#include "corvantis/python_language.h"
#include "ling/ling.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

// --- a class of the host, and how Python sees it ---------------------------------------------------------------------
struct inventory {
  std::string name;
  std::map<std::string, std::int64_t> counts;

  std::int64_t add(const std::string& item, std::int64_t count) { return counts[item] += count; }
  std::int64_t take(const std::string& item) {
    std::int64_t& count = counts.at(item);  // a C++ exception becomes an error in Python
    return count > 0 ? --count : 0;
  }
};

const ling::class_definition<inventory> inventory_class("Inventory", [](ling::class_builder<inventory>& c) {
  c.module("shop")
      .doc("Items and how many there are of each.")
      .constructor("name", "An empty inventory.",
                   [](const std::string& name) {
                     return inventory{name, {}};
                   })
      .property(
          "name", "What it is called.", [](const inventory& self) { return self.name; },
          [](inventory& self, const std::string& name) { self.name = name; })
      .method("add", "item, count", "Adds items; how many there are then.", &inventory::add, {1})
      .method("take", "item", "Takes one away; how many are left.", &inventory::take);
});
// Puts the class into its module when the runtime is initialised.
const ling::class_registration registered{inventory_class};

// --- the host --------------------------------------------------------------------------------------------------------
[[noreturn]] void fail(const char* what, const ling::Any& why) {
  std::fprintf(stderr, "%s: %s\n", what, ling::display_text(why).c_str());
  std::exit(1);
}

void expect(bool holds, const char* what) {
  if (!holds) {
    fail("not as expected", what);
  }
}

ling::I_Callable_Generic find_evaluate(const char* module_file) {
  if (auto ready = ling::initialize(); ready.is_error()) {
    fail("the runtime does not start", ready.error());
  }
  if (auto loaded = ling::load_extension(module_file); loaded.is_error()) {
    fail("the language module cannot be loaded", loaded.error());
  }
  const auto python = ling::find_module("ling.cpython");
  expect(python.has_value(), "the module ling.cpython is there");
  return ling::I_Callable_Generic::unchecked(python->callables().get("evaluate"));
}

// Variables in (`locals`), variables back (the keys of `out_locals`), and the value of the `return` statement.
void evaluate_with_variables(const ling::I_Callable_Generic& evaluate) {
  const ling::HashMap_Generic locals;
  locals.set("y", 41);
  const ling::HashMap_Generic out_locals;
  out_locals.set("x", ling::None());
  const ling::Any result =
      evaluate("x = 1 + y\nreturn 'x is ' + str(x)", ling::EvaluationScope({}, {}, locals, out_locals));

  std::printf("result: %s\n", ling::display_text(result).c_str());
  std::printf("variables: %s\n", ling::display_text(out_locals).c_str());
  const auto text = ling::String::cast(result);
  expect(text && *text == "x is 42", "the result is the returned text");
  const auto x = ling::Integer::cast(out_locals.get("x"));
  expect(x && x->value() == 42, "x came back");
}

// Python makes an object of the host's class, the host reads the C++ data in it.
void use_host_class(const ling::I_Callable_Generic& evaluate) {
  const ling::Any made = evaluate(
      "stock = shop.Inventory('cellar')\n"
      "stock.add('lamp', 3)\n"
      "stock.add('chair')\n"
      "stock.take('lamp')\n"
      "stock.name = stock.name.upper()\n"
      "return stock",
      ling::Any());
  const auto* stock = ling::native_cast<inventory>(made);
  if (stock == nullptr) {
    fail("no inventory came back", made);
  }
  std::printf("inventory: %s, %d lamps, %d chairs\n", stock->name.c_str(), static_cast<int>(stock->counts.at("lamp")),
              static_cast<int>(stock->counts.at("chair")));
  expect(stock->name == "CELLAR" && stock->counts.at("lamp") == 2 && stock->counts.at("chair") == 1, "it was changed");
}

// A failure is a value: an EvaluationError with the place in the host's own text.
void report_fault(const ling::I_Callable_Generic& evaluate) {
  const ling::Any outcome = evaluate("stock = shop.Inventory('attic')\nstock.take('piano')", ling::Any());
  const auto error = ling::EvaluationError::cast(outcome);
  if (!error) {
    fail("the fault was not reported", outcome);
  }
  std::printf("line %d: %s\n", static_cast<int>(error->line().value_or(0)), error->message().c_str());
  expect(error->line() == 2, "the fault is in line 2");
}

// Python's own modules are modules of the host, too; nothing of this is written in Python.
void use_python_module() {
  const auto datetime = ling::find_module("python.datetime");
  expect(datetime.has_value(), "the module python.datetime is there");
  const ling::Any date = datetime->propertyValue(ling::meta_property_untyped("date"));
  const ling::Any day = ling::I_Callable_Generic::unchecked(date)(2020, 2, 29);
  const auto isoformat = day.boundMethod(ling::meta_method_untyped("isoformat"));
  expect(isoformat.has_value(), "a date can be formatted");
  const ling::Any text = isoformat.value()();
  std::printf("leap day: %s\n", ling::display_text(text).c_str());
  expect(ling::display_text(text) == "2020-02-29", "the date is formatted");

  const auto list = ling::CPythonLanguage::evaluateExpression("[1, 2, 3]");
  expect(ling::display_text(list) == "[1, 2, 3]", "the language evaluates");
}

}  // namespace

int main(int count, char** arguments) {
  const ling::I_Callable_Generic evaluate = find_evaluate(count > 1 ? arguments[1] : CORVANTIS_MODULE_FILE);
  evaluate_with_variables(evaluate);
  use_host_class(evaluate);
  report_fault(evaluate);
  use_python_module();
}
