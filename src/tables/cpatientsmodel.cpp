// SPDX-License-Identifier: GPL-3.0-or-later
#include "tables/cpatientsmodel.h"

#include "analysis/centers.h"
#include "analysis/kvadrants.h"
#include "settings/cconfig.h"

namespace
{

enum Column { IdColumn, MarkColumn, ColumnCount };

} // namespace

CPatientsModel::CPatientsModel(QVector<PatientRecord> &patientList,
                               QVector<PatientScoreRecord> &scoreList, PatientScoreRecord &average,
                               PatientScoreRecord &median)
    : patients(patientList), scores(scoreList), averageCenter(average), medianCenter(median)
{
}

int CPatientsModel::rowCount(const QModelIndex & /*parent*/) const
{
    return int(patients.size());
}

int CPatientsModel::columnCount(const QModelIndex & /*parent*/) const
{
    return ColumnCount;
}

QVariant CPatientsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= patients.size() || role != Qt::DisplayRole) {
        return {};
    }
    if (index.column() == IdColumn) {
        return patients.at(index.row()).id;
    }
    return markText(scores.at(index.row()));
}

QString CPatientsModel::markText(const PatientScoreRecord &score) const
{
    const CConfig &config = CConfig::instance();
    const PatientScoreRecord &center = chosenCenter(medianCenter, averageCenter);
    const Mark mark =
        markOf(score, center, int(config.convergenceMethod()), int(config.varianceMethod()));
    return (mark.convergenceBetter ? tr("B/") : tr("W/"))
        + (mark.variabilityBetter ? tr("B") : tr("W"));
}

QVariant CPatientsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case IdColumn:
        return tr("Id patient");
    case MarkColumn:
        return tr("Method results");
    default:
        return QStringLiteral("Unknown!");
    }
}

void CPatientsModel::update(const QVector<PatientScoreRecord> &scoreList,
                            const PatientScoreRecord &median, const PatientScoreRecord &average)
{
    scores = scoreList;
    medianCenter = median;
    averageCenter = average;
}
