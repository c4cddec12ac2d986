// SPDX-License-Identifier: GPL-3.0-or-later
// Recomputes the numbers of the documents: what they say in figures must be what the program
// computes.

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

#include <QRegularExpression>
#include <QtTest>
#include <xlsxdocument.h>

#include "analysis/centers.h"
#include "analysis/convergence.h"
#include "analysis/median.h"
#include "analysis/patientanalysis.h"
#include "analysis/variability.h"
#include "graphs/graphpalette.h"
#include "graphs/patientgraphgeometry.h"
#include "graphs/resultplotgeometry.h"
#include "settings/cconfig.h"
#include "support/documents.h"
#include "support/fitsums.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"
#include "workbooks/patientreader.h"
#include "xlsx/formatlimits.h"
#include "xlsx/reading/workbooklimits.h"
#include "xlsx/writing/workbookwriter.h"

using Series = QVector<double>;
using Patients = QVector<PatientRecord>;
using Method = std::function<double(const Series &)>;

Q_DECLARE_METATYPE(QVariantList)

namespace
{

const QString guide = "docs/guide.md";
constexpr double percentPerUnit = 1 / 10.929;
constexpr double percentOfNone = 2.15;

Patients sample(const QString &name)
{
    return loadPatients(Documents::path("samples/" + name)).patients;
}

Series seriesOf(const Patients &patients, const QString &id)
{
    const auto patient =
        std::find_if(patients.begin(), patients.end(),
                     [&id](const PatientRecord &candidate) { return candidate.id == id; });
    return patient == patients.end() ? Series() : patient->values;
}

double sumOver(const Series &values, const std::function<double(double x, double y)> &term)
{
    double sum = 0.0;
    for (int i = 0; i < values.size(); ++i) {
        sum += term(i, values.at(i));
    }
    return sum;
}

double mean(const Series &values)
{
    return sumOver(values, [](double, double y) { return y; }) / double(values.size());
}

double squaresAroundMean(const Series &values)
{
    const double center = mean(values);
    return sumOver(values, [=](double, double y) { return (y - center) * (y - center); });
}

double textbookRate(const Series &values)
{
    const FitSums<double> sums(values);
    return sums.numerator() / sums.textbookDenominator();
}

Series mapped(Series values, const std::function<double(double)> &change)
{
    std::transform(values.begin(), values.end(), values.begin(), change);
    return values;
}

Series inPercent(const Series &values)
{
    return mapped(values, [](double value) { return value * percentPerUnit + percentOfNone; });
}

Series sorted(Series values)
{
    sortAscending(values);
    return values;
}

// Steps in the order of "Difference standard deviation offset": earlier minus later.
Series stepsFrom(const Series &values, int offset)
{
    Series steps;
    for (int i = offset; i + 1 < values.size(); ++i) {
        steps << values.at(i) - values.at(i + 1);
    }
    return steps;
}

// At the position \p place of the sorted values, counted from 1, interpolated.
double quantile(const Series &values, double place)
{
    const Series s = sorted(values);
    const int below = int(place);
    return s.at(below - 1) + (place - below) * (s.at(below) - s.at(below - 1));
}

Series resultsOf(const Patients &patients, const Method &method)
{
    Series results;
    for (const PatientRecord &patient : patients) {
        results << method(patient.values);
    }
    return results;
}

double correlation(const Series &a, const Series &b)
{
    double products = 0.0;
    for (int i = 0; i < a.size(); ++i) {
        products += (a.at(i) - mean(a)) * (b.at(i) - mean(b));
    }
    return products / std::sqrt(squaresAroundMean(a) * squaresAroundMean(b));
}

// The probability that at most \p most of \p count tosses of a coin show heads.
double coinsUpTo(int most, int count)
{
    double sum = 0.0;
    double ways = 1.0;
    for (int i = 0; i <= most; ++i) {
        sum += ways;
        ways = ways * (count - i) / (i + 1);
    }
    return sum / std::pow(2.0, count);
}

// The position from either end between which the median lies with a confidence of 95 %.
int rankOfMedianInterval(int count)
{
    int rank = 1;
    while (coinsUpTo(rank, count) <= 0.025) {
        ++rank;
    }
    return rank;
}

// Where the chi-squared distribution reaches \p probability, by adding up its density from 0.
double chiSquared(double probability, int freedom)
{
    constexpr double step = 1e-4;
    const double half = freedom / 2.0;
    double reached = 0.0;
    double x = 0.0;
    for (; reached < probability; x += step) {
        const double middle = x + step / 2;
        reached += step
            * std::exp((half - 1) * std::log(middle) - middle / 2 - half * std::log(2.0)
                       - std::lgamma(half));
    }
    return x;
}

// How many patients lie strictly below the median under one method and not under the other.
QStringList changedSides(const Patients &patients, const Method &one, const Method &other)
{
    const Series first = resultsOf(patients, one);
    const Series second = resultsOf(patients, other);
    QStringList ids;
    for (int i = 0; i < patients.size(); ++i) {
        if ((first.at(i) < median(first)) != (second.at(i) < median(second))) {
            ids << patients.at(i).id;
        }
    }
    return ids;
}

QString lowestUnder(const Patients &patients, const Method &method)
{
    const Series results = resultsOf(patients, method);
    const auto place = std::min_element(results.begin(), results.end()) - results.begin();
    return patients.at(int(place)).id;
}

int onesUnder(const Patients &patients, const Method &method)
{
    const Series results = resultsOf(patients, method);
    return int(std::count_if(results.begin(), results.end(),
                             [&](double result) { return result >= median(results); }));
}

struct Measurement {
    QString code;
    int day;
    double value;
};

// As the guide tells it: sorted, numbered, and with a pivot table.
QVector<TestWorkbooks::Row> oneRowPerPatient(QVector<Measurement> list)
{
    std::sort(list.begin(), list.end(), [](const Measurement &one, const Measurement &other) {
        return std::tie(one.code, one.day) < std::tie(other.code, other.day);
    });
    QMap<QString, TestWorkbooks::Row> rows;
    QString above;
    int number = 0;
    for (const Measurement &measurement : list) {
        number = measurement.code == above ? number + 1 : 1; // =IF(A2=A1,D1+1,1)
        above = measurement.code;
        TestWorkbooks::Row &row = rows[measurement.code];
        row.resize(std::max(int(row.size()), number + 1));
        row[0] = measurement.code;
        row[number] = measurement.value;
    }
    return rows.values().toVector();
}

QVariantList variants(const Series &values)
{
    QVariantList list;
    for (const double value : values) {
        list << value;
    }
    return list;
}

// As the document shows it: with as many decimals, or the same power of ten.
QString likeShown(const QVariant &expected, const QString &shown)
{
    if (expected.userType() == QMetaType::QString) {
        return expected.toString();
    }
    if (shown.contains('e')) {
        return QString::number(expected.toDouble(), 'e', 0).replace("e-0", "e-");
    }
    const int point = int(shown.indexOf('.'));
    const int decimals = point < 0 ? 0 : int(shown.size()) - point - 1;
    return QString::number(expected.toDouble(), 'f', decimals);
}

// What the sentence says where \p pattern has a "#"; empty where the document has no such sentence.
QStringList numbersIn(const QString &document, const QString &pattern)
{
    QString expression = QRegularExpression::escape(pattern);
    expression.replace("\\#", "(-?[0-9][0-9,]*(?:\\.[0-9]+)?(?:e-?[0-9]+)?)");
    const auto match = QRegularExpression(expression).match(Documents::flat(document));
    QStringList numbers = match.capturedTexts().mid(1);
    for (QString &number : numbers) {
        number.remove(QRegularExpression(",(?=[0-9]{3})"));
    }
    return numbers;
}

} // namespace

