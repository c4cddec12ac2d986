// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

#include <QVector>

#include "analysis/logarithm.h"

/// The sums that the exponential fit of a series solves for, added in the order of the values with
/// the arithmetic of \p Real, and the sum that the textbook's fit has in place of s2.
template<typename Real>
struct FitSums {
    explicit FitSums(const QVector<double> &values)
    {
        for (int i = 0; i < values.size(); ++i) {
            const Real x = i;
            const Real y = values.at(i);
            const Real xy = x * y;
            const Real logarithm = logarithmOf(y);
            s0 += y;
            s1 += xy;
            s2 += (y * y) * x;
            s3 += logarithm * y;
            s4 += logarithm * xy;
            textbook += x * xy;
        }
    }

    // The wider one comes from the standard library.
    static double logarithmOf(double y) { return naturalLogarithm(y); }
    static long double logarithmOf(long double y) { return std::log(y); }

    Real numerator() const { return s0 * s4 - s1 * s3; }
    Real denominator() const { return s0 * s2 - s1 * s1; }
    Real textbookDenominator() const { return s0 * textbook - s1 * s1; }

    Real s0 = 0;
    Real s1 = 0;
    Real s2 = 0;
    Real s3 = 0;
    Real s4 = 0;
    Real textbook = 0;
};
