// What of a host module its Python module holds.
#include "ling/class_builder.h"
#include "ling/module.h"
#include "lingobject/outcomes.h"

namespace ling::cpython {
namespace {

using ModuleExport = PythonTest;

Property computed(Any (*read)(const Any& module)) {
  return property_builder_base("computed", "").getter(read).build().value();
}

TEST_F(ModuleExport, HoldsMembersOfWhichLaterOnesReplaceEarlierOnes) {
  const Module module = get_module("ling.exported").value();
  module.setDoc("For export.");
  for (const char* name : {"act", "_act", "Thing", "twice"}) {
    module.addCallable(name, make_function(name, "", "", [] { return 1; }));
  }
  module.addClass(*new object_value_class("Thing"));
  const std::pair<const char*, Property> properties[] = {
      {"_seen",  Property::constant(2)                                                           },
      {"@note",  Property::constant(3)                                                           },
      {"",       Property::constant(4)                                                           },
      {"twice",  Property::constant(5)                                                           },
      {"myself", computed([](const Any& self) { return Any(Module::cast(self).value().name()); })},
      {"broken", computed([](const Any&) { return Any(Error("not now")); })                      },
  };
  for (const auto& [name, property] : properties) {
    module.addProperty(name, property);
  }
  expect_outcomes(None(), R"(
    import warnings; warnings.simplefilter('error'); import ling.exported => RuntimeWarning: The member 'broken' of the module 'ling.exported' is left out: not now
    import warnings; warnings.simplefilter('ignore'); import ling.exported => None
    import ling.exported as m; result = sorted(n for n in vars(m) if n[:2] != '__') => ['Thing', '_act', '_seen', 'act', 'myself', 'twice']
    import ling.exported as m; result = m.__doc__, m.act(), m._seen, m.twice, m.myself => ('For export.', 1, 2, 5, 'ling.exported')
    import ling.exported as m; result = m.Thing => <class ling.exported.Thing>
    import ling.cpython as m; result = m.__doc__, m.doc => ('Interface to Python language.', 'Interface to Python language.'))");
  module.setDoc("For export once more.");
  expect_outcomes(None(), R"(
    import sys; del sys.modules['ling.exported']; import ling.exported as m; result = m.__doc__ => 'For export once more.')");
}

}  // namespace
}  // namespace ling::cpython
