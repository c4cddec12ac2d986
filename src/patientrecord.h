#pragma once

#include <QString>
#include <QVector>

/// One patient as read from a workbook.
struct PatientRecord {
    /// The mark of a patient for whom the user has chosen no ideal kvadrant.
    static constexpr int noIdealKvadrant = -1;

    /// Text of the patient's cell in column 1, blanks at its ends included.
    QString id;
    /// Measured values in mmol/mol, in the order of the row.
    QVector<double> values;
    /// The user's mark: 1 to 4, or noIdealKvadrant; 0 only while a list is being filled.
    int idealKvadrant = 0;
};
Q_DECLARE_TYPEINFO(PatientRecord, Q_MOVABLE_TYPE);
