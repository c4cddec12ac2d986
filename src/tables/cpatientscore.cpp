// SPDX-License-Identifier: GPL-3.0-or-later
#include "tables/cpatientscore.h"

#include <QColor>

#include "analysis/centers.h"
#include "analysis/kvadrants.h"
#include "analysis/methodlabels.h"

namespace
{

constexpr int rows = 2 * methodCount;

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
    switch (side) {
    case Side::Better:
        return {"#AAD083"};
    case Side::Worse:
        return {"#E79292"};
    case Side::OnCenter:
        break;
    }
    return {"#647B98"};
}

} // namespace

CPatientScore::CPatientScore(PatientScoreRecord &average, QVector<PatientScoreRecord> &scoreList,
                             PatientScoreRecord &median)
    : averageCenter(average), scores(scoreList), medianCenter(median)
{
}

int CPatientScore::rowCount(const QModelIndex & /*parent*/) const
{
    return rows;
}

int CPatientScore::columnCount(const QModelIndex & /*parent*/) const
{
    return int(scores.size());
}

QVariant CPatientScore::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rows || index.column() >= scores.size()) {
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
    const int sections = orientation == Qt::Horizontal ? int(scores.size()) : rows;
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
