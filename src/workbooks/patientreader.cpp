// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/patientreader.h"

#include <QVariant>
#include <xlsxdocument.h>

#include "xlsx/reading/workbookloader.h"

namespace
{

constexpr int firstPatientRow = 2;
constexpr int identifierColumn = 1;
constexpr int firstValueColumn = 2;
// Reserved for each patient: one allocation per row, as hardly anybody has more measurements.
constexpr int expectedValues = 1000;

} // namespace

LoadedPatients loadPatients(const QString &path)
{
    const LoadedWorkbook workbook = loadWorkbook(path, identifierColumn);
    if (!workbook.document) {
        return {{}, workbook.error};
    }
    return {readPatients(*workbook.document), LoadError()};
}

int readPatientCount(const QXlsx::Document &document)
{
    int row = firstPatientRow;
    while (!document.read(row, identifierColumn).toString().trimmed().isEmpty()) {
        ++row;
    }
    return row - firstPatientRow;
}

QVector<double> readPatientValues(const QXlsx::Document &document, int patient)
{
    QVector<double> values;
    values.reserve(expectedValues);
    const int row = workbookRow(patient);
    // NaN differs from 0 and does not end the row.
    for (;;) {
        const double value = document.read(row, firstValueColumn + int(values.size())).toDouble();
        if (value == 0.0) {
            break;
        }
        values.append(value);
    }
    values.squeeze();
    return values;
}

QString readPatientId(const QXlsx::Document &document, int row)
{
    return document.read(row, identifierColumn).toString();
}

QVector<PatientRecord> readPatients(const QXlsx::Document &document)
{
    const int count = readPatientCount(document);
    QVector<PatientRecord> patients;
    patients.reserve(count);
    for (int i = 0; i < count; ++i) {
        patients.append({readPatientId(document, workbookRow(i)), readPatientValues(document, i),
                         PatientRecord::noIdealKvadrant});
    }
    return patients;
}

int workbookRow(int patient)
{
    return patient + firstPatientRow;
}
