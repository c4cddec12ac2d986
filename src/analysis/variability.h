// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

struct PatientRecord;

/// Indices of the variability methods, in the settings and in PatientScoreRecord::variability.
enum VariabilityMethod {
    StandardDeviation = 0,
    DifferenceStandardDeviationOffset = 1,
    InterquartileRange = 2
};

/// The three variability values of \p patient in mmol/mol, indexed by VariabilityMethod.
/// Each says how much the series varies; lower is better.
QVector<double> variabilityValues(const PatientRecord &patient);

/// Population standard deviation: the square root of sum((value - mean)^2) / n.
/// NaN without values.
double standardDeviation(const QVector<double> &values);

/// Population standard deviation of the steps values[i] - values[i + 1], leaving out as many
/// leading values as the setting "Skip" says.
///
/// A series of no more values than that is used whole. With n values and an offset of n - 1 no
/// step is left, and the result is NaN, as it is for fewer than two values.
double differenceStandardDeviationOffset(const QVector<double> &values);

/// Distance between an upper and a lower quartile of the sorted values s.
///
/// Required as is: the indices of the quartiles are this program's own.
/// With half = n / 2 rounded down: for an odd half and f = (half - 1) / 2 it is
/// s[f + half] - s[f]; for an even half and q = half / 2 it is
/// (s[q + half] + s[q + half + 1]) / 2 - (s[q - 1] + s[q]) / 2. An index past the end (n = 4)
/// becomes that of the last entry. 0 for one value, NaN without values.
double interquartileRange(const QVector<double> &values);
