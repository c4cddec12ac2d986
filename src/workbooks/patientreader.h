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

/// The cell that ended the values of a patient: the first one that converts to 0.
struct RowEnd {
    /// Its content: nothing but blanks, a number or text that is 0, false, a date or a time,
    /// an error such as "#N/A", or another text.
    enum Kind { Empty, Zero, False, Date, Error, Text };

    Kind kind = Empty;
    /// Its address, such as "C17".
    QString cell;
    /// An error or text, as the cell has it; empty for the other kinds.
    QString text;
};

/// A patient with fewer than fewestValues values.
struct ShortRow {
    /// Index of the patient, counted from 0.
    int patient;
    RowEnd end;
};
Q_DECLARE_TYPEINFO(ShortRow, Q_MOVABLE_TYPE);

/// The patients of a workbook, or the reason why it was not loaded.
struct LoadedPatients {
    QVector<PatientRecord> patients;
    LoadError error;
    /// Those that have too few values, in row order.
    QVector<ShortRow> shortRows = {};
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

/// The cell after the first \p count values of the patient with the index \p patient, which ended
/// them.
RowEnd readRowEnd(const QXlsx::Document &document, int patient, int count);

/// The text in column 1 of the workbook row \p row, counted from 1, with its blanks.
QString readPatientId(const QXlsx::Document &document, int row);

/// All patients of the current sheet in row order, each without an ideal kvadrant.
QVector<PatientRecord> readPatients(const QXlsx::Document &document);

/// Workbook row, counted from 1, of the patient with the index \p patient, counted from 0.
int workbookRow(int patient);