class TestGuide : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

private Q_SLOTS:
    // The settings of a new folder: an offset of 3 and the median.
    void init()
    {
        m_folder = std::make_unique<WorkingFolder>();
        CConfig::instance().createDefaultConfig();
    }

    void cleanup() { m_folder.reset(); }

    void figuresAreThoseOfTheProgram_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QVariantList>("expected");
        const auto row = [](const char *name, const QString &pattern, const QVariantList &expected,
                            const QString &document = guide) {
            QTest::newRow(name) << document << pattern << expected;
        };
        init();
        addMethods(row);
        addTextbookFits(row);
        addSpreads(row);
        addQuartiles(row);
        addCenters(row);
        addSample(row);
        addCautions(row);
        addIntervals(row);
        addNotANumber(row);
        addReport(row);
        addPatientsOfSamples(row);
        addGraphs(row);
        addLimits(row);
        cleanup();
    }

    void figuresAreThoseOfTheProgram()
    {
        QFETCH(const QString, document);
        QFETCH(const QString, pattern);
        QFETCH(const QVariantList, expected);
        const QStringList shown = numbersIn(document, pattern);
        QVERIFY2(!shown.isEmpty(), qPrintable("not in " + document + ": " + pattern));
        QStringList computed;
        for (int i = 0; i < shown.size() && i < expected.size(); ++i) {
            computed << likeShown(expected.at(i), shown.at(i));
        }
        QCOMPARE(shown, computed);
    }

    void shortSeriesAreAsTheTableSays()
    {
        QCOMPARE(differenceStandardDeviationOffset({50, 60}), 0.0);
        QCOMPARE(differenceStandardDeviationOffset({50, 60, 64}), 3.0);
        QVERIFY(std::isnan(differenceStandardDeviationOffset({50, 60, 55, 70})));
        QCOMPARE(differenceStandardDeviationOffset({50, 60, 55, 70, 40}), 0.0);
        QCOMPARE(differenceStandardDeviationOffset({50, 60, 55, 70, 40, 14}), 2.0);
    }

    // "with six patients", "with forty", and "six patients with eight values each".
    void samplesHaveAsManyPatientsAsTold()
    {
        QCOMPARE(sample("glymark-sample.xlsx").size(), 40);
        const Patients small = sample("glymark-small.xlsx");
        QCOMPARE(small.size(), 6);
        for (const PatientRecord &patient : small) {
            QCOMPARE(patient.values.size(), 8);
        }
    }

    // "n | s[1] - s[0]": parts around the minus, each the mean of the values that it names.
    void quartilePositionsAreThoseOfTheTable()
    {
        int checked = 0;
        for (const QStringList &row : Documents::tableRows(Documents::read(guide))) {
            if (row.size() != 2 || !row.at(1).contains("s[") || !row.at(0).at(0).isDigit()) {
                continue;
            }
            const QStringList parts = row.at(1).section(',', 0, 0).split(" - ");
            QCOMPARE(parts.size(), 2);
            for (const QString &count : row.at(0).split(", ")) {
                Series values;
                for (int i = 0; i < count.toInt(); ++i) {
                    values << (i + 2) * (i + 2);
                }
                Series sides;
                for (const QString &part : parts) {
                    Series named;
                    for (const QString &position : Documents::between(part, "s[", "]")) {
                        named << values.at(position.toInt());
                    }
                    sides << mean(named);
                }
                QCOMPARE(interquartileRange(values), sides.at(0) - sides.at(1));
                ++checked;
            }
        }
        QCOMPARE(checked, 12);
    }

    // One place higher for n = 8, 12, ..., lower for n = 3, 7, ..., else that of the halves.
    void upperQuartileLiesBesideTheMedianOfTheUpperHalf()
    {
        for (int n = 3; n < 40; ++n) {
            Series places;
            for (int i = 0; i < n; ++i) {
                places << i;
            }
            const int half = n / 2;
            const double lower = median(places.mid(0, half));
            const double upper = median(places.mid(n - half));
            const double shift = n == 4 ? 0.5 : n % 4 == 0 ? 1 : n % 4 == 3 ? -1 : 0;
            QCOMPARE(interquartileRange(places) + lower, upper + shift);
        }
    }

    void constantSeriesHaveNearlyNoSlope()
    {
        const QStringList shown = numbersIn(
            guide,
            "linear least squares may be off by about #, up or down, and the step from # to "
            "# has the slope #, shown as #.");
        QCOMPARE(shown.size(), 5);
        double lowest = 0.0;
        double highest = 0.0;
        for (int value = 30; value <= 120; ++value) {
            for (int count = 2; count <= 25; ++count) {
                const double slope = linearLeastSquares(Series(count, value));
                lowest = std::min(lowest, slope);
                highest = std::max(highest, slope);
            }
        }
        const double bound = shown.at(0).toDouble();
        const double largest = std::max(highest, -lowest);
        QVERIFY2(lowest < 0.0 && highest > 0.0, "there is a slope on both sides");
        QVERIFY2(largest > bound / 5 && largest < bound * 5, qPrintable(QString::number(largest)));
        const double step = linearLeastSquares({shown.at(1).toDouble(), shown.at(2).toDouble()});
        QVERIFY2(std::abs(step - shown.at(3).toDouble()) < 1e-14,
                 qPrintable(QString::number(step, 'g', 17)));
        QCOMPARE(QString("%1").arg(step), shown.at(4));
    }

    // The agreements of T1.
    void analysisWorkbookIsAsTold()
    {
        const auto workbook = analysisOfSmallSample();
        const QStringList kvadrants =
            numbersIn(guide, "T1 has the kvadrants #, #, #, #, #, #, #, #, # under pairs 0 to 8.");
        QCOMPARE(kvadrants.size(), 9);
        for (int pair = 0; pair < 9; ++pair) {
            QCOMPARE(cell(*workbook, "Median", 2, 2 + pair).toInt(), kvadrants.at(pair).toInt());
        }
        const double share = cell(*workbook, "Compare 1", 2, 11).toDouble();
        QCOMPARE(share, 3.0 / 8.0);
        QCOMPARE(numbersIn(guide, "and column 11 says #, meaning # %."),
                 QStringList({QString::number(share), QString::number(100 * share)}));
        const double ideal = cell(*workbook, "IdealCompare", 2, 11).toDouble();
        QCOMPARE(ideal, 4.0 / 9.0);
        QCOMPARE(numbersIn(guide, "four of nine pairs hit it, and \"IdealCompare\" says #..."),
                 QStringList(QString::number(ideal, 'f', 3)));
    }

    void cellsThatTheGuideNamesHoldWhatItSays()
    {
        const auto workbook = analysisOfSmallSample();
        QStringList named;
        for (const QStringList &row : Documents::tableRows(Documents::read(guide))) {
            static const QRegularExpression address("^[A-Z][0-9]$");
            if (row.size() == 4 && address.match(row.at(1)).hasMatch()) {
                const int column = row.at(1).at(0).unicode() - 'A' + 1;
                const QString sheet = row.at(0).mid(1).chopped(1);
                named << row.at(1);
                QCOMPARE(cell(*workbook, sheet, row.at(1).mid(1).toInt(), column).toString(),
                         row.at(2));
            }
        }
        QCOMPARE(named, QStringList({"C1", "C1", "D1"}));
        QCOMPARE(cell(*workbook, "Compare 1", 1, 7).toString(),
                 QString("Simple linear regression+ Interquartile range"));
        QCOMPARE(cell(*workbook, "Median", 1, 7).toString(),
                 QString("Simple linear regression + Interquartile range"));
        QCOMPARE(cell(*workbook, "Compare 6", 1, 2).toString(),
                 QString("Reference: Simple linear regression + Interquartile range"));
    }

    // "Only the sheets ... have none."
    void sheetsWithoutIdentifiersAreAsTold()
    {
        const Patients patients = sample("glymark-small.xlsx");
        QVERIFY(writeDataWorkbook(m_folder->filePath("data.xlsx"), patients, scoresOf(patients)));
        QXlsx::Document data(m_folder->filePath("data.xlsx"));
        QStringList without = sheetsWithout(data, "T1");
        without << sheetsWithout(*analysisOfSmallSample(), "T1");
        QVERIFY(Documents::flat(guide).contains(
            QString("Only the sheets \"%1\", \"%2\", \"%3\" and \"%4\" have none.")
                .arg(without.value(0), without.value(1), without.value(2), without.value(3))));
        QCOMPARE(without.size(), 4);
    }

    // The table of sheets names all of them, in their order.
    void tableOfSheetsIsComplete()
    {
        const Patients patients = sample("glymark-small.xlsx");
        const auto scores = scoresOf(patients);
        const QString file = m_folder->filePath("analysis.xlsx");
        writeAnalysisWorkbook(file, patients, scores, scores.at(0), scores.at(0));
        const QStringList sheets = QXlsx::Document(file).sheetNames();

        int told = 0;
        for (const QStringList &row : Documents::tableRows(Documents::read(guide))) {
            static const QRegularExpression numbers("^([0-9]+)(?: to ([0-9]+))?$");
            const auto match = numbers.match(row.at(0));
            if (row.size() != 3 || !match.hasMatch() || !row.at(1).startsWith('"')) {
                continue;
            }
            QCOMPARE(match.captured(1).toInt(), told + 1);
            const QString first = Documents::between(row.at(1), "\"", "\"").constFirst();
            QCOMPARE(first, sheets.value(told));
            told = match.captured(2).isEmpty() ? told + 1 : match.captured(2).toInt();
        }
        QCOMPARE(told, sheets.size());
        QCOMPARE(numbersIn(guide, "\"Save data analysis\" writes # sheets."),
                 QStringList(QString::number(sheets.size())));
        QCOMPARE(numbersIn("README.md", "another one of # sheets"),
                 QStringList(QString::number(sheets.size())));
    }

    // The words that the table of cells names, in a row between values.
    void wordsInCellsAreReadAsTold()
    {
        QVERIFY(Documents::read(guide).contains(
            "| text that is a number, such as 48.5 | the number |"));
        QVERIFY(Documents::read(guide).contains(
            "| other text: 48,5 with a decimal comma, `<20`, `>130`, a comment, an error such as "
            "#N/A | ends the row |"));
        QCOMPARE(valuesWith("48.5"), Series({50, 51, 48.5, 52}));
        for (const char *text : {"48,5", "<20", ">130", "not taken", "#N/A"}) {
            QCOMPARE(valuesWith(text), Series({50, 51}));
        }
    }

    // The steps of "From a laboratory list", done to the small sample, newest measurement first.
    void laboratoryListBecomesTheWorkbook()
    {
        const Patients small = sample("glymark-small.xlsx");
        QVector<Measurement> list;
        for (const PatientRecord &patient : small) {
            for (int i = 0; i < patient.values.size(); ++i) {
                list.prepend({patient.id, 40000 + 91 * i, patient.values.at(i)});
            }
        }
        const QString file = m_folder->filePath("list.xlsx");
        TestWorkbooks::save(file, oneRowPerPatient(list));
        const Patients read = loadPatients(file).patients;
        QCOMPARE(read.size(), small.size());
        for (int i = 0; i < read.size(); ++i) {
            QCOMPARE(read.at(i).id, small.at(i).id);
            QCOMPARE(read.at(i).values, small.at(i).values);
        }
    }

    void clippedLabelIsAsTold()
    {
        const Patients patients = sample("glymark-small.xlsx");
        const QString file = m_folder->filePath("data.xlsx");
        QVERIFY(writeDataWorkbook(file, patients, scoresOf(patients)));
        QXlsx::Document workbook(file);
        QVERIFY(workbook.selectSheet("Method result"));
        const QString label = workbook.read(6, 1).toString();
        QVERIFY(Documents::flat(guide).contains("with an offset of 3 it reads \"" + label + '"'));
    }

