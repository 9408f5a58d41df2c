// Python's own objects, for comparison, and peers that are Python modules: each a text that makes a contestant's
// module.
#include "contestants.h"
#include "ling/ling.h"

namespace benchmarks {
namespace {

struct python_contestant {
  const char* name;
  const char* text;  // in a module that has `numbers` and `value`
};

constexpr python_contestant texts[] = {
  // A class without anything special.
    {"plain",     R"py(
class kind:
    child = None
    def __init__(self): self.value = value
    def add(self, number): return self.value + number
    sum = add
    def measure(self, text): return self.value + len(text)
subject = kind()
subject.child = kind()
def function(number): return number + 1
)py"},
    {"dict",      R"py(
codes = {}
int_map = {number: number for number in numbers}
text_map = {f'key {number}': number for number in numbers}
)py"},
 // Introspected objects and functions of GLib.
    {"PyGObject", R"py(
from gi.repository import Gio, GLib
subject = Gio.BufferedInputStream.new_sized(Gio.MemoryInputStream(), value)
function = GLib.bit_storage
codes = {
    'attribute_read': 'w.props.buffer_size',
    'attribute_write': 'w.props.buffer_size = 1000000',
    'attribute_missing': "getattr(w, 'nothing', None)",
    'hasattr': "hasattr(w, 'nothing')",
    'attribute_missing_caught': 'try: w.nothing\n    except AttributeError: pass',
    'method_call': 'w.set_buffer_size(1000000)',
    'bound_method_call': 'call(1000000)',
    'function_call': 'w(1000000)',
}
setups = {'bound_method_call': 'call = w.set_buffer_size'}
)py"},
 // Tables and functions of Lua.
    {"Lupa",      R"py(
import lupa
lua = lupa.LuaRuntime()
subject = lua.eval('{value = 1000000, child = {}, add = function(n) return n + 1000000 end,'
                   ' measure = function(text) return #text + 1000000 end}')
numbers = lua.table_from(numbers)
function = lua.eval('function(n) return n + 1 end')
codes = dict.fromkeys(('attribute_read', 'attribute_write', 'method_call', 'method_call_text', 'bound_method_call',
                       'function_call', 'index', 'make_wrapper'))
)py"},
};

// Which of the texts work: a module that is not installed is left out, anything else is a fault.
constexpr char publish[] = R"py(
import sys, types
present = []
for name, text in zip(texts[::2], texts[1::2]):
    module = types.ModuleType('contestant_' + name)
    module.value, module.numbers = 1000000, [1000000 + i for i in range(1000)]
    try:
        exec(text, vars(module))
    except ImportError:
        continue
    sys.modules[module.__name__] = module
    present.append(name)
return present
)py";

std::vector<std::string> present;

}  // namespace

void publish_python_modules() {
  const ling::List_Generic names;
  for (const python_contestant& of : texts) {
    names.append(of.name);
    names.append(of.text);
  }
  const auto found = ling::I_Iterable_Generic::unchecked(run_python(publish, "texts", names)).toList();
  check(found);
  for (const ling::Any& name : found->copyItems()) {
    present.push_back(ling::display_text(name).c_str());
  }
}

std::vector<std::string> python_contestants() { return present; }

}  // namespace benchmarks
