// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/dataworkbook.h"

#include <algorithm>

#include <xlsxcellrange.h>

#include "analysis/methodlabels.h"
#include "settings/cconfig.h"
#include "xlsx/writing/workbookwriter.h"

namespace
{

using Patients = QVector<PatientRecord>;
using Scores = QVector<PatientScoreRecord>;

const QString dataSheet = QStringLiteral("Data");
const QString resultSheet = QStringLiteral("Method result");
const QString graphSheet = QStringLiteral("Graph");

// Patients start in this row of "Data" and in this column of "Method result".
constexpr int firstPatient = 2;
constexpr int firstValueColumn = 2;

// Required as is: the offset cuts as many characters off the front of its label.
QString labelOf(const Method &method)
{
    const auto label = QLatin1String(method.dataWorkbook);
    const quint64 clipped = method.labelHasOffset ? CConfig::instance().skip() : 0;
    return label.mid(int(std::min(clipped, quint64(label.size()))));
}

int largestValueCount(const Patients &patients)
{
    int count = 0;
    for (const PatientRecord &patient : patients) {
        count = std::max(count, int(patient.values.size()));
    }
    return count;
}

/// One row a patient, below the numbers of the values.
SheetRows dataRows(const Patients &patients)
{
    const auto fill = [&patients, count = largestValueCount(patients)](int row, RowCells &cells) {
        if (row < firstPatient) {
            for (int i = 0; i < count; ++i) {
                cells.number(firstValueColumn + i, i + 1);
            }
            return;
        }
        const PatientRecord &patient = patients.at(row - firstPatient);
        cells.text(1, patient.id);
        for (int i = 0; i < patient.values.size(); ++i) {
            cells.number(firstValueColumn + i, patient.values.at(i));
        }
    };
    return {firstPatient - 1 + int(patients.size()), fill};
}

/// A row of "Method result": a method, and where its results stand.
struct ResultRow {
    const Method *method;
    ScoreList values;
    int index;
};

QVector<ResultRow> resultRowList()
{
    QVector<ResultRow> rows;
    for (int i = 0; i < methodCount; ++i) {
        rows.append({&convergenceMethods.at(size_t(i)), &PatientScoreRecord::convergence, i});
    }
    for (int i = 0; i < methodCount; ++i) {
        rows.append({&variabilityMethods.at(size_t(i)), &PatientScoreRecord::variability, i});
    }
    return rows;
}

/// One row a method, below the identifiers.
SheetRows resultRows(const Patients &patients, const Scores &scores)
{
    constexpr int firstMethodRow = 2;
    const QVector<ResultRow> rows = resultRowList();
    const auto fill = [&patients, &scores, rows](int row, RowCells &cells) {
        if (row < firstMethodRow) {
            for (int k = 0; k < patients.size(); ++k) {
                cells.text(firstPatient + k, patients.at(k).id);
            }
            return;
        }
        const ResultRow &result = rows.at(row - firstMethodRow);
        cells.text(1, labelOf(*result.method));
        for (int k = 0; k < scores.size(); ++k) {
            cells.number(firstPatient + k, (scores.at(k).*result.values).at(result.index));
        }
    };
    return {firstMethodRow - 1 + int(rows.size()), fill};
}

void addGraph(WorkbookWriter &workbook, const Patients &patients)
{
    workbook.addChartSheet(graphSheet);
    QXlsx::Chart *chart = workbook.insertChart(2, 2, {1400, 500});
    chart->setChartType(QXlsx::Chart::CT_ScatterChart);
    // Spreadsheet programs call a workbook with a larger chart damaged.
    const int count = std::min(int(patients.size()), WorkbookWriter::largestSeriesCount);
    for (int k = 0; k < count; ++k) {
        const int row = firstPatient + k;
        const int lastColumn = firstValueColumn - 1 + int(patients.at(k).values.size());
        chart->addSeries(
            {row, firstValueColumn, row, std::min(lastColumn, RowCells::largestColumn)},
            workbook.sheet(dataSheet));
    }
}

} // namespace

std::vector<CellSheet> dataSheets(const QVector<PatientRecord> &patients,
                                  const QVector<PatientScoreRecord> &scores)
{
    return {{dataSheet, dataRows(patients)}, {resultSheet, resultRows(patients, scores)}};
}

bool writeDataWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                       const QVector<PatientScoreRecord> &scores)
{
    WorkbookWriter workbook;
    for (const CellSheet &sheet : dataSheets(patients, scores)) {
        workbook.addSheet(sheet);
    }
    addGraph(workbook, patients);
    workbook.save(fileName);
    return true;
}