private:
    // What is read of a row that holds \p text among numbers.
    Series valuesWith(const QString &text) const
    {
        const QString file = m_folder->filePath("cells.xlsx");
        TestWorkbooks::save(file, {{"P", 50.0, 51.0, text, 52.0}});
        return loadPatients(file).patients.value(0).values;
    }

    // The analysis workbook of the small sample, with a kvadrant marked for P001.
    std::unique_ptr<QXlsx::Document> analysisOfSmallSample() const
    {
        Patients patients = sample("glymark-small.xlsx");
        patients[0].idealKvadrant = 2;
        const auto scores = scoresOf(patients);
        const PatientScoreRecord medians = {
            {}, convergenceMedians(scores), variabilityMedians(scores)};
        const QString file = m_folder->filePath("analysis.xlsx");
        writeAnalysisWorkbook(file, patients, scores, medians, medians);
        return std::make_unique<QXlsx::Document>(file);
    }

    // The sheets on which no cell holds \p text.
    static QStringList sheetsWithout(QXlsx::Document &workbook, const QString &text)
    {
        QStringList sheets = workbook.sheetNames();
        for (const QString &sheet : workbook.sheetNames()) {
            workbook.selectSheet(sheet);
            for (int row = 1; row < 10; ++row) {
                for (int column = 1; column < 20; ++column) {
                    if (workbook.read(row, column).toString() == text) {
                        sheets.removeAll(sheet);
                    }
                }
            }
        }
        return sheets;
    }

    static QVariant cell(QXlsx::Document &workbook, const QString &sheet, int row, int column)
    {
        return workbook.selectSheet(sheet) ? workbook.read(row, column) : QVariant();
    }

    template<typename Row>
    static void addMethods(const Row &row)
    {
        const Series y = seriesOf(sample("glymark-small.xlsx"), "T1");
        const auto n = double(y.size());
        row("T1", "| y | # | # | # | # | # | # | # | # |", variants(y));
        row("mean", "Here n = #, Σy = # and the mean is ȳ = #.", {n, n * mean(y), mean(y)});

        const Series steps = mapped(stepsFrom(y, 0), [](double step) { return -step; });
        row("steps", "The steps are #, #, #, #, #, #, #. Sorted: #, #, #, **#**, #, #, #.",
            variants(steps) + variants(sorted(steps)));
        row("median difference", "**#**, #, #, #. The result is **#**.",
            variants(sorted(steps).mid(3)) + QVariantList{medianDifference(y)});

        const double center = (n - 1) / 2;
        const double products =
            sumOver(y, [&](double x, double value) { return (x - center) * (value - mean(y)); });
        const double squares =
            sumOver(y, [=](double x, double) { return (x - center) * (x - center); });
        row("slope", "With x̄ = # it is # / # = **#**.",
            {center, products, squares, linearLeastSquares(y)});
    }

    template<typename Row>
    static void addTextbookFits(const Row &row)
    {
        const Series y = seriesOf(sample("glymark-small.xlsx"), "T1");
        const FitSums<double> sums(y);
        const double textbook = textbookRate(y);
        const auto times = [&y](double factor) {
            return exponentialFit(mapped(y, [=](double value) { return value * factor; }));
        };
        row("five sums", "S0 = #, S1 = #, S2 = #, S3 = #, S4 = #, and k = # / # = **#**.",
            {sums.s0, sums.s1, sums.s2, sums.s3, sums.s4, sums.numerator(), sums.denominator(),
             exponentialFit(y)});
        row("textbook", "Here that sum is #, and k = # / # = #, a fall of # % per measurement.",
            {sums.textbook, sums.numerator(), sums.textbookDenominator(), textbook,
             100 * (1 - std::exp(textbook))});
        row("times smaller", "Glymark's k is # times smaller for this patient",
            {textbook / exponentialFit(y)});
        row("other units",
            "This patient with each value divided by # gives #, with each multiplied by # #, while "
            "the textbook's k stays # for both.",
            {10, times(0.1), 10, times(10), textbook});
        row("cited fit", "| # | # | \"coefficient k by Glymark\"", {exponentialFit(y), textbook});
        row("cited median", "| # | # | median of successive differences |",
            {medianDifference(y), medianDifference(y)});
        row("cited slope", "| # | # | slope of", {linearLeastSquares(y), linearLeastSquares(y)});
    }

    template<typename Row>
    static void addSpreads(const Row &row)
    {
        const Series y = seriesOf(sample("glymark-small.xlsx"), "T1");
        const auto n = double(y.size());
        const double squares = squaresAroundMean(y);
        const double deviation = standardDeviation(y);
        const double sampleDeviation = std::sqrt(squares / (n - 1));
        row("standard deviation",
            "= #; divided by # it is #, and the root is **#**. The textbook's sample standard "
            "deviation divides by n - 1 = # and gives #.",
            {squares, n, squares / n, deviation, n - 1, sampleDeviation});
        row("cited deviation", "| # | # | population standard deviation (divisor n) |",
            {deviation, sampleDeviation});

        const Series steps = stepsFrom(y, 3);
        const double stepSquares = squaresAroundMean(steps);
        const double offset3 = differenceStandardDeviationOffset(y);
        const double sampleOffset = std::sqrt(stepSquares / double(steps.size() - 1));
        CConfig::instance().saveConfig(0, 0, 1, 0, 1);
        const double offset0 = differenceStandardDeviationOffset(y);
        CConfig::instance().createDefaultConfig();
        row("offset deviation",
            "With offset # the steps of T1, earlier minus later, are #, #, #, #; their mean is "
            "#, the squares of the distances add up to #, and √(# / #) = **#**. With the divisor "
            "# it would be #. With offset # all seven steps count, and the result is #.",
            QVariantList{3} + variants(steps)
                + variants({mean(steps), stepSquares, stepSquares, 4, offset3, 3, sampleOffset, 0,
                            offset0}));
        row("cited offset", "| # | # | population standard deviation of successive",
            {offset3, sampleOffset});
    }

    template<typename Row>
    static void addQuartiles(const Row &row)
    {
        const Series y = seriesOf(sample("glymark-small.xlsx"), "T1");
        const auto n = double(y.size());
        const Series s = sorted(y);
        const double range = interquartileRange(y);
        row("quartiles",
            "T1 sorted is #, #, #, #, #, #, #, #, so the result is (# + #) / 2 - (# + #) / 2 = "
            "**#**.",
            variants(s) + variants({s.at(6), s.at(7), s.at(1), s.at(2), range}));
        const Series half = {median(s.mid(0, 4)), median(s.mid(4))};
        const Series exclusive = {quantile(y, 0.25 * (n + 1)), quantile(y, 0.75 * (n + 1))};
        const Series inclusive = {quantile(y, 0.25 * (n - 1) + 1), quantile(y, 0.75 * (n - 1) + 1)};
        const auto distance = [](const Series &pair) { return pair.at(1) - pair.at(0); };
        const auto rule = [&](const char *name, const QString &label, const Series &pair) {
            row(name, "| " + label + " | # | # | # |",
                variants({pair.at(0), pair.at(1), distance(pair)}));
        };
        rule("halves", "medians of the lower and the upper half", half);
        rule("exclusive quartiles", "QUARTILE.EXC of spreadsheet programs", exclusive);
        rule("inclusive quartiles", "QUARTILE.INC, type 7 of R", inclusive);
        row("cited range", "| # | #, # or # | \"interquartile range by Glymark\"",
            variants({range, distance(half), distance(exclusive), distance(inclusive)}));
    }

    template<typename Row>
    static void addCenters(const Row &row)
    {
        row("centers", "For three patients with #, # and # the median is # and the average #.",
            variants({1, 2, 9, median({1, 2, 9}), mean({1, 2, 9})}));

        const auto scores = scoresOf(sample("glymark-small.xlsx"));
        const Series convergence = convergenceMedians(scores);
        const Series variability = variabilityMedians(scores);
        const PatientScoreRecord &t1 = scores.at(0);
        row("kvadrant of T1",
            "T1 of the small sample has a median difference of # (median of the group #) and a "
            "standard deviation of # (median #): B/W, kvadrant 2.",
            {t1.convergence.at(0), convergence.at(0), t1.variability.at(0), variability.at(0)});
        QVERIFY(t1.convergence.at(0) < convergence.at(0));
        QVERIFY(t1.variability.at(0) > variability.at(0));
        row("pair 8, convergence", "| Convergence | # | # | W | # | B |",
            {t1.convergence.at(2), convergence.at(0), convergence.at(2)});
        QVERIFY(t1.convergence.at(2) > convergence.at(0));
        QVERIFY(t1.convergence.at(2) < convergence.at(2));
        row("pair 8, variability", "| Variability | # | # | W | # | W |",
            {t1.variability.at(2), variability.at(0), variability.at(2)});
        QVERIFY(t1.variability.at(2) > variability.at(0));
        QVERIFY(t1.variability.at(2) > variability.at(2));
    }

    template<typename Row>
    static void addSample(const Row &row)
    {
        const Patients patients = sample("glymark-sample.xlsx");
        const auto count = double(patients.size());
        const auto lengths =
            resultsOf(patients, [](const Series &values) { return double(values.size()); });
        row("lengths", "of the # to # values of each of the # patients",
            {sorted(lengths).first(), sorted(lengths).last(), count});

        const auto inOtherUnit = [](const Series &values) {
            return exponentialFit(inPercent(values));
        };
        const auto changed = double(changedSides(patients, exponentialFit, inOtherUnit).size());
        const auto otherSigns =
            std::count_if(patients.begin(), patients.end(), [](const PatientRecord &patient) {
                const Series percent = inPercent(patient.values);
                return (exponentialFit(percent) < 0.0) != (textbookRate(percent) < 0.0);
            });
        row("percent", "mmol/mol = (% - #) · # (", {percentOfNone, 1 / percentPerUnit});
        row("units",
            "# of the sample's # patients change sides of the median of k, and for # the sign of k "
            "differs from the textbook's.",
            {changed, count, double(otherSigns)});
        row("percent in the README", "# of its # patients change sides", {changed, count},
            "README.md");

        const QStringList moved = changedSides(patients, exponentialFit, textbookRate);
        QCOMPARE(moved.size(), 4);
        row("textbook's order",
            "P# has the lowest value by Glymark and P# by the textbook, and four patients (P#, P#, "
            "P#, P#) change sides",
            {lowestUnder(patients, exponentialFit).mid(1),
             lowestUnder(patients, textbookRate).mid(1), moved.at(0).mid(1), moved.at(1).mid(1),
             moved.at(2).mid(1), moved.at(3).mid(1)});

        addShares(row, patients);
    }

    template<typename Row>
    static void addShares(const Row &row, const Patients &patients)
    {
        const int halves = int(patients.size()) / 2;
        QCOMPARE(onesUnder(patients, linearLeastSquares), halves);
        QCOMPARE(onesUnder(patients, exponentialFit), halves);
        QCOMPARE(onesUnder(patients, standardDeviation), halves);
        QCOMPARE(onesUnder(patients, differenceStandardDeviationOffset), halves);
        row("shares of ones",
            "# of the sample's # in four of the six methods, and more only where several patients "
            "lie on the median (# for the median difference, # for the interquartile range).",
            {halves, patients.size(), onesUnder(patients, medianDifference),
             onesUnder(patients, interquartileRange)});
    }

    template<typename Row>
    static void addPatientsOfSamples(const Row &row)
    {
        const Patients patients = sample("glymark-sample.xlsx");
        const Series level = sorted(seriesOf(patients, "P019"));
        row("P019",
            "P019 stays between # and # all along. Its median difference is # and counts as "
            "worse, because that of the group is #",
            {level.first(), level.last(), medianDifference(seriesOf(patients, "P019")),
             median(resultsOf(patients, medianDifference))});
        const Patients small = sample("glymark-small.xlsx");
        const Series falling = seriesOf(small, "T3");
        row("T3", "T3 falls from # to # and counts as better", {falling.first(), falling.last()});
        QVERIFY(medianDifference(falling) < median(resultsOf(small, medianDifference)));

        QVariantList shortOnes;
        for (const PatientRecord &patient : patients) {
            if (differenceStandardDeviationOffset(patient.values) == 0.0) {
                shortOnes << patient.id.mid(1);
            }
        }
        row("one step", "the best result there is (P# and P# of the sample)", shortOnes);
    }

    template<typename Row>
    static void addCautions(const Row &row)
    {
        const Patients patients = sample("glymark-sample.xlsx");
        const Series falling = seriesOf(patients, "P022");
        QCOMPARE(falling.size(), 12);
        row("length of a series", "slope of P022 over its first #, # and # values is #, # and #.",
            {6, 8, 12, linearLeastSquares(falling.mid(0, 6)), linearLeastSquares(falling.mid(0, 8)),
             linearLeastSquares(falling)});
        const Series slopes = resultsOf(patients, linearLeastSquares);
        const Series firsts =
            resultsOf(patients, [](const Series &values) { return values.first(); });
        row("regression to the mean", "the slope and the first value correlate at #.",
            {correlation(slopes, firsts)});
        row("fall and spread", "the slope and the standard deviation correlate at #.",
            {correlation(slopes, resultsOf(patients, standardDeviation))});
        const auto share = [](double n) { return std::sqrt((n - 1) / n); };
        row("divisor", "# of the sample standard deviation for # values and # for #.",
            {share(5), 5, share(23), 23});
    }

    template<typename Row>
    static void addIntervals(const Row &row)
    {
        for (const int n : {6, 10, 20, 40}) {
            const int rank = rankOfMedianInterval(n);
            const auto times = [n](double probability) {
                return std::sqrt((n - 1) / chiSquared(probability, n - 1));
            };
            row(qPrintable(QString("intervals of %1").arg(n)),
                QString("| %1 | #%2 to #th | # to # times |").arg(n).arg(ordinalEnding(rank)),
                {rank, n + 1 - rank, times(0.975), times(0.025)});
        }
    }

    static QString ordinalEnding(int number)
    {
        return number == 1 ? "st" : number == 2 ? "nd" : "th";
    }

    // What the window and a spreadsheet program make of a row with "nan".
    template<typename Row>
    static void addNotANumber(const Row &row)
    {
        Patients patients = sample("glymark-small.xlsx");
        const double without = median(resultsOf(patients, differenceStandardDeviationOffset));
        patients.append({"short", {50, 60, 55, 70}, PatientRecord::noIdealKvadrant});
        const auto scores = scoresOf(patients);
        QVERIFY(std::isnan(scores.constLast().variability.at(1)));
        row("median with nan",
            "the median of the offset method is # in Glymark and # in a spreadsheet program.",
            {variabilityMedians(scores).at(1), without});
        QVERIFY(std::isnan(variabilityAverages(scores).at(1)));
    }

    template<typename Row>
    static void addReport(const Row &row)
    {
        const Patients patients = sample("glymark-sample.xlsx");
        const auto better = [&patients](const Method &method) {
            return double(patients.size() - onesUnder(patients, method));
        };
        const Series steps = resultsOf(patients, medianDifference);
        row("report",
            "# better and # worse in convergence, # of these on the median, and # and # in "
            "variability",
            {better(medianDifference), onesUnder(patients, medianDifference),
             double(steps.count(median(steps))), better(standardDeviation),
             onesUnder(patients, standardDeviation)});
    }

    template<typename Row>
    static void addGraphs(const Row &row)
    {
        const auto topLine = [](double highest) {
            const Patients patients = {{"P", {highest, 40.0}, PatientRecord::noIdealKvadrant}};
            const PatientGraphBounds bounds(patients);
            const PatientGraphGeometry geometry(patients, bounds, 700, 400,
                                                [](const QString &) { return 10.0; });
            return geometry.bands * 10;
        };
        row("top line", "At # it is #, so the peak rises above it; at # it is #.",
            {50.5, topLine(50.5), 51, topLine(51)});
        int colours = 1;
        while (GraphPalette::color(colours) != GraphPalette::color(0)) {
            ++colours;
        }
        row("colours", "After # patients the colours begin again.", {colours});

        const QVector<PatientScoreRecord> two = {{"a", {-7, 0, 0}, {1, 0, 0}},
                                                 {"b", {2, 0, 0}, {2, 0, 0}}};
        const ResultPlotGeometry plot(ResultPlotData(two, 0, 0, 1.5, -1), {}, 700, 400,
                                      [](const QString &) { return 10.0; });
        // The horizontal ticks come first, that half way to the right last among them.
        row("half way tick",
            "With the center at # and the highest value at #, as above, it says # where # would be "
            "right.",
            {-1, 2, plot.tickLabels.at(3).text.toDouble(), (-1 + 2.0) / 2});
    }

    template<typename Row>
    static void addLimits(const Row &row)
    {
        const WorkbookLimits limits;
        const double mebibyte = WorkbookLimits::mebibyte;
        row("limits",
            "larger than # MiB, one of its parts larger than # MiB unpacked, a cell lies beyond "
            "row # or column "
            "#,",
            {double(limits.fileSize) / mebibyte, double(limits.partSize) / mebibyte,
             FormatLimits::rows, FormatLimits::columns});
        // The labels take one column.
        row("columns", "(the first # patients: a sheet has no more columns;",
            {FormatLimits::columns - 1});
        row("series", "(the first # patients; a spreadsheet program rejects more)",
            {WorkbookWriter::largestSeriesCount});
    }
};

QTEST_GUILESS_MAIN(TestGuide)
#include "tst_guide.moc"
