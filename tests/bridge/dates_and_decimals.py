"""Dates, times and decimals in both directions and in the runtime's own hands; Python's modules are the judge."""

import datetime
import decimal
import operator
import random
from datetime import date, time, timedelta, timezone
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
def zone(seconds, *name):
    return timezone(timedelta(seconds=seconds), *name)


class Stamp(datetime.datetime):
    """Derived from a class that is known."""


class OddTime(time):
    """A time that computes what it says by itself; raises what is an exception."""

    def __new__(cls, **fields):
        made = super().__new__(cls, 1)
        made.fields = fields
        return made

    def __getattribute__(self, name):
        fields = super().__getattribute__("__dict__").get("fields", {})
        answer = fields[name] if name in fields else super().__getattribute__(name)
        if isinstance(answer, type) and issubclass(answer, BaseException):
            raise answer(name)
        return answer


def odd_offset(seconds):
    return OddTime(utcoffset=lambda: SimpleNamespace(total_seconds=lambda: seconds), tzname=lambda: "odd")


def odd_name(name):
    return OddTime(utcoffset=lambda: timedelta(hours=1), tzname=name)


def itself():
    made = odd_name(lambda: made)
    return made


for value, text in [
    (Stamp(9999, 12, 31, tzinfo=timezone.utc), "DateTime 9999-12-31T00:00:00+00:00"),
    (time(10, 20, 30, 123456), "Time 10:20:30.123456  0"),
    (time(1, fold=1), "Time 01:00:00  0"),                                    # without a zone no fold
    (time(1, tzinfo=zone(86399, "far"), fold=1), "Time 01:00:00+23:59:59 far 1"),
    (time(1, tzinfo=zone(-18000)), "Time 01:00:00  0"),                       # west of UTC
    (time(1, tzinfo=zone(0.5)), "Time 01:00:00  0"),                          # not by whole seconds
    (OddTime(utcoffset=KeyError), "Time 01:00:00  0"),
    (odd_name(LookupError), "Time 01:00:00+01:00  0"),
    (itself(), "Time 01:00:00+01:00  0"),
    (odd_offset(60), "Time 01:00:00+00:01 odd 0"),
    (odd_offset(float("nan")), "Time 01:00:00  0"),
    (OddTime(fold="?", utcoffset=timedelta), "Time 01:00:00+00:00  0"),
    (OddTime(month=3, hour=256 + 7), "Time 07:00:00  0"),
    (Decimal("-0E+5"), "Decimal -0E+5"),
    (Decimal("sNaN123"), "Decimal sNaN123"),
]:
    expect(described(value), text, repr(value))

# Fields that cannot be read leave the object what it is; fields that do not exist are an error.
for fields in ({"hour": AttributeError}, {"minute": "5"}, {"second": 2**70}, {"microsecond": LookupError}):
    assert ling.class_of(OddTime(**fields)).name == "CPythonObject", fields
# From the host: microseconds, the fold, never a zone.
expect(ling.Time(1, 2, 3, 999_999_999), time(1, 2, 3, 999999))
expect(ling.Time(1, 2, 3, 4000, 7200, "CEST", 1), time(1, 2, 3, 4, fold=1))
expect(ling.DateTime.fromString("2020-02-29T10:20:30.5+02:00"), datetime.datetime(2020, 2, 29, 10, 20, 30, 500000))


class Claim:
    """Claims to be a decimal with the text that a function gives."""

    __class__ = Decimal

    def __init__(self, text):
        self.text = text

    def __str__(self):
        return self.text(self)


class TextClaim(Claim, str):
    """A text besides."""

    def __new__(cls, text):
        return str.__new__(cls)


expect(described(Claim(lambda _: "12.50")), "Decimal 12.50")
for value, message in [
    (OddTime(hour=25), "The hour 25 is not between 0 and 23."),
    (OddTime(microsecond=2**62), "The nanosecond 10000000000 is not between 0 and 999999999."),
    (odd_offset(float("inf")), "The offset 1000000000000000 is not between 0 and 86399."),
    (Claim(lambda _: {}["no text"]), "no text"),
    (Claim(lambda _: "twelve"), "The text 'twelve' is not a number for Decimal."),
    (TextClaim(lambda itself: itself), "maximum recursion depth exceeded"),
]:
    try:
        ling.display(value)
    except RuntimeError as error:
        assert message in str(error), error
    else:
        raise AssertionError(message)


