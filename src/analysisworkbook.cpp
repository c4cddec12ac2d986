#include "analysisworkbook.h"

#include <array>

#include "cconfig.h"
#include "convergence.h"
#include "kvadrants.h"
#include "methods.h"
#include "variability.h"
#include "xlsx/workbookwriter.h"

namespace
{

using Patients = QVector<PatientRecord>;
using Scores = QVector<PatientScoreRecord>;
/// One row a patient, and in it one whole number a method or a pair of methods.
using Marks = QVector<QVector<int>>;

constexpr int firstPatientRow = 2;

// The sheets in their order; "%1" is the number of the reference, from 1.
constexpr const char *medianSheet = "Median";
constexpr const char *pairCompareSheets = "Compare %1";
constexpr const char *pairAnovaSheet = "AnovaMedian";
constexpr const char *flagSheet = "Convergence&Variability";
constexpr const char *convergenceCompareSheets = "Covergence compare %1";
constexpr const char *convergenceAnovaSheet = "ConvAnova";
constexpr const char *variabilityCompareSheets = "Variability compare %1";
constexpr const char *variabilityAnovaSheet = "VarAnova";
constexpr const char *idealSheet = "IdealCompare";

// As a compared pair, this one goes without the blank before its plus sign.
constexpr int closedUpPair = 5;

using MethodList = std::array<const Method *, methodCount>;
constexpr const Method *medianDifference = &convergenceMethods[MedianDifference];
constexpr const Method *linearRegression = &convergenceMethods[LinearLeastSquares];
constexpr const Method *exponential = &convergenceMethods[ExponentialFit];
constexpr const Method *standardDeviation = &variabilityMethods[StandardDeviation];
constexpr const Method *differenceDeviation =
    &variabilityMethods[DifferenceStandardDeviationOffset];
constexpr const Method *interquartile = &variabilityMethods[InterquartileRange];

/// What the sheets about one family of methods are called and say.
struct Family {
    const char *title;
    const char *compareSheets;
    const char *anovaSheet;
    MethodList methods;
    // By reference method: what stands above the two columns compared with it.
    std::array<std::array<const Method *, methodCount - 1>, methodCount> headings;
};

constexpr Family convergenceFamily = {
    "Convergence",
    convergenceCompareSheets,
    convergenceAnovaSheet,
    {medianDifference, linearRegression, exponential},
    {{{linearRegression, exponential},
      {medianDifference, exponential},
      {medianDifference, linearRegression}}},
};

// The second and the third pair of headings do not name the columns beneath; readers rely on them.
constexpr Family variabilityFamily = {
    "Variability",
    variabilityCompareSheets,
    variabilityAnovaSheet,
    {standardDeviation, differenceDeviation, interquartile},
    {{{differenceDeviation, interquartile},
      {medianDifference, interquartile},
      {differenceDeviation, standardDeviation}}},
};

// Remarks that stand on several sheets.
constexpr const char *information = "Information";
constexpr const char *patientColumn = "First column: Patient ID";
constexpr const char *referenceColumn = "Second column: Reference value";
constexpr const char *sameOrDifferent = "1 - same, 0 - different";

/// A remark beside the data.
struct Note {
    int row;
    int column;
    const char *text;
};

constexpr std::array<Note, 2> medianNotes = {{
    {5, 12, information},
    {6, 12, "Numbers in columns 2 and higher = kvadrants"},
}};

constexpr std::array<Note, 2> flagNotes = {{
    {5, 11, information},
    {6, 11, "1 - worse than median, 0 better than median"},
}};

constexpr std::array<Note, 6> pairComparisonNotes = {{
    {5, 13, information},
    {6, 13, patientColumn},
    {7, 13, referenceColumn},
    {7, 14, "Number in second column = kvadrants"},
    {8, 13, "Rest columns except last = compared to reference"},
    {8, 14, sameOrDifferent},
}};

constexpr std::array<Note, 6> methodComparisonNotes = {{
    {5, 7, information},
    {6, 7, patientColumn},
    {7, 7, referenceColumn},
    {7, 8, "1 - worse than median or equal, 0 - better than median"},
    {8, 7, "3, 4 column: Compared to second column"},
    {8, 8, sameOrDifferent},
}};

const QString patientHeading = QStringLiteral("Patient ID");
const QString shareHeading = QStringLiteral("% same as reference");

/// The patients, and the workbook that grows sheet by sheet.
struct Analysis {
    const Patients &patients;
    WorkbookWriter cells;
    QString skipText;
};

/// One of the labels of \p method, with the offset behind it where it belongs there.
QString labelOf(const Analysis &analysis, const Method &method, const char *Method::*place)
{
    const QString text = QLatin1String(method.*place);
    return method.labelHasOffset ? text + analysis.skipText : text;
}

template<size_t count>
QStringList labelsOf(const Analysis &analysis, const std::array<const Method *, count> &methods)
{
    QStringList labels;
    for (const Method *method : methods) {
        labels.append(labelOf(analysis, *method, &Method::analysisWorkbook));
    }
    return labels;
}

/// The labels of the pairs, by pair index: 3 * convergence method + variability method.
QStringList pairLabels(const Analysis &analysis)
{
    QStringList labels;
    for (const Method &convergence : convergenceMethods) {
        for (const Method &variability : variabilityMethods) {
            labels.append(labelOf(analysis, convergence, &Method::analysisPair)
                          + QLatin1String(" + ")
                          + labelOf(analysis, variability, &Method::analysisPair));
        }
    }
    return labels;
}

template<size_t count>
void writeNotes(WorkbookWriter &cells, const std::array<Note, count> &notes)
{
    for (const Note &note : notes) {
        cells.writeText(note.row, note.column, QLatin1String(note.text));
    }
}

void writeRowOfTexts(WorkbookWriter &cells, int row, int firstColumn, const QStringList &texts)
{
    for (int i = 0; i < texts.size(); ++i) {
        cells.writeText(row, firstColumn + i, texts.at(i));
    }
}

/// The kvadrant of each patient under each pair of methods.
Marks kvadrantTable(const Scores &scores, const PatientScoreRecord &medianCenter)
{
    Marks table;
    table.reserve(scores.size());
    for (const PatientScoreRecord &score : scores) {
        const auto kvadrants = pairKvadrants(score, medianCenter);
        table.append(QVector<int>(kvadrants.begin(), kvadrants.end()));
    }
    return table;
}

/// The flags of each patient for the methods of \p list.
Marks worseTable(const Scores &scores, const PatientScoreRecord &medianCenter, ScoreList list)
{
    Marks table;
    table.reserve(scores.size());
    for (const PatientScoreRecord &score : scores) {
        const auto flags = worseFlags(score, medianCenter, list);
        table.append(QVector<int>(flags.begin(), flags.end()));
    }
    return table;
}

void writeMedianSheet(Analysis &analysis, const Marks &kvadrants)
{
    WorkbookWriter &cells = analysis.cells;
    cells.addSheet(QLatin1String(medianSheet));
    cells.writeText(1, 1, patientHeading);
    writeRowOfTexts(cells, 1, 2, pairLabels(analysis));
    for (int k = 0; k < kvadrants.size(); ++k) {
        const int row = firstPatientRow + k;
        cells.writeText(row, 1, analysis.patients.at(k).id);
        for (int pair = 0; pair < pairCount; ++pair) {
            const int kvadrant = kvadrants.at(k).at(pair);
            if (kvadrant != noKvadrant) {
                cells.writeNumber(row, pair + 2, kvadrant);
            }
        }
    }
    writeNotes(cells, medianNotes);
}

/// A sheet that compares one column of marks with all others of its table.
struct Comparison {
    QString sheet;
    QString corner;
    QString referenceLabel;
    QStringList headings;
};

// The marks of one patient: the reference, 1 for each of the others that equals it, their share.
void writeAgreement(WorkbookWriter &cells, int row, const QVector<int> &marks, int reference)
{
    int column = 2;
    int same = 0;
    cells.writeNumber(row, column++, marks.at(reference));
    for (int compared = 0; compared < marks.size(); ++compared) {
        if (compared != reference) {
            const int agrees = marks.at(compared) == marks.at(reference) ? 1 : 0;
            cells.writeNumber(row, column++, agrees);
            same += agrees;
        }
    }
    cells.writeNumber(row, column, double(same) / (marks.size() - 1));
}

void writeComparison(Analysis &analysis, const Comparison &comparison, const Marks &marks,
                     int reference)
{
    WorkbookWriter &cells = analysis.cells;
    cells.addSheet(comparison.sheet);
    cells.writeText(1, 1, comparison.corner);
    cells.writeText(1, 2, QLatin1String("Reference: ") + comparison.referenceLabel);
    writeRowOfTexts(cells, 1, 3, comparison.headings);
    cells.writeText(1, 3 + comparison.headings.size(), shareHeading);
    for (int k = 0; k < marks.size(); ++k) {
        cells.writeText(firstPatientRow + k, 1, analysis.patients.at(k).id);
        writeAgreement(cells, firstPatientRow + k, marks.at(k), reference);
    }
}

void writePairComparisons(Analysis &analysis, const Marks &kvadrants)
{
    const QStringList labels = pairLabels(analysis);
    QStringList headings = labels;
    headings[closedUpPair].replace(QLatin1String(" + "), QLatin1String("+ "));
    for (int reference = 0; reference < pairCount; ++reference) {
        QStringList others = headings;
        others.removeAt(reference);
        writeComparison(analysis,
                        {QString::fromLatin1(pairCompareSheets).arg(reference + 1),
                         QStringLiteral("Patient ID/Methods"), labels.at(reference), others},
                        kvadrants, reference);
        writeNotes(analysis.cells, pairComparisonNotes);
    }
}

void writeMethodComparisons(Analysis &analysis, const Family &family, const Marks &flags)
{
    const QStringList labels = labelsOf(analysis, family.methods);
    for (int reference = 0; reference < methodCount; ++reference) {
        writeComparison(analysis,
                        {QString::fromLatin1(family.compareSheets).arg(reference + 1),
                         patientHeading, labels.at(reference),
                         labelsOf(analysis, family.headings.at(size_t(reference)))},
                        flags, reference);
        writeNotes(analysis.cells, methodComparisonNotes);
    }
}

/// All pairs of two different numbers below \p count, in either order.
QVector<QPair<int, int>> orderedPairs(int count)
{
    QVector<QPair<int, int>> pairs;
    for (int first = 0; first < count; ++first) {
        for (int second = 0; second < count; ++second) {
            if (second != first) {
                pairs.append({first, second});
            }
        }
    }
    return pairs;
}

/// Every ordered pair of two different columns of marks, side by side with a gap behind each pair.
void writeColumnPairs(WorkbookWriter &cells, const QString &sheet, int firstColumn,
                      const QStringList &labels, const Marks &marks)
{
    constexpr int step = 3;
    cells.addSheet(sheet);
    const QVector<QPair<int, int>> pairs = orderedPairs(labels.size());
    int column = firstColumn;
    for (const auto &[left, right] : pairs) {
        writeRowOfTexts(cells, 1, column, {labels.at(left), labels.at(right)});
        column += step;
    }
    // Row by row, as the library keeps its cells: far quicker than one column after the other.
    for (int k = 0; k < marks.size(); ++k) {
        column = firstColumn;
        for (const auto &[left, right] : pairs) {
            cells.writeNumber(firstPatientRow + k, column, marks.at(k).at(left));
            cells.writeNumber(firstPatientRow + k, column + 1, marks.at(k).at(right));
            column += step;
        }
    }
}

void writeFlagColumns(Analysis &analysis, int column, const Family &family, const Marks &flags)
{
    WorkbookWriter &cells = analysis.cells;
    constexpr int firstRow = 3;
    cells.writeText(1, column, QLatin1String(family.title));
    cells.writeText(2, column, patientHeading);
    writeRowOfTexts(cells, 2, column + 1, labelsOf(analysis, family.methods));
    for (int k = 0; k < flags.size(); ++k) {
        cells.writeText(firstRow + k, column, analysis.patients.at(k).id);
        for (int method = 0; method < methodCount; ++method) {
            cells.writeNumber(firstRow + k, column + 1 + method, flags.at(k).at(method));
        }
    }
}

void writeFlagSheet(Analysis &analysis, const Marks &convergenceFlags,
                    const Marks &variabilityFlags)
{
    analysis.cells.addSheet(QLatin1String(flagSheet));
    writeFlagColumns(analysis, 1, convergenceFamily, convergenceFlags);
    writeFlagColumns(analysis, 6, variabilityFamily, variabilityFlags);
    writeNotes(analysis.cells, flagNotes);
}

void writeAnovaSheet(Analysis &analysis, const Family &family, const Marks &flags)
{
    writeColumnPairs(analysis.cells, QLatin1String(family.anovaSheet), 1,
                     labelsOf(analysis, family.methods), flags);
}

void writeIdealSheet(Analysis &analysis, const Marks &kvadrants)
{
    WorkbookWriter &cells = analysis.cells;
    cells.addSheet(QLatin1String(idealSheet));
    writeRowOfTexts(cells, 1, 1, {patientHeading, QStringLiteral("Ideal kvadrant")});
    // The share stands in the column of the last pair, and counts it all the same.
    constexpr int firstColumn = 3;
    constexpr int shareColumn = firstColumn + pairCount - 1;
    writeRowOfTexts(cells, 1, firstColumn, pairLabels(analysis));
    cells.writeText(1, shareColumn, shareHeading);
    for (int k = 0; k < kvadrants.size(); ++k) {
        const int ideal = analysis.patients.at(k).idealKvadrant;
        const int row = firstPatientRow + k;
        int hits = 0;
        cells.writeText(row, 1, analysis.patients.at(k).id);
        cells.writeNumber(row, 2, ideal);
        for (int pair = 0; pair < pairCount; ++pair) {
            // The mark of a patient without an ideal equals no kvadrant.
            const bool hit = ideal == kvadrants.at(k).at(pair);
            hits += hit ? 1 : 0;
            cells.writeNumber(row, firstColumn + pair, hit ? 1 : 0);
        }
        cells.writeNumber(row, shareColumn, double(hits) / pairCount);
    }
}

} // namespace

void writeAnalysisWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                           const QVector<PatientScoreRecord> &scores,
                           const PatientScoreRecord & /*averageCenter*/,
                           const PatientScoreRecord &medianCenter)
{
    const Marks kvadrants = kvadrantTable(scores, medianCenter);
    const Marks convergenceFlags =
        worseTable(scores, medianCenter, &PatientScoreRecord::convergence);
    const Marks variabilityFlags =
        worseTable(scores, medianCenter, &PatientScoreRecord::variability);

    Analysis analysis{patients, {}, QString::number(CConfig::instance().skip())};
    writeMedianSheet(analysis, kvadrants);
    writePairComparisons(analysis, kvadrants);
    writeColumnPairs(analysis.cells, QLatin1String(pairAnovaSheet), 2, pairLabels(analysis),
                     kvadrants);
    writeFlagSheet(analysis, convergenceFlags, variabilityFlags);
    writeMethodComparisons(analysis, convergenceFamily, convergenceFlags);
    writeAnovaSheet(analysis, convergenceFamily, convergenceFlags);
    writeMethodComparisons(analysis, variabilityFamily, variabilityFlags);
    writeAnovaSheet(analysis, variabilityFamily, variabilityFlags);
    writeIdealSheet(analysis, kvadrants);
    analysis.cells.save(fileName);
}
