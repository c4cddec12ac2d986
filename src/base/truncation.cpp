// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/truncation.h"

#include <cmath>
#include <limits>

quint64 toUnsigned(double value)
{
    constexpr double range = 18446744073709551616.0; // 2^64
    const double whole = std::trunc(value);
    if (!(std::abs(whole) < range)) {
        return std::numeric_limits<quint64>::max();
    }
    const auto magnitude = static_cast<quint64>(std::abs(whole));
    return whole < 0 ? quint64(0) - magnitude : magnitude;
}
