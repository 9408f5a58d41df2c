"""Dates, times and decimals in both directions; Python's modules are the judge."""

import operator
import random
from datetime import date, datetime, time, timedelta, timezone
from decimal import Decimal
from types import SimpleNamespace

import ling

random.seed(20200229)


def expect(actual, expected, what=""):
    same = type(actual) is type(expected) and repr(actual) == repr(expected)
    assert same, f"{what}: {actual!r} instead of {expected!r}"


def described(value):
    """What the host sees: the class, the text, and what the text leaves out."""
    members = [ling.property_of(value, name) for name in ("zoneName", "fold")]
    left_out = "".join(f" {member.getter(value)}" for member in members if member is not None)
    return f"{ling.class_of(value).name} {ling.display(value)}{left_out}"


# --- case by case ----------------------------------------------------------------------------------------------------
class Stamp(datetime):
    """Derived from a class that is known."""


class OddTime(SimpleNamespace):
    """Claims to be a time that says what it is given."""

    __class__ = time
    hour, minute, second, microsecond = 1, 0, 0, 0


def odd_offset(seconds):
    return OddTime(utcoffset=lambda: SimpleNamespace(total_seconds=lambda: seconds), tzname=lambda: "odd")


named_by_itself = OddTime(utcoffset=lambda: timedelta(hours=1), tzname=lambda: named_by_itself)

for value, text in [
    (Stamp(9999, 12, 31, tzinfo=timezone.utc), "DateTime 9999-12-31T00:00:00+00:00"),
    (time(1, fold=1), "Time 01:00:00  0"),                                    # without a zone no fold
    (time(1, tzinfo=timezone(timedelta(seconds=86399), "far"), fold=1), "Time 01:00:00+23:59:59 far 1"),
    (time(1, tzinfo=timezone(timedelta(hours=-5))), "Time 01:00:00  0"),      # west of UTC
    (time(1, tzinfo=timezone(timedelta(seconds=0.5))), "Time 01:00:00  0"),   # not by whole seconds
    (OddTime(utcoffset=lambda: 1 // 0), "Time 01:00:00  0"),
    (named_by_itself, "Time 01:00:00+01:00  0"),
    (odd_offset(60), "Time 01:00:00+00:01 odd 0"),
    (odd_offset(float("nan")), "Time 01:00:00  0"),
    (OddTime(fold="?", utcoffset=timedelta), "Time 01:00:00+00:00  0"),
    (OddTime(hour=256 + 7), "Time 07:00:00  0"),
]:
    expect(described(value), text, repr(value))

# Fields that cannot be read leave the object what it is; fields that do not exist are an error.
for fields in {"hour": "1"}, {"second": 2**70}:
    assert ling.class_of(OddTime(**fields)).name == "CPythonObject", fields
# From the host: microseconds, the fold, never a zone.
expect(ling.Time(1, 2, 3, 4999, 7200, "CEST", 1), time(1, 2, 3, 4, fold=1))
expect(ling.DateTime.fromString("2020-02-29T10:20:30.5+02:00"), datetime(2020, 2, 29, 10, 20, 30, 500000))


class Claim(str):
    """Claims to be a decimal whose text is what its own text evaluates to."""

    __class__ = Decimal

    def __str__(self):
        return eval(self, {"self": self})


for value, message in [
    (OddTime(hour=25), "The hour 25 is not between 0 and 23."),
    (OddTime(microsecond=2**62), "The nanosecond 10000000000 is not between 0 and 999999999."),
    (odd_offset(float("inf")), "The offset 1000000000000000 is not between 0 and 86399."),
    (Claim("{}['no text']"), "no text"),
    (Claim("'twelve'"), "The text 'twelve' is not a number for Decimal."),
    (Claim("self"), "maximum recursion depth exceeded"),
]:
    try:
        ling.display(value)
    except RuntimeError as error:
        assert message in str(error), error
    else:
        raise AssertionError(message)


# --- thousands of each, there and back -------------------------------------------------------------------------------
def random_moment():
    day = date.fromordinal(random.randrange(1, date.max.toordinal() + 1))
    return datetime.combine(day, time(*(random.randrange(limit) for limit in (24, 60, 60, random.choice((1, 10**6))))))


def random_decimal():
    text = random.choice(("", "-")) + str(random.randrange(10 ** random.randrange(1, 40)))
    exponent = random.choice((0, -2, random.randrange(-50, 50), random.randrange(-10**17, 10**17)))
    return Decimal(random.choice((f"{text}E{exponent}", f"{text}E{exponent}", "NaN" + text.strip("-"), "-Infinity")))


moments = [random_moment() for _ in range(10_000)]
dates = [date.min, date.max, *(moment.date() for moment in moments)]
decimals = [Decimal("7" * 10_000), Decimal("-0." + "3" * 10_000), *(random_decimal() for _ in range(10_000))]
isoformat = operator.methodcaller("isoformat")
for values, text in (dates, isoformat), ([m.time() for m in moments], isoformat), (moments, isoformat), (decimals, str):
    for value, back in zip(values, ling.List(values)):
        expect(back, value)
        expect(ling.display(value), text(value), repr(value))
