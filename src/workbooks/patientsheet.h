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

/// What was found out about each patient: a row of whole numbers, one per method or one per pair of
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

/// A sheet that holds each patient's numbers in the row of \p table against the number of one
/// method or pair, the reference: that number in column 2, from column 3 on for each other one 1
/// where it is the same and 0 where it differs, at last the share of those that are the same.
/// Identifiers are in column 1.
CellSheet comparisonSheet(const QString &name, const Headings &headings,
                          const QVector<PatientRecord> &patients, const PatientTable &table,
                          int reference, const Notes &notes);

/// A sheet without identifiers that lays every two different columns of \p table side by side, in
/// either order, from \p firstColumn on and with an empty column after each two. \p labels are
/// those of the table's columns.
CellSheet columnPairSheet(const QString &name, int firstColumn, const QStringList &labels,
                          const PatientTable &table);
