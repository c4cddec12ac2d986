#include "dataworkbook.h"

#include <algorithm>

#include <xlsxcellrange.h>

#include "cconfig.h"
#include "methods.h"
#include "xlsx/workbookwriter.h"

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

// The offset cuts as many characters off the front of its label.
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
        count = std::max(count, patient.values.size());
    }
    return count;
}

void writeData(WorkbookWriter &cells, const Patients &patients)
{
    cells.addSheet(dataSheet);
    const int count = largestValueCount(patients);
    for (int i = 0; i < count; ++i) {
        cells.writeNumber(1, firstValueColumn + i, i + 1);
    }
    for (int k = 0; k < patients.size(); ++k) {
        const PatientRecord &patient = patients.at(k);
        cells.writeText(firstPatient + k, 1, patient.id);
        for (int i = 0; i < patient.values.size(); ++i) {
            cells.writeNumber(firstPatient + k, firstValueColumn + i, patient.values.at(i));
        }
    }
}

/// One row a method, from \p row on.
void writeMethodRows(WorkbookWriter &cells, int row, const Methods &methods, const Scores &scores,
                     ScoreList values)
{
    for (int method = 0; method < methodCount; ++method) {
        cells.writeText(row + method, 1, labelOf(methods.at(size_t(method))));
        for (int k = 0; k < scores.size(); ++k) {
            cells.writeNumber(row + method, firstPatient + k, (scores.at(k).*values).at(method));
        }
    }
}

void writeResults(WorkbookWriter &cells, const Patients &patients, const Scores &scores)
{
    cells.addSheet(resultSheet);
    for (int k = 0; k < patients.size(); ++k) {
        cells.writeText(1, firstPatient + k, patients.at(k).id);
    }
    writeMethodRows(cells, 2, convergenceMethods, scores, &PatientScoreRecord::convergence);
    writeMethodRows(cells, 2 + methodCount, variabilityMethods, scores,
                    &PatientScoreRecord::variability);
}

void writeGraph(WorkbookWriter &cells, const Patients &patients)
{
    cells.addSheet(graphSheet);
    QXlsx::Chart *chart = cells.insertChart(2, 2, {1400, 500});
    chart->setChartType(QXlsx::Chart::CT_ScatterChart);
    // Spreadsheet programs call a workbook with a larger chart damaged.
    const int count = std::min(patients.size(), WorkbookWriter::largestSeriesCount);
    for (int k = 0; k < count; ++k) {
        const int row = firstPatient + k;
        const int lastColumn = firstValueColumn - 1 + patients.at(k).values.size();
        chart->addSeries(
            {row, firstValueColumn, row, std::min(lastColumn, WorkbookWriter::largestColumn)},
            cells.sheet(dataSheet));
    }
}

} // namespace

bool writeDataWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                       const QVector<PatientScoreRecord> &scores)
{
    WorkbookWriter cells;
    writeData(cells, patients);
    writeResults(cells, patients, scores);
    writeGraph(cells, patients);
    cells.save(fileName);
    return true;
}
