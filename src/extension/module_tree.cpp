// The tree of Python modules, a row per module.
#include "extension/startup_steps.h"
#include "language/cpython_language.h"
#include "ling/reflection.h"
#include "python/python_modules.h"

#include <string_view>

namespace ling::cpython {

namespace {

struct module_row {
  const char* name;
  const char* python_name;
};

// Each module becomes a property of the one around it as it enters the host's table, so parents come first.
constexpr module_row python_module_map[] = {
    {"python.builtins",        "builtins"       },
    {"python.collections",     "collections"    },
    {"python.collections.abc", "collections.abc"},
    {"python.datetime",        "datetime"       },
    {"python.decimal",         "decimal"        },
    {"python.sys",             "sys"            },
    {"python.types",           "types"          },
    {"python.typing",          "typing"         },
};

// Whether the module around this one is there.
bool has_parent(std::string_view name) { return find_module(name.substr(0, name.rfind('.'))).has_value(); }

}  // namespace

void build_module_tree() {
  const auto python = get_module("python");
  if (!python) {
    return;
  }
  python->setDoc(language_doc);
  static_cast<void>(insert_property_value(python.value(), meta_property_untyped("icon"), language_icon));
  for (const module_row& row : python_module_map) {
    if (has_parent(row.name)) {
      static_cast<void>(export_python_module(row.name, row.python_name));
    }
  }
}

}  // namespace ling::cpython
