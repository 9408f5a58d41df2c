# What scripts/bench says of measurements: how sure a median is, and what became slower.
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts"))

import bench_report


def result(median, low, high, contestant="ling", parameter=0, row="call"):
    return {"group": "Python asks", "row": row, "contestant": contestant, "parameter": parameter, "unit": "ns",
            "median": median, "low": low, "high": high, "samples": 9}


def check_intervals():
    # The places of the tables for the interval of a median, 95 %: the 1st and the 7th of 7, the 6th and the 15th of 20,
    # the 14th and the 28th of 41.
    for count, first in ((7, 0), (20, 5), (41, 13)):
        samples = [(7 * i) % count for i in range(count)] if count % 7 else list(range(count))[::-1]
        _, low, high = bench_report.median_with_interval(samples)
        assert (low, high) == (first, count - 1 - first), (count, low, high)
    # Few samples cannot be left out; the middle of two is between them.
    assert bench_report.median_with_interval([5.0]) == (5.0, 5.0, 5.0)
    assert bench_report.median_with_interval([4, 1, 3, 2]) == (2.5, 1, 4)
    # One sample that went wrong moves neither the median nor, among many, the interval.
    assert bench_report.median_with_interval([10] * 19 + [1000]) == (10, 10, 10)
    assert not bench_report.is_settled([10, 10, 10])
    assert bench_report.is_settled([10.0, 10.1, 10.2, 9.9, 10.1, 10.0, 10.1])
    assert not bench_report.is_settled([10, 12, 14, 10, 12, 14, 10])


def check_verdicts():
    old = [result(100, 90, 110)]
    for new, verdict in (
        (result(115, 105, 125), ""),  # they touch
        (result(120, 111, 129), "slower"),
        (result(80, 75, 89), "faster"),
        (result(80, 75, 95), ""),
    ):
        assert [entry[2] for entry in bench_report.compare(old, [new])] == [verdict], new
    # Exact counts differ by little without a reason.
    exact = [result(1000, 1000, 1000)]
    assert bench_report.compare(exact, [result(1005, 1005, 1005)])[0][2] == ""
    assert bench_report.compare(exact, [result(1020, 1020, 1020)])[0][2] == "slower"


def check_comparison():
    old = [result(100, 99, 101, parameter=10), result(900, 890, 910, parameter=1000), result(50, 49, 51, "raw")]
    new = [result(100, 99, 101, parameter=10), result(1800, 1790, 1810, parameter=1000), result(100, 99, 101, "raw"),
           result(7, 7, 7, row="new")]
    lines, slower = bench_report.comparison(old, new)
    told = "\n".join(lines)
    assert slower and "2.00 x  Python asks: call (1,000)" in told, told
    assert "What others do takes 2.00 times" in told and "1 rows are new" in told, told
    assert "Nothing is faster." in told and "call (10)" not in told, told
    # A peer that became slower is the machine's affair.
    assert not bench_report.comparison(old[2:], new[2:3])[1]


check_intervals()
check_verdicts()
check_comparison()
