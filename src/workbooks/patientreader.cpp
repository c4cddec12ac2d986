// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/patientreader.h"

#include <QRegularExpression>
#include <QVariant>
#include <xlsxcellreference.h>
#include <xlsxdocument.h>

#include "analysis/patientanalysis.h"
#include "xlsx/reading/workbookloader.h"

namespace
{

constexpr int firstPatientRow = 2;
constexpr int identifierColumn = 1;
constexpr int firstValueColumn = 2;
// Reserved for each patient: one allocation per row, because few have more measurements.
constexpr int expectedValues = 1000;

// What spreadsheets store for a result that is an error, such as "#DIV/0!".
bool isErrorValue(const QString &text)
{
    static const QRegularExpression error(QStringLiteral("^#(N/A|GETTING_DATA|[A-Z]+(/0)?[!?])$"));
    return error.match(text).hasMatch();
}

RowEnd::Kind kindOf(const QString &text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    return text.trimmed().isEmpty() ? RowEnd::Empty
        : isNumber                  ? RowEnd::Zero
        : isErrorValue(text)        ? RowEnd::Error
                                    : RowEnd::Text;
}

RowEnd::Kind kindOf(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return kindOf(value.toString());
    case QMetaType::UnknownType:
        return RowEnd::Empty;
    case QMetaType::Bool:
        return RowEnd::False;
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return RowEnd::Date;
    default:
        return RowEnd::Zero;
    }
}

QVector<ShortRow> readShortRows(const QXlsx::Document &document,
                                const QVector<PatientRecord> &patients)
{
    QVector<ShortRow> rows;
    for (const int patient : patientsWithTooFewValues(patients)) {
        rows.append(
            {patient, readRowEnd(document, patient, int(patients.at(patient).values.size()))});
    }
    return rows;
}

} // namespace

LoadedPatients loadPatients(const QString &path)
{
    const LoadedWorkbook workbook = loadWorkbook(path, identifierColumn);
    if (!workbook.document) {
        return {{}, workbook.error};
    }
    const QVector<PatientRecord> patients = readPatients(*workbook.document);
    return {patients, LoadError(), readShortRows(*workbook.document, patients)};
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

RowEnd readRowEnd(const QXlsx::Document &document, int patient, int count)
{
    const int row = workbookRow(patient);
    const int column = firstValueColumn + count;
    const QVariant value = document.read(row, column);
    const RowEnd::Kind kind = kindOf(value);
    const bool hasText = kind == RowEnd::Error || kind == RowEnd::Text;
    return {kind, QXlsx::CellReference(row, column).toString(),
            hasText ? value.toString() : QString()};
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
