#pragma once

#include <QVector>

/// Sorts \p values ascending, not a number behind all numbers.
void sortAscending(QVector<double> &values);

/// The median of \p values: the middle one, or half the sum of the two in the middle. Not a number
/// sorts behind all numbers. Without values the result is not a number.
double median(QVector<double> values);
