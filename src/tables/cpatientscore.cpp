// SPDX-License-Identifier: GPL-3.0-or-later
#include "tables/cpatientscore.h"

#include <array>

#include <QColor>

#include "analysis/centers.h"
#include "analysis/kvadrants.h"
#include "analysis/methodlabels.h"

namespace
{

constexpr int methodRows = 2 * methodCount;

const Method &methodInRow(int row)
{
    return row < methodCount ? convergenceMethods.at(size_t(row))
                             : variabilityMethods.at(size_t(row - methodCount));
}

double valueInRow(const PatientScoreRecord &record, int row)
{
    return row < methodCount ? record.convergence.at(row)
                             : record.variability.at(row - methodCount);
}

QColor colorOf(Side side)
{
    constexpr std::array colors = {"#AAD083", "#647B98", "#E79292"}; // green, blue, red
    return {colors.at(size_t(side))};
}

} // namespace

CPatientScore::CPatientScore(PatientScoreRecord &average, QVector<PatientScoreRecord> &scoreList,
                             PatientScoreRecord &median)
    : averageCenter(average), scores(scoreList), medianCenter(median)
{
}

int CPatientScore::rowCount(const QModelIndex & /*parent*/) const
{
    return methodRows;
}

int CPatientScore::columnCount(const QModelIndex & /*parent*/) const
{
    return int(scores.size());
}

QVariant CPatientScore::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= methodRows || index.column() >= scores.size()) {
        return {};
    }
    const double value = valueInRow(scores.at(index.column()), index.row());
    if (role == Qt::DisplayRole) {
        return QStringLiteral("%1").arg(value);
    }
    if (role == Qt::BackgroundRole) {
        const PatientScoreRecord &center = chosenCenter(medianCenter, averageCenter);
        return colorOf(sideOf(value, valueInRow(center, index.row())));
    }
    return {};
}

QVariant CPatientScore::headerData(int section, Qt::Orientation orientation, int role) const
{
    const int sections = orientation == Qt::Horizontal ? int(scores.size()) : methodRows;
    if (role != Qt::DisplayRole || section < 0 || section >= sections) {
        return {};
    }
    if (orientation == Qt::Horizontal) {
        return scores.at(section).id;
    }
    return tr(methodInRow(section).scoreTable);
}

void CPatientScore::update(const QVector<PatientScoreRecord> &scoreList,
                           const PatientScoreRecord &median, const PatientScoreRecord &average)
{
    scores = scoreList;
    medianCenter = median;
    averageCenter = average;
}
