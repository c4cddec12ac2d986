// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/patientanalysis.h"

#include "analysis/convergence.h"
#include "analysis/variability.h"

QVector<PatientScoreRecord> scoresOf(const QVector<PatientRecord> &patients)
{
    QVector<PatientScoreRecord> scores;
    scores.reserve(patients.size());
    for (const PatientRecord &patient : patients) {
        scores.append({patient.id, convergenceValues(patient), variabilityValues(patient)});
    }
    return scores;
}

void updateOffsetScores(QVector<PatientScoreRecord> &scores, const QVector<PatientRecord> &patients)
{
    for (int i = 0; i < patients.size(); ++i) {
        scores[i].variability[DifferenceStandardDeviationOffset] =
            differenceStandardDeviationOffset(patients.at(i).values);
    }
}

QVector<int> patientsWithTooFewValues(const QVector<PatientRecord> &patients)
{
    QVector<int> indices;
    for (int i = 0; i < patients.size(); ++i) {
        if (patients.at(i).values.size() < fewestValues) {
            indices.append(i);
        }
    }
    return indices;
}
