// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/centers.h"

#include <utility>

#include "analysis/median.h"
#include "settings/cconfig.h"

namespace
{

using Center = double (*)(QVector<double>);

// Adds in patient order: another order rounds the sum differently.
double average(QVector<double> values) // NOLINT(performance-unnecessary-value-param)
{
    double sum = 0.0;
    for (const double value : std::as_const(values)) {
        sum += value;
    }
    return sum / double(values.size());
}

QVector<double> columnCenters(const QVector<PatientScoreRecord> &scores, ScoreList list,
                              Center center)
{
    QVector<double> centers;
    for (int method = 0; method < methodCount; ++method) {
        QVector<double> column;
        column.reserve(scores.size());
        for (const PatientScoreRecord &score : scores) {
            column.append((score.*list).at(method));
        }
        centers.append(center(std::move(column)));
    }
    return centers;
}

} // namespace

QVector<double> convergenceMedians(const QVector<PatientScoreRecord> &scores)
{
    return columnCenters(scores, &PatientScoreRecord::convergence, &median);
}

QVector<double> variabilityMedians(const QVector<PatientScoreRecord> &scores)
{
    return columnCenters(scores, &PatientScoreRecord::variability, &median);
}

QVector<double> convergenceAverages(const QVector<PatientScoreRecord> &scores)
{
    return columnCenters(scores, &PatientScoreRecord::convergence, &average);
}

QVector<double> variabilityAverages(const QVector<PatientScoreRecord> &scores)
{
    return columnCenters(scores, &PatientScoreRecord::variability, &average);
}

Centers centersOf(const QVector<PatientScoreRecord> &scores)
{
    return {{{}, convergenceMedians(scores), variabilityMedians(scores)},
            {{}, convergenceAverages(scores), variabilityAverages(scores)}};
}

const PatientScoreRecord &chosenCenter(const PatientScoreRecord &median,
                                       const PatientScoreRecord &average)
{
    return CConfig::instance().resultMethod() == 1 ? median : average;
}
