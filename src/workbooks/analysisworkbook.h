// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QString>
#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"
#include "xlsx/writing/sheetwriter.h"

/// Writes the analysis workbook of 21 sheets to the file \p fileName: the kvadrant of each patient
/// under all nine pairs of a convergence and a variability method, how far pairs and methods agree
/// with each other and with the kvadrant that the user marked as ideal, and the same numbers as
/// column pairs for an analysis of variance.
///
/// Record k of both lists is the same patient. Every comparison is made with \p medianCenter,
/// whatever the settings say; no value of \p averageCenter reaches the workbook. A file that cannot
/// be written is not reported, and keeps what it held.
void writeAnalysisWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                           const QVector<PatientScoreRecord> &scores,
                           const PatientScoreRecord &averageCenter,
                           const PatientScoreRecord &medianCenter);

/// The sheets of that workbook; they refer to \p patients.
std::vector<CellSheet> analysisSheets(const QVector<PatientRecord> &patients,
                                      const QVector<PatientScoreRecord> &scores,
                                      const PatientScoreRecord &medianCenter);
