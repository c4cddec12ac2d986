// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "analysis/patientrecord.h"
#include "xlsx/reading/loaderror.h"

namespace QXlsx
{
class Document;
}

/// The patients of a workbook, or the reason why it was not loaded.
struct LoadedPatients {
    QVector<PatientRecord> patients;
    LoadError error;
};

/// Loads the workbook in the file \p path and reads all patients of its sheet. The list may be
/// empty without an error, if the workbook has no patient rows.
LoadedPatients loadPatients(const QString &path);

/// Number of patient rows of the current sheet of \p document: from row 2 down to the first row
/// whose column 1 is blank or holds only white space. Rows below that one are never read.
int readPatientCount(const QXlsx::Document &document);

/// The values of the patient with the index \p patient, counted from 0 (workbook row
/// \p patient + 2), from column 2 on up to the first cell that converts to 0: a blank cell, a text
/// that is not a number and a measured 0 all end the row. Negative numbers and the text "nan" are
/// values.
QVector<double> readPatientValues(const QXlsx::Document &document, int patient);

/// The text in column 1 of the workbook row \p row, counted from 1, with its blanks.
QString readPatientId(const QXlsx::Document &document, int row);

/// All patients of the current sheet in row order, each without an ideal kvadrant.
QVector<PatientRecord> readPatients(const QXlsx::Document &document);

/// Workbook row, counted from 1, of the patient with the index \p patient, counted from 0.
int workbookRow(int patient);
