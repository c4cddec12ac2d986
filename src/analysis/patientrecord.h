// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

/// One patient as read from a workbook.
struct PatientRecord {
    /// What idealKvadrant holds where the user has chosen none.
    static constexpr int noIdealKvadrant = -1;

    /// Text of the patient's cell in column 1, blanks at its ends included.
    QString id;
    /// Measured values in mmol/mol, in the order of the row.
    QVector<double> values;
    /// The kvadrant that the user chose: 1 to 4, or noIdealKvadrant; 0 only while a list is filled.
    int idealKvadrant = 0;
};
Q_DECLARE_TYPEINFO(PatientRecord, Q_MOVABLE_TYPE);
