// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/median.h"

#include <algorithm>
#include <cmath>
#include <limits>

void sortAscending(QVector<double> &values)
{
    // With NaN in the list, operator< alone is no strict weak order, and sorting undefined.
    std::sort(values.begin(), values.end(),
              [](double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; });
}

double median(QVector<double> values)
{
    if (values.isEmpty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    sortAscending(values);
    const int count = int(values.size());
    if (count % 2 == 1) {
        return values.at((count - 1) / 2);
    }
    return (values.at(count / 2 - 1) + values.at(count / 2)) * 0.5;
}
