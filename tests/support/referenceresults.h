// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVector>

/// Series from a fixed seed and what the six methods give for them, to the last bit: the same on
/// every machine and with every compiler.
namespace ReferenceResults
{

/// The first \p count series, ten kinds in turn: mostly tenths, as laboratories report them, and
/// also constant ones, ones of two values, with all bits of a double, far apart and with a negative
/// value.
QVector<QVector<double>> series(int count);

/// The bit patterns of the results by all six methods, convergence first; NaN has only one. The
/// offset is that of the settings.
QVector<quint64> bits(const QVector<double> &values);

/// The values of a series, a semicolon and the bit patterns of its results as hexadecimal numbers.
QByteArray line(const QVector<double> &values);

} // namespace ReferenceResults
