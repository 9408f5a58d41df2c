# A tour of the house, in the order in which a newcomer asks: how do values get in, how does Python code run, what comes
# back, what do host objects look like, and what happens when something goes wrong?
#
#   scripts/run examples/tour.py
#
# This file runs inside the host. What it does with `ling.cpython` a C++ host does with the same names (embed.cpp).
# Everything it says is checked, so it fails when something is not as it says.
import ling
import ling.cpython


def chapter(title):
    print(f"\n{title}\n{'-' * len(title)}")


chapter("Host values")
basket = ling.List()
for item in ("lamp", 40, 2.5):
    basket.append(item)
print("a list of the host:        ", basket)
print("its items, seen by Python: ", [(item, type(item).__name__) for item in basket])
assert [type(item) for item in basket] == [str, int, float]

prices = ling.HashMap()
prices.set("lamp", 20)
prices.set("chair", 45)
print("a map of the host:         ", prices)
assert list(prices) == ["lamp", "chair"] and prices.get("lamp") == 20

chapter("A request: code, variables in, result and variables back")
code = """\
total = sum(prices.get(name) for name in prices)
for number in range(amount):
    basket.append("chair")
return f"{total} for one of each"
"""
variables = ling.HashMap()
variables.set("prices", prices)
variables.set("basket", basket)
variables.set("amount", 2)
wanted = ling.HashMap()  # the variables that the host wants back are the keys
wanted.set("total", None)

result = ling.cpython.evaluate(code, ling.EvaluationScope(None, None, variables, wanted))

print(code)
print("result:           ", repr(result))
print("variables back:   ", wanted)
print("the host's basket:", basket)
assert result == "65 for one of each" and wanted.get("total") == 65
assert list(basket) == ["lamp", 40, 2.5, "chair", "chair"], "the code worked on the very list, not on a copy"
assert ling.cpython.evaluate_expr("1 + 2") == 3

chapter("Identity: what crosses the border twice is the same object")
mine = {"a": "Python dict"}
basket.append(mine)
assert list(basket)[-1] is mine
print("a Python dict in a host list is", mine, "- the very one that was put in")
assert ling.object_id(ling.cpython.evaluate("return self", ling.EvaluationScope(basket))) == ling.object_id(basket)
print("the host list that went through evaluated code is the very list")

chapter("A host class, used from Python")
record = ling.LogRecord(30, "the lamp is out")
print("an object:        ", record)
print("its properties:   ", record.level, repr(record.message))
print("what it says of itself:\n   ", type(record).__name__, "-", ling.class_of(record).__doc__.splitlines()[-1])
assert (record.level, record.message) == (30, "the lamp is out")
record.note = "added by a script"
print("a new attribute:  ", record.note)
try:
    record.level = 50
except RuntimeError as refusal:
    print("a read-only one:  ", refusal)
    assert str(refusal) == "Read-only attribute: level."
else:
    raise AssertionError("a read-only property was changed")
print("host log, on standard error:", flush=True)
ling.get_logger().log(record)

chapter("A fault in evaluated code, with its line")
faulty = """\
count = 3
average = 10 / (count - 3)
"""
try:
    ling.cpython.evaluate(faulty)
except RuntimeError as failure:
    error = failure.ling  # the host's error object
    print(f"line {error.line}: {error.message}")
    print("   ", faulty.splitlines()[error.line - 1])
    assert (error.line, error.message) == (2, "division by zero")
    assert "ZeroDivisionError" in error.stack
else:
    raise AssertionError("the fault was not reported")

try:
    ling.cpython.evaluate("print('before')\nif True print('no colon')")
except RuntimeError as failure:
    error = failure.ling
    print(f"line {error.line}, column {error.column}: SyntaxError, found before anything ran")
    assert (error.line, error.column) == (2, 9) and "SyntaxError" in error.message
else:
    raise AssertionError("the fault was not reported")

chapter("An error of the host, there and back")
mishaps = ling.List()
variables.set("mishaps", mishaps)
seen_inside = ling.cpython.evaluate("""\
try:
    basket.at("first")
except RuntimeError as mishap:
    mishaps.append(mishap)
    return ling.object_id(mishap.ling)
""", ling.EvaluationScope(None, None, variables, None))
try:
    mishaps.at(0)  # an error that the host hands to Python is raised
except RuntimeError as mishap:
    print("the host's error:", mishap.ling.message)
    assert mishap.ling.message.startswith("Bad call of 'ling.List.at': the argument 'index' must be Integer")
    assert ling.object_id(mishap.ling) == seen_inside
    print("it was raised in Python, caught, kept by the host and raised again: one and the same object")
else:
    raise AssertionError("the error was not raised")

print("\nThat was the tour. examples/embed.cpp is the same from the host's side; docs/ has the details.")
