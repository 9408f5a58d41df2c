"""Without Python's `decimal` and `datetime` everything else still crosses, and what needs them fails as a whole."""

import sys
import types

for name in ("datetime", "decimal"):
    sys.modules[name] = types.ModuleType(name)

import ling

moments = ling.Date, 2020, 2, 29
for make, *arguments in [moments, (ling.Time, 1, 2), (ling.Decimal, "1.50")]:
    try:
        value = make(*arguments)
    except RuntimeError as error:
        assert str(error) == "The value has no counterpart in Python.", error
    else:
        raise AssertionError(value)

things = ling.List([1, 2.5, "text", [1], object, int, None])
assert list(things)[:4] == [1, 2.5, "text", [1]]
