// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

/// The results of one patient, or the center of each result over all patients.
///
/// Both lists hold one value per method, at the index that the settings use for it
/// (ConvergenceMethod, VariabilityMethod). A center has no identifier.
struct PatientScoreRecord {
    QString id;
    QVector<double> convergence;
    QVector<double> variability;
};
Q_DECLARE_TYPEINFO(PatientScoreRecord, Q_MOVABLE_TYPE);

/// One of the two lists.
using ScoreList = QVector<double> PatientScoreRecord::*;

/// How many methods each of the two lists has.
inline constexpr int methodCount = 3;
