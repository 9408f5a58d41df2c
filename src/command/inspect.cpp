// Descriptions are made once, as JSON, and printed from that; so both formats tell the same.
#include "command/inspect.h"

#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/reflection.h"
#include "ling/signature.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace ling::command {

namespace {

using nlohmann::ordered_json;

std::string text_of(const String& text) { return std::string(text.view()); }

// --- gathering -------------------------------------------------------------------------------------------------------

// Null when the callable cannot tell.
ordered_json signature_of(const I_Callable_Generic& callable) {
  const auto signature = result_unwrap_lazy(callable.signature());
  return signature ? ordered_json(text_of(signature->toString())) : ordered_json();
}

ordered_json describe_callable(const String& name, const I_Callable_Generic& callable) {
  return {
      {"name",      text_of(name)          },
      {"signature", signature_of(callable) },
      {"doc",       text_of(callable.doc())}
  };
}

ordered_json describe_property(std::string_view name, const Property& property) {
  return {
      {"name",     name                   },
      {"writable", property.hasSetter()   },
      {"doc",      text_of(property.doc())}
  };
}

bool is_public(const class_member& member) { return !member.name->text.starts_with('_'); }

ordered_json describe_class(const String& name, const Class_Generic& of_class) {
  ordered_json parents = ordered_json::array();
  for (object_value_class* parent : of_class.object().parents()) {
    parents.push_back(text_of(qualname(Class_Generic(*parent))));
  }
  ordered_json methods = ordered_json::array();
  for (const class_member* member : of_class.object().methods()) {
    if (is_public(*member)) {
      methods.push_back(describe_callable(member->name->text, I_Callable_Generic::unchecked(member->method)));
    }
  }
  ordered_json properties = ordered_json::array();
  for (const class_member* member : of_class.object().properties()) {
    if (is_public(*member)) {
      properties.push_back(describe_property(member->name->text, Property::unchecked(member->property)));
    }
  }
  return {
      {"name",       text_of(name)              },
      {"qualname",   text_of(qualname(of_class))},
      {"doc",        text_of(of_class.doc())    },
      {"parents",    std::move(parents)         },
      {"signature",  signature_of(of_class)     },
      {"methods",    std::move(methods)         },
      {"properties", std::move(properties)      },
  };
}

void add_value(const Module& module, std::string_view name, const Property& property, ordered_json& into) {
  ordered_json described = describe_property(name, property);
  described["value"] = text_of(display_text(internal::unwrap(property.read(module))));
  into.push_back(std::move(described));
}

// The values of a module: what is neither a class, nor told of every module.
ordered_json values_of(const Module& module) {
  ordered_json values = ordered_json::array();
  const object_value_class& every_module = Module::getClass().object();
  for (const class_member* member : class_of(module).definedProperties()) {
    const class_member* general = every_module.find_member(*member->name);
    const bool is_general = general != nullptr && general->property.is_same(member->property);
    if (!is_general && !module.classes().contains(member->name->text)) {
      add_value(module, member->name->text, Property::unchecked(member->property), values);
    }
  }
  for (const auto& [name, property] : own_properties_of(module).copyPairs()) {
    add_value(module, String::unchecked(name).view(), Property::unchecked(property), values);
  }
  return values;
}

// A module may also say what it is for in a property of its own.
String doc_of(const Module& module) {
  if (const String doc = module.doc(); !doc.empty()) {
    return doc;
  }
  const auto own = String::cast(internal::unwrap(module.propertyValue(members::property::doc)));
  return own ? own.value() : String();
}

ordered_json describe_module(const Module& module) {
  ordered_json classes = ordered_json::array();
  for (const auto& [name, of_class] : module.classes().copyPairs()) {
    classes.push_back(describe_class(String::unchecked(name), Class_Generic::unchecked(of_class)));
  }
  ordered_json callables = ordered_json::array();
  for (const auto& [name, callable] : module.callables().copyPairs()) {
    callables.push_back(describe_callable(String::unchecked(name), I_Callable_Generic::unchecked(callable)));
  }
  return {
      {"name",       text_of(module.name()) },
      {"doc",        text_of(doc_of(module))},
      {"classes",    std::move(classes)     },
      {"callables",  std::move(callables)   },
      {"properties", values_of(module)      },
  };
}

// A class or a callable of a module.
ordered_json describe_member(const Module& module, const String& name) {
  if (const auto of_class = Class_Generic::cast(module.classes().get(name))) {
    return describe_class(name, of_class.value());
  }
  const auto callable = I_Callable_Generic::cast(module.callables().get(name));
  return callable ? describe_callable(name, callable.value()) : ordered_json();
}

ordered_json describe_named(std::string_view name) {
  if (const auto module = find_module(name)) {
    return describe_module(module.value());
  }
  const std::size_t dot = name.rfind('.');
  const auto module = dot == std::string_view::npos ? Union<Module, None>(None()) : find_module(name.substr(0, dot));
  return module ? describe_member(module.value(), name.substr(dot + 1)) : ordered_json();
}

// --- printing --------------------------------------------------------------------------------------------------------

// Values and documentation may be pages long: people see the first line, `--json` gives all of it.
std::string first_line(const ordered_json& text) {
  constexpr std::size_t enough = 100;
  const std::string& all = text.get_ref<const std::string&>();
  const std::size_t start = std::min(all.find_first_not_of(" \n"), all.size());
  std::string line = all.substr(start, all.find('\n', start) - start);
  if (line.size() > enough) {
    std::size_t end = enough;
    while ((static_cast<unsigned char>(line[end]) & 0xC0u) == 0x80u) {
      --end;  // not in the middle of a character
    }
    line.resize(end);
    line.append("…");
  }
  return line;
}

class text_printer {
 public:
  std::string print(const ordered_json& described) {
    print_any(described, 0);
    return std::move(text_);
  }

 private:
  void line(int depth, const std::string& text) {
    if (!text.empty()) {
      text_.append(static_cast<std::size_t>(2 * depth), ' ').append(text).append("\n");
    }
  }
  void print_any(const ordered_json& described, int depth) {
    std::string title = described.contains("qualname") ? "class " : described.contains("classes") ? "module " : "";
    title += described["name"].get<std::string>();
    if (described.contains("signature")) {
      title += described["signature"].is_null() ? "(…)" : described["signature"].get<std::string>();
    }
    if (described.contains("value")) {
      title += " = " + first_line(described["value"]);
    }
    line(depth, title);
    line(depth + 1, first_line(described["doc"]));
    for (const char* part : {"classes", "callables", "methods", "properties"}) {
      for (const ordered_json& each : described.value(part, ordered_json::array())) {
        print_any(each, depth + 1);
      }
    }
  }

  std::string text_;
};

}  // namespace

Result<String> describe(const std::string& name, description_format format) {
  const ordered_json described = describe_named(name);
  if (described.is_null()) {
    return Error(String("There is no module, class or callable of that name: {}.").arg(name));
  }
  const std::string text = format == description_format::json
                               ? described.dump(2, ' ', false, ordered_json::error_handler_t::replace)
                               : text_printer().print(described);
  return String(std::string_view(text).substr(0, text.find_last_not_of('\n') + 1));
}

}  // namespace ling::command
