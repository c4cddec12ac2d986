#include "scores.h"

#include "convergence.h"
#include "variability.h"

QVector<PatientScoreRecord> scoresOf(const QVector<PatientRecord> &patients)
{
    QVector<PatientScoreRecord> scores;
    scores.reserve(patients.size());
    for (const PatientRecord &patient : patients) {
        scores.append({patient.id, convergenceValues(patient), variabilityValues(patient)});
    }
    return scores;
}

QVector<int> patientsWithTooFewValues(const QVector<PatientRecord> &patients)
{
    QVector<int> positions;
    for (int i = 0; i < patients.size(); ++i) {
        if (patients.at(i).values.size() < fewestValues) {
            positions.append(i);
        }
    }
    return positions;
}
