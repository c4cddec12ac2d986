// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

/// Sorts \p values ascending, NaN after all numbers.
void sortAscending(QVector<double> &values);

/// The median of \p values: the middle one, or half the sum of the two in the middle. NaN sorts
/// after all numbers. Without values the result is NaN.
double median(QVector<double> values);
