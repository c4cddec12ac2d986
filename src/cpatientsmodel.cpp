#include "cpatientsmodel.h"

#include "cconfig.h"
#include "centers.h"

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
    return patients.size();
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
    return mark(scores.at(index.row()));
}

QString CPatientsModel::mark(const PatientScoreRecord &score) const
{
    const CConfig &config = CConfig::instance();
    const PatientScoreRecord &center = chosenCenter(averageCenter, medianCenter);
    const int c = static_cast<int>(config.convergenceMethod());
    const int v = static_cast<int>(config.varianceMethod());
    // The two tests are no mirror images: not a number is worse in the first, better in the second.
    const bool convergenceBetter = center.convergence.at(c) > score.convergence.at(c);
    const bool variabilityWorse = score.variability.at(v) >= center.variability.at(v);
    return (convergenceBetter ? tr("B/") : tr("W/")) + (variabilityWorse ? tr("W") : tr("B"));
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
