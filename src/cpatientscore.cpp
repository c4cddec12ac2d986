#include "cpatientscore.h"

#include <array>

#include <QColor>

#include "centers.h"

namespace
{

constexpr int rows = 2 * methodCount;
constexpr std::array<const char *, rows> methodHeaders = {
    QT_TRANSLATE_NOOP("CPatientScore", "Median difference (x)"),
    QT_TRANSLATE_NOOP("CPatientScore", "Linear least squares (x)"),
    QT_TRANSLATE_NOOP("CPatientScore", "C*e^(k*x) (x)"),
    QT_TRANSLATE_NOOP("CPatientScore", "Standard deviation (y)"),
    QT_TRANSLATE_NOOP("CPatientScore", "Difference standard deviation offset (y)"),
    QT_TRANSLATE_NOOP("CPatientScore", "Interquartile range (y)"),
};

double valueInRow(const PatientScoreRecord &record, int row)
{
    return row < methodCount ? record.convergence.at(row)
                             : record.variability.at(row - methodCount);
}

QColor sideColor(double value, double center)
{
    if (value > center) {
        return {"#E79292"};
    }
    if (center > value) {
        return {"#AAD083"};
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
    return scores.size();
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
        const PatientScoreRecord &center = chosenCenter(averageCenter, medianCenter);
        return sideColor(value, valueInRow(center, index.row()));
    }
    return {};
}

QVariant CPatientScore::headerData(int section, Qt::Orientation orientation, int role) const
{
    const int sections = orientation == Qt::Horizontal ? scores.size() : rows;
    if (role != Qt::DisplayRole || section < 0 || section >= sections) {
        return {};
    }
    if (orientation == Qt::Horizontal) {
        return scores.at(section).id;
    }
    return tr(methodHeaders.at(size_t(section)));
}

void CPatientScore::update(const QVector<PatientScoreRecord> &scoreList,
                           const PatientScoreRecord &median, const PatientScoreRecord &average)
{
    scores = scoreList;
    medianCenter = median;
    averageCenter = average;
}
