// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"

/// The results of every patient by all six methods, in patient order.
QVector<PatientScoreRecord> scoresOf(const QVector<PatientRecord> &patients);

/// Computes again, for every patient, the one result that depends on a setting: the difference
/// standard deviation, which leaves out as many values as the offset says.
void updateOffsetScores(QVector<PatientScoreRecord> &scores,
                        const QVector<PatientRecord> &patients);

/// Indices of the patients that have fewer than fewestValues values.
QVector<int> patientsWithTooFewValues(const QVector<PatientRecord> &patients);
