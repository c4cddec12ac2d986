// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

struct PatientRecord;

/// Indices of the convergence methods, in the settings and in PatientScoreRecord::convergence.
enum ConvergenceMethod { MedianDifference = 0, LinearLeastSquares = 1, ExponentialFit = 2 };

/// Fewest values with which the convergence of a series is defined.
inline constexpr int fewestValues = 2;

/// The three convergence values of \p patient, indexed by ConvergenceMethod.
///
/// Each says how the series moves from first to last; a falling series has negative values, and
/// lower is better. The index of a value, counted from 0, is the only x.
QVector<double> convergenceValues(const PatientRecord &patient);

/// Median of the steps values[i + 1] - values[i], in mmol/mol per measurement.
/// NaN for fewer than two values.
double medianDifference(const QVector<double> &values);

/// Slope a of the straight line y = a * x + b with the least sum of squared residuals, in mmol/mol
/// per measurement, by a singular value decomposition of the rows (x, 1).
/// NaN for fewer than two values.
double linearLeastSquares(const QVector<double> &values);

/// Coefficient k of y = C * e^(k * x), from a weighted fit of ln y.
///
/// k solves [S0 S1; S1 S2] (ln C, k) = (S3, S4) with, over all indices x, S0 = sum y,
/// S1 = sum x y, S2 = sum y y x, S3 = sum y ln y, S4 = sum x y ln y. NaN for a series with a
/// negative value and for fewer than two values. For a singular system the coefficient of the
/// dropped column is 0.
///
/// Required as is: S2 takes y squared times x, where the textbook's fit takes x squared times y.
/// So k is much smaller than the growth rate of the series, and its size depends on the unit of y.
double exponentialFit(const QVector<double> &values);
