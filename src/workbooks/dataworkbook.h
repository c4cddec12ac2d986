// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QString>
#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"
#include "xlsx/writing/sheetwriter.h"

/// Writes the data workbook to the file \p fileName: the sheet "Data" with all measured values, one
/// row per patient, the sheet "Method result" with the six results, one column per patient, and the
/// sheet "Graph" with a scatter chart of the values.
///
/// Record k of both lists is the same patient. The setting "Skip" shortens one of the labels. A
/// file that cannot be written is not reported, and keeps what it held; the result is always true.
bool writeDataWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                       const QVector<PatientScoreRecord> &scores);

/// The sheets of that workbook that have cells; they refer to both lists.
std::vector<CellSheet> dataSheets(const QVector<PatientRecord> &patients,
                                  const QVector<PatientScoreRecord> &scores);
