"""Without Python's `decimal` and `datetime` everything else still crosses, and what needs them fails as a whole."""

import sys
import types

sys.modules["datetime"], sys.modules["decimal"] = types.ModuleType("datetime"), types.ModuleType("decimal")

import ling

for make, *arguments in (ling.Date, 2020, 2, 29), (ling.Time, 1, 2), (ling.Decimal, "1.50"):
    try:
        value = make(*arguments)
    except RuntimeError as error:
        assert str(error) == "The value has no counterpart in Python.", error
    else:
        raise AssertionError(value)

assert list(ling.List([1, 2.5, "text", [1], object, int, None]))[:4] == [1, 2.5, "text", [1]]
