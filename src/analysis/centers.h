// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

#include "analysis/patientscorerecord.h"

/// The medians of the three convergence columns over all patients, each column sorted on its own
/// (NaN after all numbers). NaN without patients.
QVector<double> convergenceMedians(const QVector<PatientScoreRecord> &scores);
/// The same for the three variability columns.
QVector<double> variabilityMedians(const QVector<PatientScoreRecord> &scores);

/// The arithmetic means of the three convergence columns, added in patient order. The mean of a
/// column that holds NaN is NaN, and so is every mean without patients.
QVector<double> convergenceAverages(const QVector<PatientScoreRecord> &scores);
/// The same for the three variability columns.
QVector<double> variabilityAverages(const QVector<PatientScoreRecord> &scores);

/// Both centers of a group; neither has an identifier.
struct Centers {
    PatientScoreRecord median;
    PatientScoreRecord average;
};

/// The medians and the means of all six columns.
Centers centersOf(const QVector<PatientScoreRecord> &scores);

/// The center that counts: \p median when the setting "Median" is 1, otherwise \p average.
const PatientScoreRecord &chosenCenter(const PatientScoreRecord &median,
                                       const PatientScoreRecord &average);
