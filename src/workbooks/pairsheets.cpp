// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/pairsheets.h"

#include "analysis/kvadrants.h"
#include "workbooks/analysistexts.h"

namespace
{

// "%1" is the number of the reference pair, from 1.
const QString medianName = QStringLiteral("Median");
const QString compareName = QStringLiteral("Compare %1");
const QString anovaName = QStringLiteral("AnovaMedian");

const QString compareCorner = QStringLiteral("Patient ID/Methods");

// Required as is: among the compared pairs, this one has no blank before its plus sign.
constexpr int closedUpPair = 5;

constexpr int firstAnovaColumn = 2;

const Notes medianNotes = {
    {5, 12, AnalysisTexts::information},
    {6, 12, "Numbers in columns 2 and higher = kvadrants"},
};

const Notes pairNotes = {
    {5, 13, AnalysisTexts::information},
    {6, 13, AnalysisTexts::patientColumn},
    {7, 13, AnalysisTexts::referenceColumn},
    {7, 14, "Number in second column = kvadrants"},
    {8, 13, "Rest columns except last = compared to reference"},
    {8, 14, AnalysisTexts::sameOrDifferent},
};

CellSheet medianSheet(const QVector<PatientRecord> &patients, const PatientTable &kvadrantTable,
                      const QStringList &labels)
{
    const auto patientCells = [&patients, kvadrantTable](int patient, RowCells &cells) {
        cells.text(1, patients.at(patient).id);
        for (int pair = 0; pair < pairCount; ++pair) {
            const int kvadrant = kvadrantTable.at(patient).at(pair);
            if (kvadrant != noKvadrant) {
                cells.number(pair + 2, kvadrant);
            }
        }
    };
    const Headings headings = QStringList(AnalysisTexts::patientId) + labels;
    return patientSheet(medianName, {headings}, int(patients.size()), patientCells, medianNotes);
}

CellSheet compareSheet(int reference, const QVector<PatientRecord> &patients,
                       const PatientTable &kvadrantTable, const QStringList &labels)
{
    QStringList others = labels;
    others[closedUpPair].replace(QLatin1String(" + "), QLatin1String("+ "));
    others.removeAt(reference);
    const Headings headings = QStringList(compareCorner)
        << AnalysisTexts::reference + labels.at(reference) << others << AnalysisTexts::share;
    return comparisonSheet(compareName.arg(reference + 1), headings, patients, kvadrantTable,
                           reference, pairNotes);
}

} // namespace

void addPairSheets(std::vector<CellSheet> &sheets, const QVector<PatientRecord> &patients,
                   const PatientTable &kvadrantTable, const QStringList &labels)
{
    sheets.push_back(medianSheet(patients, kvadrantTable, labels));
    for (int reference = 0; reference < pairCount; ++reference) {
        sheets.push_back(compareSheet(reference, patients, kvadrantTable, labels));
    }
    sheets.push_back(columnPairSheet(anovaName, firstAnovaColumn, labels, kvadrantTable));
}
