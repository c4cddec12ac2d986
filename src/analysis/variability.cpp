// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/variability.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analysis/median.h"
#include "analysis/patientrecord.h"
#include "settings/cconfig.h"

namespace
{

double populationDeviation(const QVector<double> &values, double sum)
{
    const auto count = double(values.size());
    const double mean = sum / count;
    double squares = 0.0;
    for (const double value : values) {
        squares += (value - mean) * (value - mean);
    }
    return std::sqrt(squares / count);
}

} // namespace

QVector<double> variabilityValues(const PatientRecord &patient)
{
    return {standardDeviation(patient.values), differenceStandardDeviationOffset(patient.values),
            interquartileRange(patient.values)};
}

double standardDeviation(const QVector<double> &values)
{
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return populationDeviation(values, sum);
}

double differenceStandardDeviationOffset(const QVector<double> &values)
{
    const quint64 setting = CConfig::instance().skip();
    const bool longEnough = static_cast<quint64>(values.size()) > setting;
    const int skip = longEnough ? static_cast<int>(setting) : 0;

    QVector<double> steps;
    double sum = 0.0;
    for (int i = skip; i + 1 < values.size(); ++i) {
        steps.append(values.at(i) - values.at(i + 1));
        sum += steps.last();
    }
    return populationDeviation(steps, sum);
}

double interquartileRange(const QVector<double> &values)
{
    const int count = int(values.size());
    if (count < 2) {
        return count == 1 ? 0.0 : std::numeric_limits<double>::quiet_NaN();
    }
    QVector<double> s = values;
    sortAscending(s);
    const int half = count / 2;
    if (half % 2 == 1) {
        const int first = (half - 1) / 2;
        return s.at(first + half) - s.at(first);
    }
    const int q = half / 2;
    const double lower = (s.at(q - 1) + s.at(q)) * 0.5;
    const double upper = (s.at(q + half) + s.at(std::min(q + half + 1, count - 1))) * 0.5;
    return upper - lower;
}