# --- thousands of each, there and back -------------------------------------------------------------------------------
def random_moment(offset=None):
    day = date.fromordinal(random.randrange(1, date.max.toordinal() + 1))
    fields = [random.randrange(limit) for limit in (24, 60, 60, random.choice((1, 10**6)))]
    return datetime.datetime.combine(day, time(*fields, tzinfo=offset))


def random_decimal():
    text = random.choice(("", "-")) + str(random.randrange(10 ** random.randrange(1, 40)))
    exponent = random.choice((0, -2, random.randrange(-50, 50), random.randrange(-10**17, 10**17)))
    return Decimal(random.choice((f"{text}E{exponent}", f"{text}E{exponent}", "NaN" + text.strip("-"), "-Infinity")))


moments = [random_moment() for _ in range(10_000)]
dates = [date.min, date.max, date(2000, 2, 29), date(1900, 2, 28), *(moment.date() for moment in moments)]
decimals = [Decimal("7" * 10_000), Decimal("-0." + "3" * 10_000), *(random_decimal() for _ in range(10_000))]
isoformat = operator.methodcaller("isoformat")
for values, text in [(dates, isoformat), ([moment.time() for moment in moments], isoformat), (moments, isoformat), (decimals, str)]:
    for value, back in zip(values, ling.List(values)):
        expect(back, value)
        expect(ling.display(value), text(value), repr(value))
for minutes in range(24 * 60):
    moment = random_moment(zone(60 * minutes))
    expect(ling.display(moment), moment.isoformat())

# --- what the runtime makes of them ----------------------------------------------------------------------------------
add_days, add_seconds = ling.method_of(date.min, "addDays"), ling.method_of(moments[0], "addSeconds")
weekday, day_of_year = (ling.property_of(date.min, name).getter for name in ("weekday", "dayOfYear"))
seconds_since = ling.method_of(moments[0], "secondsSince")
for day, other, moment in zip(dates, reversed(dates), moments):
    expect(add_days(day, (other - day).days), other)
    expect((weekday(day), day_of_year(day)), (day.isoweekday(), day.timetuple().tm_yday))
    expect(ling.Date.fromString(day.isoformat()), day)
    seconds = (random.choice(moments) - moment) // timedelta(seconds=1)
    later = moment + timedelta(seconds=seconds)
    expect((add_seconds(moment, seconds), seconds_since(later, moment)), (later, seconds))

exact = decimal.Context(prec=decimal.MAX_PREC, Emax=decimal.MAX_EMAX, Emin=decimal.MIN_EMIN, traps=[])
operations = [(ling.method_of(Decimal(), name), getattr(exact, name)) for name in ("add", "subtract", "multiply")]
near = [Decimal(random.randrange(-10**random.randrange(1, 60), 10**60)).scaleb(random.randrange(-60, 60), exact)
        for _ in range(4_000)]
near += [Decimal(random.choice(("0", "-0", "1.00", "-1", "0.5", "2.50", "1E+5", "-0.00"))) for _ in range(1_000)]
random.shuffle(near)


def order(a, b):
    return "Less" if a < b else "Greater" if a > b else "Equal"


with decimal.localcontext(exact):
    for a, b in zip(near, reversed(near)):
        for by_host, by_python in operations:
            expect(by_host(a, b), by_python(a, b), f"{a} and {b}")
        expect(str(ling.compare_objects(a, b)), order(a, b), f"{a} and {b}")
        assert ling.hash_of(a) == ling.hash_of(a + Decimal("0.000")), a
        number = float(random.choice((a, b)))
        if number % 1:  # one without a fraction would arrive as an Integer
            expect(str(ling.compare_objects(a, number)), order(a, number), f"{a} and {number}")
            assert ling.hash_of(Decimal(number)) == ling.hash_of(number), number
