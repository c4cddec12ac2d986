// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/referenceresults.h"

#include <cmath>
#include <cstring>
#include <limits>

#include <QLocale>

#include "analysis/convergence.h"
#include "analysis/patientrecord.h"
#include "analysis/variability.h"
#include "support/dice.h"

using Series = QVector<double>;

namespace
{

// From 0 to below 1, with all bits of a double.
double fraction(Dice &dice)
{
    const int high = dice.below(1 << 26);
    return std::ldexp(high, -26) + std::ldexp(dice.below(1 << 27), -53);
}

double tenths(int count)
{
    return count / 10.0;
}

Series constant(Dice &dice, int count)
{
    Series values;
    values.fill(tenths(1 + dice.below(4000)), count);
    return values;
}

// A drift with noise about it.
Series drifting(Dice &dice, int count)
{
    const int start = 250 + dice.below(900);
    const int drift = dice.below(41) - 20;
    const int noise = 1 + dice.below(200);
    Series values;
    for (int i = 0; i < count; ++i) {
        values.append(tenths(std::max(1, start + drift * i + dice.below(noise) - noise / 2)));
    }
    return values;
}

Series withAllBits(Dice &dice, int count)
{
    Series values;
    for (int i = 0; i < count; ++i) {
        values.append(20.0 + 130.0 * fraction(dice));
    }
    return values;
}

Series farApart(Dice &dice, int count)
{
    Series values;
    for (int i = 0; i < count; ++i) {
        const int exponent = dice.below(41) - 20;
        values.append(std::ldexp(1.0 + fraction(dice), exponent));
    }
    return values;
}

Series withNegative(Dice &dice, int count)
{
    Series values = drifting(dice, count);
    values[dice.below(count)] *= -1.0;
    return values;
}

Series next(Dice &dice, int kind)
{
    const int count = 2 + dice.below(39);
    switch (kind) {
    case 0:
        return constant(dice, count);
    case 1:
        return drifting(dice, 2);
    case 2:
        return withAllBits(dice, count);
    case 3:
        return farApart(dice, count);
    case 4:
        return withNegative(dice, count);
    default:
        return drifting(dice, count);
    }
}

quint64 bitsOf(double value)
{
    // Processors differ in the bits of the NaN that they make.
    const double number = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
    quint64 pattern = 0;
    std::memcpy(&pattern, &number, sizeof pattern);
    return pattern;
}

} // namespace

namespace ReferenceResults
{

QVector<Series> series(int count)
{
    Dice dice(2026);
    QVector<Series> all;
    for (int i = 0; i < count; ++i) {
        all.append(next(dice, i % 10));
    }
    return all;
}

QVector<quint64> bits(const Series &values)
{
    const PatientRecord patient = {{}, values, PatientRecord::noIdealKvadrant};
    QVector<quint64> patterns;
    for (const double result : convergenceValues(patient) + variabilityValues(patient)) {
        patterns.append(bitsOf(result));
    }
    return patterns;
}

QByteArray line(const Series &values)
{
    QByteArrayList texts;
    for (const double value : values) {
        texts.append(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
    }
    QByteArrayList patterns;
    for (const quint64 pattern : bits(values)) {
        patterns.append(QByteArray::number(pattern, 16).rightJustified(16, '0'));
    }
    return texts.join(' ') + ';' + patterns.join(' ');
}

} // namespace ReferenceResults
