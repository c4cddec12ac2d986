#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""How far the results of the six methods are from the exact ones.

    referencelines 5000 | distances.py

Reads series with their results, one per line as in tests/data/results.txt, and computes each result
with 60 digits. Prints the largest distance from these for each method, relative to the largest value
of the series; that of k, which has no unit, relative to ln C or 1, whichever is larger. Ends with an
error where a distance is larger than its bound.
"""
import struct
import sys
from decimal import Decimal, getcontext

getcontext().prec = 60
OFFSET = 3


def median(numbers):
    ordered = sorted(numbers)
    count = len(ordered)
    return (ordered[(count - 1) // 2] + ordered[count // 2]) / 2


def median_difference(values):
    return median([after - before for before, after in zip(values, values[1:])])


def linear_least_squares(values):
    count = len(values)
    middle = Decimal(count - 1) / 2
    products = sum((x - middle) * y for x, y in enumerate(values))
    return products / sum((x - middle) ** 2 for x in range(count))


def exponential_fit(values):
    """k and ln C, or None where a value has no logarithm."""
    if min(values) <= 0:
        return None
    logarithms = [y.ln() for y in values]
    s0 = sum(values)
    s1 = sum(x * y for x, y in enumerate(values))
    s2 = sum(y * y * x for x, y in enumerate(values))
    s3 = sum(l * y for l, y in zip(logarithms, values))
    s4 = sum(l * x * y for x, (l, y) in enumerate(zip(logarithms, values)))
    determinant = s0 * s2 - s1 * s1
    return (s0 * s4 - s1 * s3) / determinant, (s3 * s2 - s4 * s1) / determinant


def standard_deviation(numbers):
    """That of the population; None without numbers."""
    count = len(numbers)
    if count == 0:
        return None
    mean = sum(numbers) / count
    return (sum((number - mean) ** 2 for number in numbers) / count).sqrt()


def difference_standard_deviation_offset(values):
    used = values[OFFSET:] if len(values) > OFFSET else values
    return standard_deviation([before - after for before, after in zip(used, used[1:])])


def interquartile_range(values):
    ordered = sorted(values)
    half = len(ordered) // 2
    if half % 2 == 1:
        first = (half - 1) // 2
        return ordered[first + half] - ordered[first]
    quarter = half // 2
    end = min(quarter + half + 1, len(ordered) - 1)
    lower = (ordered[quarter - 1] + ordered[quarter]) / 2
    return (ordered[quarter + half] + ordered[end]) / 2 - lower


def exact(values):
    """What each method should give, None for NaN, and what its distance is relative to."""
    largest = max(abs(value) for value in values)
    fit = exponential_fit(values)
    return [
        (median_difference(values), largest),
        (linear_least_squares(values), largest),
        (fit[0], max(1, abs(fit[1]))) if fit else (None, 1),
        (standard_deviation(values), largest),
        (difference_standard_deviation_offset(values), largest),
        (interquartile_range(values), largest),
    ]


def distance(result, expected, scale):
    if expected is None or result.is_nan():
        return Decimal(0) if expected is None and result.is_nan() else Decimal("inf")
    return abs(result - expected) / scale


# What was measured with 5,000 series, rounded up.
BOUNDS = [
    ("median difference", 2.1e-16),
    ("linear least squares", 5.8e-16),
    ("C*e^(k*x)", 7.4e-13),
    ("standard deviation", 8.7e-16),
    ("difference standard deviation offset", 3.4e-16),
    ("interquartile range", 2.1e-16),
]


def number(pattern):
    return Decimal(struct.unpack(">d", bytes.fromhex(pattern))[0])


def main():
    largest = len(BOUNDS) * [Decimal(0)]
    for line in sys.stdin:
        values, patterns = (part.split() for part in line.split(";"))
        expected = exact([Decimal(float(value)) for value in values])
        for method, (pattern, (result, scale)) in enumerate(zip(patterns, expected)):
            largest[method] = max(largest[method], distance(number(pattern), result, scale))
    for (name, bound), found in zip(BOUNDS, largest):
        print(f"{name}: {found:.2e}, at most {bound:.1e}")
    within = all(found <= bound for (_, bound), found in zip(BOUNDS, largest))
    sys.exit(0 if max(largest) > 0 and within else 1)


main()
