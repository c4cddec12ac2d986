// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QStringList>
#include <QVector>

#include "analysis/patientrecord.h"
#include "xlsx/writing/sheetwriter.h"

/// \file
/// Sheets of one shape: rows of headings, below them one row per patient, and notes to the right.
/// The patients have to outlive the sheets made from them.

/// The findings about each patient: a row of whole numbers, one per method or one per pair of
/// methods.
using PatientTable = QVector<QVector<int>>;

/// Puts the cells of the patient with the index \p patient.
using PatientCells = std::function<void(int patient, RowCells &cells)>;

/// A remark to the right of the patients' cells, in ascending order.
struct Note {
    int row;
    int column;
    const char *text;
};
using Notes = QVector<Note>;

/// Texts of a row from column 1 on; an empty one leaves its cell empty.
using Headings = QStringList;

/// A sheet with the rows \p headings at its top and \p patientCount patients below them.
CellSheet patientSheet(const QString &name, const QVector<Headings> &headings, int patientCount,
                       const PatientCells &patientCells, const Notes &notes = {});

/// A sheet that compares each patient's numbers in \p table with that of one method or pair, the
/// reference. Column 1 has the identifier, column 2 the number of the reference; from column 3 on
/// each other method or pair has 1 if its number is the same and 0 if not; the last column has the
/// share of ones.
CellSheet comparisonSheet(const QString &name, const Headings &headings,
                          const QVector<PatientRecord> &patients, const PatientTable &table,
                          int reference, const Notes &notes);

/// A sheet without identifiers that puts every two different columns of \p table side by side, in
/// either order, from \p firstColumn on and with an empty column after each two. \p labels are
/// those of the table's columns.
CellSheet columnPairSheet(const QString &name, int firstColumn, const QStringList &labels,
                          const PatientTable &table);
