// What of a host module its Python module holds.
#include "ling/class_builder.h"
#include "ling/module.h"
#include "lingobject/outcomes.h"

namespace ling::cpython {
namespace {

using ModuleExport = PythonTest;

TEST_F(ModuleExport, HoldsMembersOfWhichLaterOnesReplaceEarlierOnes) {
  const Module module = get_module("ling.exported").value();
  module.setDoc("For export.");
  for (const char* name : {"act", "_act", "Thing", "twice"}) {
    module.addCallable(name, make_function(name, "", "", [] { return 1; }));
  }
  module.addClass(*new object_value_class("Thing"));
  const auto broken = property_builder_base("computed", "").getter([](const Any&) { return Any(Error("not now")); });
  for (const char* name : {"_seen", "@note", "", "twice"}) {
    module.addProperty(name, Property::constant(name));
  }
  module.addProperty("broken", broken.build().value());
  expect_outcomes(None(), R"(
    import warnings; warnings.simplefilter('error'); import ling.exported => RuntimeWarning: The member 'broken' of the module 'ling.exported' is left out: not now
    import warnings; warnings.simplefilter('ignore'); import ling.exported => None
    import ling.exported as m; result = sorted(n for n in vars(m) if n[:2] != '__') => ['Thing', '_act', '_seen', 'act', 'twice']
    import ling.exported as m; result = m.__doc__, m.act(), m._seen, m.twice => ('For export.', 1, '_seen', 'twice')
    import ling.exported as m; result = m.Thing => <class ling.exported.Thing>
    import ling.cpython as m; result = m.__doc__ => 'Interface to Python language.')");
}

}  // namespace
}  // namespace ling::cpython
