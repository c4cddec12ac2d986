// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <limits>

#include <QString>

/// Comparisons of doubles for the tests, to be checked with QCOMPARE(difference(...), QString()).
namespace Numbers
{

inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

/// Empty when \p actual lies within \p relative times the magnitude of \p expected, otherwise a
/// text with both and the distance between them. NaN and the infinities equal only themselves. With
/// the tolerance 0 the numbers must be the same.
inline QString difference(double actual, double expected, double relative)
{
    const double distance = std::abs(actual - expected);
    if (actual == expected || (std::isnan(actual) && std::isnan(expected))
        || (std::isfinite(expected) && distance <= relative * std::abs(expected))) {
        return {};
    }
    return QString("%1 instead of %2, apart by %3 (%4 relative)")
        .arg(actual, 0, 'g', 17)
        .arg(expected, 0, 'g', 17)
        .arg(distance)
        .arg(distance / std::abs(expected));
}

/// The same with the tolerance \p absolute, for results that are 0 up to rounding.
inline QString differenceFromZero(double actual, double absolute)
{
    return std::abs(actual) <= absolute
        ? QString()
        : QString("%1 is not 0 within %2").arg(actual, 0, 'g', 17).arg(absolute);
}

} // namespace Numbers
