# Computes with decimals, fractions and large integers, where nothing may be rounded on the way.
import decimal
import math
import statistics
from decimal import Decimal
from fractions import Fraction

price = Decimal("19.99")
tax = (price * Decimal("0.19")).quantize(Decimal("0.01"), rounding=decimal.ROUND_HALF_EVEN)
print(price, "+", tax, "=", price + tax)
assert str(price + tax) == "23.79"

with decimal.localcontext() as context:
    context.prec = 50
    print(Decimal(2).sqrt())
assert decimal.getcontext().prec == 28

try:
    Decimal(1) / 0
except decimal.DivisionByZero as error:
    print("refused:", type(error).__name__)

third = Fraction(1, 3)
assert third + third + third == 1 and Fraction("0.125") == Fraction(1, 8)
print(sum((Fraction(1, n) for n in range(1, 11)), Fraction()))
print(Fraction(math.pi).limit_denominator(1000))

print(math.factorial(30), 2**100 % 97, math.isqrt(10**40), math.gcd(2**40, 6**20))
assert (2**64 - 1).bit_length() == 64 and int("f" * 16, 16) == 2**64 - 1
print(statistics.mean([1, 2, 3, 4]), statistics.stdev([2, 4, 4, 4, 5, 5, 7, 9]))
print(f"{1e300 * 1e10} {float('nan')} {-0.0} {0.1 + 0.2!r} {complex(1, -2) ** 2}")
