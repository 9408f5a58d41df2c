# Evaluates arithmetic with a grammar written with a library from the distribution, the package python3-pyparsing.
import operator

import pyparsing as pp

OPERATORS = {"+": operator.add, "-": operator.sub, "*": operator.mul, "/": operator.truediv, "^": operator.pow}


def apply(tokens):
    value, *rest = tokens[0]
    for symbol, operand in zip(rest[::2], rest[1::2]):
        value = OPERATORS[symbol](value, operand)
    return value


number = pp.pyparsing_common.number()
expression = pp.infixNotation(number, [
    (pp.oneOf("^"), 2, pp.opAssoc.RIGHT, apply),
    (pp.oneOf("* /"), 2, pp.opAssoc.LEFT, apply),
    (pp.oneOf("+ -"), 2, pp.opAssoc.LEFT, apply),
])

for text, expected in (("1 + 2 * 3", 7), ("(1 + 2) * 3", 9), ("2 ^ 10 / 4", 256), ("1.5 * 4 - 6", 0)):
    value = expression.parseString(text, parseAll=True)[0]
    print(text, "=", value)
    assert value == expected

try:
    expression.parseString("1 + * 2", parseAll=True)
except pp.ParseException as error:
    print("not understood at column", error.column)
    print(error.line)
    print(" " * (error.column - 1) + "^")
