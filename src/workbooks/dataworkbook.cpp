// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/dataworkbook.h"

#include <algorithm>

#include <xlsxcellrange.h>

#include "analysis/methodlabels.h"
#include "settings/cconfig.h"
#include "workbooks/workbookorigin.h"
#include "xlsx/writing/workbookwriter.h"

namespace
{

using Patients = QVector<PatientRecord>;
using Scores = QVector<PatientScoreRecord>;

const QString dataSheet = QStringLiteral("Data");
const QString resultSheet = QStringLiteral("Method result");
const QString graphSheet = QStringLiteral("Graph");

// Patients are rows of "Data" and columns of "Method result", from here on.
constexpr int firstPatientPlace = 2;
constexpr int firstDataColumn = 2;
constexpr int firstResultRow = 2;

// Required as is: the offset cuts as many characters off the start of its label.
QString clippedLabel(const Method &method)
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

/// The ordinals of the values, below them one row per patient.
SheetRows dataRows(const Patients &patients)
{
    const auto fill = [&patients, count = largestValueCount(patients)](int row, RowCells &cells) {
        if (row < firstPatientPlace) {
            for (int i = 0; i < count; ++i) {
                cells.number(firstDataColumn + i, i + 1);
            }
            return;
        }
        const PatientRecord &patient = patients.at(row - firstPatientPlace);
        cells.text(1, patient.id);
        for (int i = 0; i < patient.values.size(); ++i) {
            cells.number(firstDataColumn + i, patient.values.at(i));
        }
    };
    return {firstPatientPlace - 1 + int(patients.size()), fill};
}

/// The identifiers, below them one row per method, those of convergence first.
SheetRows resultRows(const Patients &patients, const Scores &scores)
{
    const auto fill = [&patients, &scores](int row, RowCells &cells) {
        if (row < firstResultRow) {
            for (int patient = 0; patient < patients.size(); ++patient) {
                cells.text(firstPatientPlace + patient, patients.at(patient).id);
            }
            return;
        }
        const bool isConvergence = row < firstResultRow + methodCount;
        const int method = (row - firstResultRow) % methodCount;
        const ScoreList list =
            isConvergence ? &PatientScoreRecord::convergence : &PatientScoreRecord::variability;
        const Methods &methods = isConvergence ? convergenceMethods : variabilityMethods;
        cells.text(1, clippedLabel(methods.at(size_t(method))));
        for (int patient = 0; patient < scores.size(); ++patient) {
            cells.number(firstPatientPlace + patient, (scores.at(patient).*list).at(method));
        }
    };
    return {firstResultRow - 1 + 2 * methodCount, fill};
}

void addGraph(WorkbookWriter &workbook, const Patients &patients)
{
    workbook.addChartSheet(graphSheet);
    QXlsx::Chart *chart = workbook.insertChart(2, 2, {1400, 500});
    chart->setChartType(QXlsx::Chart::CT_ScatterChart);
    // Spreadsheet programs call a workbook with a larger chart damaged.
    const int count = std::min(int(patients.size()), WorkbookWriter::largestSeriesCount);
    for (int patient = 0; patient < count; ++patient) {
        const int row = firstPatientPlace + patient;
        const int lastColumn = firstDataColumn - 1 + int(patients.at(patient).values.size());
        chart->addSeries({row, firstDataColumn, row, std::min(lastColumn, RowCells::largestColumn)},
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
    nameOrigin(workbook);
    workbook.save(fileName);
    return true;
}
