// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/analysisworkbook.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>

#include <QMap>

#include "analysis/convergence.h"
#include "analysis/kvadrants.h"
#include "analysis/methodlabels.h"
#include "analysis/variability.h"
#include "settings/cconfig.h"
#include "xlsx/writing/workbookwriter.h"

namespace
{

using Scores = QVector<PatientScoreRecord>;

/// One row a patient, and in it one whole number a method or a pair of methods.
class Marks
{
public:
    explicit Marks(int columns) : m_columns(columns) { }

    template<size_t count>
    void append(const std::array<int, count> &row)
    {
        std::copy(row.begin(), row.end(), std::back_inserter(m_numbers));
    }

    int columns() const { return m_columns; }
    int at(int patient, int column) const { return m_numbers.at(patient * m_columns + column); }

    template<size_t count>
    std::array<int, count> row(int patient) const
    {
        std::array<int, count> row;
        const auto first = static_cast<std::ptrdiff_t>(patient) * m_columns;
        std::copy_n(m_numbers.begin() + first, count, row.begin());
        return row;
    }

private:
    int m_columns;
    QVector<int> m_numbers;
};

constexpr int firstPatientRow = 2;

// The sheets in their order; "%1" is the number of the reference, from 1.
constexpr const char *medianSheet = "Median";
constexpr const char *pairCompareSheets = "Compare %1";
constexpr const char *pairAnovaSheet = "AnovaMedian";
constexpr const char *flagSheet = "Convergence&Variability";
constexpr const char *convergenceCompareSheets = "Covergence compare %1"; // Required as is.
constexpr const char *convergenceAnovaSheet = "ConvAnova";
constexpr const char *variabilityCompareSheets = "Variability compare %1";
constexpr const char *variabilityAnovaSheet = "VarAnova";
constexpr const char *idealSheet = "IdealCompare";

// Required as is: as a compared pair, this one goes without the blank before its plus sign.
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

// Arrays that count their own entries: one that is too short for its place does not compile.
constexpr Family convergenceFamily = {
    "Convergence",
    convergenceCompareSheets,
    convergenceAnovaSheet,
    std::array{medianDifference, linearRegression, exponential},
    std::array{std::array{linearRegression, exponential}, std::array{medianDifference, exponential},
               std::array{medianDifference, linearRegression}},
};

// Required as is: the second and the third pair of headings do not name the columns beneath.
constexpr Family variabilityFamily = {
    "Variability",
    variabilityCompareSheets,
    variabilityAnovaSheet,
    std::array{standardDeviation, differenceDeviation, interquartile},
    std::array{std::array{differenceDeviation, interquartile},
               std::array{medianDifference, interquartile},
               std::array{differenceDeviation, standardDeviation}},
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

constexpr std::array medianNotes = {
    Note{5, 12, information},
    Note{6, 12, "Numbers in columns 2 and higher = kvadrants"},
};

constexpr std::array flagNotes = {
    Note{5, 11, information},
    Note{6, 11, "1 - worse than median, 0 better than median"},
};

constexpr std::array pairComparisonNotes = {
    Note{5, 13, information},
    Note{6, 13, patientColumn},
    Note{7, 13, referenceColumn},
    Note{7, 14, "Number in second column = kvadrants"},
    Note{8, 13, "Rest columns except last = compared to reference"},
    Note{8, 14, sameOrDifferent},
};

constexpr std::array methodComparisonNotes = {
    Note{5, 7, information},
    Note{6, 7, patientColumn},
    Note{7, 7, referenceColumn},
    Note{7, 8, "1 - worse than median or equal, 0 - better than median"},
    Note{8, 7, "3, 4 column: Compared to second column"},
    Note{8, 8, sameOrDifferent},
};

const QString patientHeading = QStringLiteral("Patient ID");
const QString shareHeading = QStringLiteral("% same as reference");

/// The patients, and the sheets as far as they are described.
struct Analysis {
    const QVector<PatientRecord> &patients;
    QString skipText;
    std::vector<CellSheet> sheets;
};

/// What stands on a sheet whoever the patients are, by row and from left to right.
using FixedTexts = QMap<int, QVector<QPair<int, QString>>>;

/// Gives the cells of the patient with this index.
using PatientCells = std::function<void(int patient, RowCells &cells)>;

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

void putTexts(FixedTexts &texts, int row, int firstColumn, const QStringList &added)
{
    for (int i = 0; i < added.size(); ++i) {
        texts[row].append({firstColumn + i, added.at(i)});
    }
}

template<size_t count>
void putNotes(FixedTexts &texts, const std::array<Note, count> &notes)
{
    for (const Note &note : notes) {
        putTexts(texts, note.row, note.column, {QString::fromLatin1(note.text)});
    }
}

/// Adds a sheet with one row a patient from \p firstRow on. The fixed texts of a patient's row
/// stand to the right of the patient's cells.
void addSheet(Analysis &analysis, const QString &name, const FixedTexts &texts,
              const PatientCells &cellsOf, int firstRow = firstPatientRow)
{
    const int patients = int(analysis.patients.size());
    const int rows = std::max(firstRow + patients - 1, texts.lastKey());
    const auto fill = [texts, cellsOf, firstRow, patients](int row, RowCells &cells) {
        const int patient = row - firstRow;
        if (patient >= 0 && patient < patients) {
            cellsOf(patient, cells);
        }
        const auto found = texts.constFind(row);
        if (found != texts.constEnd()) {
            for (const auto &[column, text] : *found) {
                cells.text(column, text);
            }
        }
    };
    analysis.sheets.push_back({name, {rows, fill}});
}

/// The kvadrant of each patient under each pair of methods.
Marks kvadrantTable(const Scores &scores, const PatientScoreRecord &medianCenter)
{
    Marks table(pairCount);
    for (const PatientScoreRecord &score : scores) {
        table.append(pairKvadrants(score, medianCenter));
    }
    return table;
}

/// The flags of each patient for the methods of \p list.
Marks worseTable(const Scores &scores, const PatientScoreRecord &medianCenter, ScoreList list)
{
    Marks table(methodCount);
    for (const PatientScoreRecord &score : scores) {
        table.append(worseFlags(score, medianCenter, list));
    }
    return table;
}

void addMedianSheet(Analysis &analysis, const Marks &kvadrants)
{
    FixedTexts texts;
    putTexts(texts, 1, 1, {patientHeading});
    putTexts(texts, 1, 2, pairLabels(analysis));
    putNotes(texts, medianNotes);
    const auto cellsOf = [&patients = analysis.patients, kvadrants](int k, RowCells &cells) {
        cells.text(1, patients.at(k).id);
        for (int pair = 0; pair < pairCount; ++pair) {
            const int kvadrant = kvadrants.at(k, pair);
            if (kvadrant != noKvadrant) {
                cells.number(pair + 2, kvadrant);
            }
        }
    };
    addSheet(analysis, QLatin1String(medianSheet), texts, cellsOf);
}

/// A sheet that compares one column of marks with all others of its table.
struct Comparison {
    QString sheet;
    QString corner;
    QString referenceLabel;
    QStringList headings;
};

// The marks of one patient: the reference, 1 for each of the others that equals it, their share.
void putAgreement(RowCells &cells, const Marks &marks, int patient, int reference)
{
    int column = 2;
    int same = 0;
    const int mark = marks.at(patient, reference);
    cells.number(column++, mark);
    for (int compared = 0; compared < marks.columns(); ++compared) {
        if (compared != reference) {
            const int agrees = marks.at(patient, compared) == mark ? 1 : 0;
            cells.number(column++, agrees);
            same += agrees;
        }
    }
    cells.number(column, double(same) / (marks.columns() - 1));
}

template<size_t count>
void addComparison(Analysis &analysis, const Comparison &comparison, const Marks &marks,
                   int reference, const std::array<Note, count> &notes)
{
    FixedTexts texts;
    putTexts(texts, 1, 1,
             {comparison.corner, QLatin1String("Reference: ") + comparison.referenceLabel});
    putTexts(texts, 1, 3, comparison.headings);
    putTexts(texts, 1, 3 + int(comparison.headings.size()), {shareHeading});
    putNotes(texts, notes);
    const auto cellsOf = [&patients = analysis.patients, marks, reference](int k, RowCells &cells) {
        cells.text(1, patients.at(k).id);
        putAgreement(cells, marks, k, reference);
    };
    addSheet(analysis, comparison.sheet, texts, cellsOf);
}

void addPairComparisons(Analysis &analysis, const Marks &kvadrants)
{
    const QStringList labels = pairLabels(analysis);
    QStringList headings = labels;
    headings[closedUpPair].replace(QLatin1String(" + "), QLatin1String("+ "));
    for (int reference = 0; reference < pairCount; ++reference) {
        QStringList others = headings;
        others.removeAt(reference);
        addComparison(analysis,
                      {QString::fromLatin1(pairCompareSheets).arg(reference + 1),
                       QStringLiteral("Patient ID/Methods"), labels.at(reference), others},
                      kvadrants, reference, pairComparisonNotes);
    }
}

void addMethodComparisons(Analysis &analysis, const Family &family, const Marks &flags)
{
    const QStringList labels = labelsOf(analysis, family.methods);
    for (int reference = 0; reference < methodCount; ++reference) {
        addComparison(analysis,
                      {QString::fromLatin1(family.compareSheets).arg(reference + 1), patientHeading,
                       labels.at(reference),
                       labelsOf(analysis, family.headings.at(size_t(reference)))},
                      flags, reference, methodComparisonNotes);
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
void addColumnPairs(Analysis &analysis, const QString &sheet, int firstColumn,
                    const QStringList &labels, const Marks &marks)
{
    constexpr int step = 3;
    const QVector<QPair<int, int>> pairs = orderedPairs(int(labels.size()));
    FixedTexts texts;
    int column = firstColumn;
    for (const auto &[left, right] : pairs) {
        putTexts(texts, 1, column, {labels.at(left), labels.at(right)});
        column += step;
    }
    const auto cellsOf = [pairs, marks, firstColumn](int k, RowCells &cells) {
        int leftColumn = firstColumn;
        for (const auto &[left, right] : pairs) {
            cells.number(leftColumn, marks.at(k, left));
            cells.number(leftColumn + 1, marks.at(k, right));
            leftColumn += step;
        }
    };
    addSheet(analysis, sheet, texts, cellsOf);
}

// On the sheet of flags the two families stand side by side.
constexpr std::array<int, 2> flagColumns = {1, 6};

void putFlagHeadings(FixedTexts &texts, const Analysis &analysis, int column, const Family &family)
{
    putTexts(texts, 1, column, {QString::fromLatin1(family.title)});
    putTexts(texts, 2, column, {patientHeading});
    putTexts(texts, 2, column + 1, labelsOf(analysis, family.methods));
}

void addFlagSheet(Analysis &analysis, const Marks &convergenceFlags, const Marks &variabilityFlags)
{
    constexpr int firstRow = 3;
    FixedTexts texts;
    putFlagHeadings(texts, analysis, flagColumns[0], convergenceFamily);
    putFlagHeadings(texts, analysis, flagColumns[1], variabilityFamily);
    putNotes(texts, flagNotes);
    const std::array<Marks, 2> flags = {convergenceFlags, variabilityFlags};
    const auto cellsOf = [&patients = analysis.patients, flags](int k, RowCells &cells) {
        for (size_t family = 0; family < flags.size(); ++family) {
            cells.text(flagColumns.at(family), patients.at(k).id);
            for (int method = 0; method < methodCount; ++method) {
                cells.number(flagColumns.at(family) + 1 + method, flags.at(family).at(k, method));
            }
        }
    };
    addSheet(analysis, QLatin1String(flagSheet), texts, cellsOf, firstRow);
}

void addAnovaSheet(Analysis &analysis, const Family &family, const Marks &flags)
{
    addColumnPairs(analysis, QLatin1String(family.anovaSheet), 1,
                   labelsOf(analysis, family.methods), flags);
}

// On the sheet of ideal kvadrants the share stands in the place of the last pair, and counts it all
// the same. Required as is.
constexpr int firstIdealColumn = 3;
constexpr int lastPair = pairCount - 1;

void addIdealSheet(Analysis &analysis, const Marks &kvadrants)
{
    QStringList headings = pairLabels(analysis);
    headings[lastPair] = shareHeading;
    FixedTexts texts;
    putTexts(texts, 1, 1, {patientHeading, QStringLiteral("Ideal kvadrant")});
    putTexts(texts, 1, firstIdealColumn, headings);
    const auto cellsOf = [&patients = analysis.patients, kvadrants](int k, RowCells &cells) {
        cells.text(1, patients.at(k).id);
        putIdealCells(cells, patients.at(k).idealKvadrant, kvadrants.row<pairCount>(k));
    };
    addSheet(analysis, QLatin1String(idealSheet), texts, cellsOf);
}

} // namespace

void putIdealCells(RowCells &cells, int ideal, const std::array<int, pairCount> &kvadrants)
{
    // noIdealKvadrant equals no kvadrant, so that such a patient has no hit.
    const auto hits = [&](int pair) { return ideal == kvadrants.at(size_t(pair)) ? 1 : 0; };
    int sum = hits(lastPair);
    cells.number(2, ideal);
    for (int pair = 0; pair < lastPair; ++pair) {
        cells.number(firstIdealColumn + pair, hits(pair));
        sum += hits(pair);
    }
    cells.number(firstIdealColumn + lastPair, double(sum) / pairCount);
}

std::vector<CellSheet> analysisSheets(const QVector<PatientRecord> &patients,
                                      const QVector<PatientScoreRecord> &scores,
                                      const PatientScoreRecord &medianCenter)
{
    const Marks kvadrants = kvadrantTable(scores, medianCenter);
    const Marks convergenceFlags =
        worseTable(scores, medianCenter, &PatientScoreRecord::convergence);
    const Marks variabilityFlags =
        worseTable(scores, medianCenter, &PatientScoreRecord::variability);

    Analysis analysis{patients, QString::number(CConfig::instance().skip()), {}};
    addMedianSheet(analysis, kvadrants);
    addPairComparisons(analysis, kvadrants);
    addColumnPairs(analysis, QLatin1String(pairAnovaSheet), 2, pairLabels(analysis), kvadrants);
    addFlagSheet(analysis, convergenceFlags, variabilityFlags);
    addMethodComparisons(analysis, convergenceFamily, convergenceFlags);
    addAnovaSheet(analysis, convergenceFamily, convergenceFlags);
    addMethodComparisons(analysis, variabilityFamily, variabilityFlags);
    addAnovaSheet(analysis, variabilityFamily, variabilityFlags);
    addIdealSheet(analysis, kvadrants);
    return analysis.sheets;
}

void writeAnalysisWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                           const QVector<PatientScoreRecord> &scores,
                           const PatientScoreRecord & /*averageCenter*/,
                           const PatientScoreRecord &medianCenter)
{
    WorkbookWriter workbook;
    for (const CellSheet &sheet : analysisSheets(patients, scores, medianCenter)) {
        workbook.addSheet(sheet);
    }
    workbook.save(fileName);
}
