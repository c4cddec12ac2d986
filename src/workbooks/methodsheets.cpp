// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/methodsheets.h"

#include <array>

#include "analysis/convergence.h"
#include "analysis/methodlabels.h"
#include "analysis/variability.h"
#include "workbooks/analysistexts.h"

namespace
{

const QString flagName = QStringLiteral("Convergence&Variability");

constexpr const Method *medianDifference = &convergenceMethods[MedianDifference];
constexpr const Method *linearRegression = &convergenceMethods[LinearLeastSquares];
constexpr const Method *exponential = &convergenceMethods[ExponentialFit];
constexpr const Method *standardDeviation = &variabilityMethods[StandardDeviation];
constexpr const Method *differenceDeviation =
    &variabilityMethods[DifferenceStandardDeviationOffset];
constexpr const Method *interquartile = &variabilityMethods[InterquartileRange];

/// Names and texts of the sheets about one family of methods.
struct Family {
    const char *title;
    // "%1" is the number of the reference method, from 1.
    const char *compareName;
    const char *anovaName;
    std::array<const Method *, methodCount> methods;
    // By reference method: the headings of the two columns compared with it.
    std::array<std::array<const Method *, methodCount - 1>, methodCount> headings;
};

// Arrays that count their own entries: one that is too short does not compile.
constexpr Family convergenceFamily = {
    "Convergence",
    "Covergence compare %1", // Required as is.
    "ConvAnova",
    std::array{medianDifference, linearRegression, exponential},
    std::array{std::array{linearRegression, exponential}, std::array{medianDifference, exponential},
               std::array{medianDifference, linearRegression}},
};

// Required as is: the second and the third pair of headings do not name the columns below them.
constexpr Family variabilityFamily = {
    "Variability",
    "Variability compare %1",
    "VarAnova",
    std::array{standardDeviation, differenceDeviation, interquartile},
    std::array{std::array{differenceDeviation, interquartile},
               std::array{medianDifference, interquartile},
               std::array{differenceDeviation, standardDeviation}},
};

const Notes flagNotes = {
    {5, 11, AnalysisTexts::information},
    {6, 11, "1 - worse than median, 0 better than median"},
};

const Notes methodNotes = {
    {5, 7, AnalysisTexts::information},
    {6, 7, AnalysisTexts::patientColumn},
    {7, 7, AnalysisTexts::referenceColumn},
    {7, 8, "1 - worse than median or equal, 0 - better than median"},
    {8, 7, "3, 4 column: Compared to second column"},
    {8, 8, AnalysisTexts::sameOrDifferent},
};

template<size_t count>
QStringList labelsOf(const std::array<const Method *, count> &methods, const QString &skipText)
{
    QStringList labels;
    for (const Method *method : methods) {
        labels.append(AnalysisTexts::methodLabel(*method, skipText));
    }
    return labels;
}

// The two families are side by side, with an empty column between them.
CellSheet flagSheet(const QVector<PatientRecord> &patients,
                    const PatientTable &convergenceWorseTable,
                    const PatientTable &variabilityWorseTable, const QString &skipText)
{
    Headings titles;
    Headings headings;
    for (const Family &family : {convergenceFamily, variabilityFamily}) {
        titles << QString::fromLatin1(family.title) << QVector<QString>(methodCount + 1).toList();
        headings << AnalysisTexts::patientId << labelsOf(family.methods, skipText) << QString();
    }
    const std::array tables = {convergenceWorseTable, variabilityWorseTable};
    const auto patientCells = [&patients, tables](int patient, RowCells &cells) {
        int column = 1;
        for (const PatientTable &table : tables) {
            cells.text(column++, patients.at(patient).id);
            for (const int flag : table.at(patient)) {
                cells.number(column++, flag);
            }
            ++column;
        }
    };
    return patientSheet(flagName, {titles, headings}, int(patients.size()), patientCells,
                        flagNotes);
}

void addFamilySheets(std::vector<CellSheet> &sheets, const QVector<PatientRecord> &patients,
                     const PatientTable &worseTable, const Family &family, const QString &skipText)
{
    const QStringList labels = labelsOf(family.methods, skipText);
    for (int reference = 0; reference < methodCount; ++reference) {
        const Headings headings = QStringList(AnalysisTexts::patientId)
            << AnalysisTexts::reference + labels.at(reference)
            << labelsOf(family.headings.at(size_t(reference)), skipText) << AnalysisTexts::share;
        sheets.push_back(comparisonSheet(QString::fromLatin1(family.compareName).arg(reference + 1),
                                         headings, patients, worseTable, reference, methodNotes));
    }
    sheets.push_back(columnPairSheet(QLatin1String(family.anovaName), 1, labels, worseTable));
}

} // namespace

void addMethodSheets(std::vector<CellSheet> &sheets, const QVector<PatientRecord> &patients,
                     const PatientTable &convergenceWorseTable,
                     const PatientTable &variabilityWorseTable, const QString &skipText)
{
    sheets.push_back(flagSheet(patients, convergenceWorseTable, variabilityWorseTable, skipText));
    addFamilySheets(sheets, patients, convergenceWorseTable, convergenceFamily, skipText);
    addFamilySheets(sheets, patients, variabilityWorseTable, variabilityFamily, skipText);
}
