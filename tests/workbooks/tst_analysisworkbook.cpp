// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/analysisworkbook.h"

#include <QSet>
#include <QtTest>
#include <xlsxdocument.h>

#include "settings/cconfig.h"
#include "support/expectedanalysis.h"
#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/testgroups.h"
#include "support/workingfolder.h"
#include "xlsx/writing/workbookwriter.h"

using ExpectedSheets::Book;
using ExpectedSheets::Cells;
using Numbers::difference;
using Numbers::infinity;
using Numbers::notANumber;

namespace
{

// The cells from one column on to another, as texts and numbers; what is not there is "-".
QStringList rowOf(const QXlsx::Document &document, int row, int firstColumn, int lastColumn)
{
    QStringList texts;
    for (int column = firstColumn; column <= lastColumn; ++column) {
        texts.append(document.cellAt(row, column) ? document.read(row, column).toString() : "-");
    }
    return texts;
}

QStringList words(const char *text)
{
    return QString(text).split(' ');
}

} // namespace

class TestAnalysisWorkbook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { useSkip("3"); }

    void sheetsStandInOrder()
    {
        const QStringList names = {
            "Median",
            "Compare 1",
            "Compare 2",
            "Compare 3",
            "Compare 4",
            "Compare 5",
            "Compare 6",
            "Compare 7",
            "Compare 8",
            "Compare 9",
            "AnovaMedian",
            "Convergence&Variability",
            "Covergence compare 1",
            "Covergence compare 2",
            "Covergence compare 3",
            "ConvAnova",
            "Variability compare 1",
            "Variability compare 2",
            "Variability compare 3",
            "VarAnova",
            "IdealCompare",
        };
        const TestGroup unmarked = TestGroup::ofValues({{50, 45, 40}, {50, 55}});
        QCOMPARE(QXlsx::Document(written(unmarked)).sheetNames(), names);
    }

    void everyCellOfTheGroup_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {1, 2, 4, 40}) {
            QTest::addRow("%d patients", count) << count;
        }
    }

    void everyCellOfTheGroup()
    {
        QFETCH(int, count);
        const TestGroup group = TestGroup::ofSize(count);
        const Book book = ExpectedAnalysis::book(group, "3");
        QCOMPARE(book.size(), 21);
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void largeGroupHasMarksOfEveryKind()
    {
        const TestGroup group = TestGroup::ofSize(40);
        QSet<int> kvadrants;
        QSet<int> ideals;
        bool hit = false;
        for (int k = 0; k < 40; ++k) {
            const int ideal = group.patients.at(k).idealKvadrant;
            ideals.insert(ideal);
            for (int pair = 0; pair < 9; ++pair) {
                kvadrants.insert(ExpectedAnalysis::kvadrant(group, k, pair));
                hit = hit || ExpectedAnalysis::kvadrant(group, k, pair) == ideal;
            }
        }
        // 0 comes from patients of four values, whose offset leaves nothing.
        QCOMPARE(kvadrants, (QSet<int>{0, 1, 2, 3, 4}));
        QCOMPARE(ideals, (QSet<int>{-1, 1, 2, 3, 4}));
        QVERIFY(hit);
    }

    void everyCellForTheOffset_data()
    {
        QTest::addColumn<QString>("skip");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << "0"
                           << "0";
        QTest::newRow("3") << "3"
                           << "3";
        QTest::newRow("4") << "4"
                           << "4";
        QTest::newRow("9") << "9"
                           << "9";
        QTest::newRow("36") << "36"
                            << "36";
        QTest::newRow("40") << "40"
                            << "40";
        QTest::newRow("2.9") << "2.9"
                             << "2";
        QTest::newRow("-1") << "-1"
                            << "18446744073709551615";
    }

    void everyCellForTheOffset()
    {
        QFETCH(QString, skip);
        QFETCH(QString, text);
        useSkip(skip.toLatin1());
        const TestGroup group = TestGroup::ofSize(4);
        const Book book = ExpectedAnalysis::book(group, text);
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void labelsEndInTheOffset()
    {
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        QVERIFY(document.selectSheet("Compare 2"));
        QCOMPARE(document.read(1, 2).toString(),
                 "Reference: Median difference + Difference standard Deviation"
                 " + offset 3");
        useSkip("4");
        QXlsx::Document other(written(TestGroup::ofSize(2)));
        QVERIFY(other.selectSheet("Variability compare 2"));
        QCOMPARE(other.read(1, 2).toString(), "Reference: Difference standard deviation offset 4");
        QVERIFY(other.selectSheet("Convergence&Variability"));
        QCOMPARE(other.read(2, 8).toString(), "Difference standard deviation offset 4");
    }

    void offsetOfZeroIsShown()
    {
        useSkip("0");
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(document.read(1, 3).toString(),
                 "Median difference + Difference standard Deviation + offset 0");
    }

    void everyCellOfGroupsThatHoldNotANumber_data()
    {
        QTest::addColumn<QVector<QVector<double>>>("convergence");
        QTest::addColumn<QVector<QVector<double>>>("variability");
        const QVector<QVector<double>> numbers = {{1, 2, 3}, {3, 1, 2}, {2, 3, 1}, {2, 2, 2}};
        for (int method = 0; method < 3; ++method) {
            QVector<QVector<double>> one = numbers;
            one[1][method] = notANumber;
            QVector<QVector<double>> most = numbers;
            most[0][method] = most[1][method] = most[2][method] = notANumber;
            QTest::addRow("convergence %d of one", method) << one << numbers;
            QTest::addRow("variability %d of one", method) << numbers << one;
            // The medians are not a number either.
            QTest::addRow("convergence %d of most", method) << most << numbers;
            QTest::addRow("variability %d of most", method) << numbers << most;
            QTest::addRow("both %d", method) << most << one;
        }
    }

    void everyCellOfGroupsThatHoldNotANumber()
    {
        QFETCH(QVector<QVector<double>>, convergence);
        QFETCH(QVector<QVector<double>>, variability);
        const TestGroup group = TestGroup::ofScores(convergence, variability);
        const Book book = ExpectedAnalysis::book(group, "3");
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void patientOnBothMediansIsInKvadrantOne()
    {
        // The second is the median of either first method.
        const TestGroup group = TestGroup::ofScores({{1, 0, 0}, {2, 0, 0}, {9, 0, 0}},
                                                    {{4, 0, 0}, {5, 0, 0}, {6, 0, 0}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(document.read(2, 2).toInt(), 3);
        QCOMPARE(document.read(3, 2).toInt(), 1);
        QCOMPARE(document.read(4, 2).toInt(), 1);
    }

    void onTheMedianOfConvergenceAloneIsKvadrantFour()
    {
        // Medians 2 and 2: the second patient is on the one and below the other.
        QXlsx::Document document(written(TestGroup::ofScores({{1, 1, 1}, {2, 2, 2}, {9, 9, 9}},
                                                             {{2, 2, 2}, {1, 1, 1}, {9, 9, 9}})));
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(rowOf(document, 3, 2, 10), words("4 4 4 4 4 4 4 4 4"));
    }

    void twoEqualPatientsAreInKvadrantOne()
    {
        QXlsx::Document document(
            written(TestGroup::ofScores({{3, 3, 3}, {3, 3, 3}}, {{4, 4, 4}, {4, 4, 4}})));
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(rowOf(document, 2, 2, 10), words("1 1 1 1 1 1 1 1 1"));
        QCOMPARE(rowOf(document, 3, 2, 10), words("1 1 1 1 1 1 1 1 1"));
    }

    void allPairsAreHeldAgainstTheMediansOfTheFirstMethods()
    {
        const TestGroup group =
            TestGroup::ofScores({{1, 0, 0.5}, {2, 0, 1.0}, {3, 0, 1.5}, {2, 0, 0.7}},
                                {{4, 0, 9}, {5, 0, 10}, {6, 0, 5}, {5, 0, 11}});
        QCOMPARE(group.medianCenter.convergence.at(0), 2.0);
        QCOMPARE(group.medianCenter.variability.at(0), 5.0);
        QCOMPARE(group.medianCenter.convergence.at(2), 0.85);
        QCOMPARE(group.medianCenter.variability.at(2), 9.5);
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Median"));
        // The last pair: all are below 2, and none is below 5. Under the medians of the third
        // methods the patients would be in the kvadrants 3, 1, 4 and 2.
        for (const int row : {2, 3, 4, 5}) {
            QCOMPARE(document.read(row, 10), QVariant(2.0));
        }
        // The flags of the third patient do follow the medians of the third methods: W/B,
        // kvadrant 4.
        QVERIFY(document.selectSheet("Convergence&Variability"));
        QCOMPARE(document.read(5, 4), QVariant(1.0));
        QCOMPARE(document.read(5, 9), QVariant(0.0));
    }

    void notANumberLeavesTheKvadrantEmpty()
    {
        // Of the first no exponential fit, of the second no step behind the offset of 3.
        TestGroup group =
            TestGroup::ofValues({{50, -1, 40, 30, 20}, {50, 40, 30, 20}, {9, 8, 7, 5, 4}});
        for (PatientRecord &patient : group.patients) {
            patient.idealKvadrant = 1;
        }
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Median"));
        for (const int column : {8, 9, 10}) {
            QVERIFY(!document.cellAt(2, column));
        }
        for (const int column : {3, 6, 9}) {
            QVERIFY(!document.cellAt(3, column));
        }
        QVERIFY(document.cellAt(2, 7));
        QVERIFY(document.cellAt(3, 2));
        // Where the entry is printed, it is 0; and it is a miss.
        QVERIFY(document.selectSheet("Compare 7"));
        QCOMPARE(rowOf(document, 2, 2, 2), words("0"));
        QVERIFY(document.selectSheet("AnovaMedian"));
        QCOMPARE(document.read(3, 3), QVariant(0.0));
        QVERIFY(document.selectSheet("IdealCompare"));
        QCOMPARE(document.read(2, 9), QVariant(0.0));
    }

    void emptyKvadrantsAgreeWithEachOther()
    {
        const TestGroup group =
            TestGroup::ofScores({{1, 1, notANumber}, {2, 2, 2}}, {{1, notANumber, 1}, {2, 2, 2}});
        QXlsx::Document document(written(group));
        // Pairs 1, 4, 6, 7 and 8 of the first are empty.
        QVERIFY(document.selectSheet("Compare 2"));
        QCOMPARE(rowOf(document, 2, 2, 11), words("0 0 0 0 1 0 1 1 1 0.5"));
    }

    void notANumberCountsAsBetterInTheFlags()
    {
        const TestGroup group =
            TestGroup::ofScores({{notANumber, 5, 5}, {1, 5, 5}}, {{7, notANumber, 7}, {7, 2, 7}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Convergence&Variability"));
        QCOMPARE(rowOf(document, 3, 2, 4), words("0 1 1"));
        QCOMPARE(rowOf(document, 3, 7, 9), words("1 0 1"));
    }

    void infinityIsANumber()
    {
        const TestGroup group =
            TestGroup::ofScores({{-infinity, 0, 0}, {1, 0, 0}, {infinity, 0, 0}},
                                {{infinity, 0, 0}, {infinity, 0, 0}, {0, 0, 0}});
        const Book book = ExpectedAnalysis::book(group, "3");
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QXlsx::Document document(path);
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(document.read(2, 2).toInt(), 2);
        QCOMPARE(document.read(3, 2).toInt(), 1);
        QCOMPARE(document.read(4, 2).toInt(), 4);
    }

    void equalKvadrantsAgreeEverywhere()
    {
        // The first patient is below both medians with everything.
        const TestGroup group = TestGroup::ofScores({{1, 1, 1}, {5, 5, 5}}, {{1, 1, 1}, {5, 5, 5}});
        QXlsx::Document document(written(group));
        for (int number = 1; number <= 9; ++number) {
            QVERIFY(document.selectSheet(QString("Compare %1").arg(number)));
            QCOMPARE(rowOf(document, 2, 2, 11), words("3 1 1 1 1 1 1 1 1 1"));
            QCOMPARE(rowOf(document, 3, 2, 11), words("1 1 1 1 1 1 1 1 1 1"));
        }
    }

    void loneReferenceAgreesWithNobody()
    {
        // Medians 3 and 3. The first patient is in kvadrant 3 under pair 0 and nowhere else.
        const TestGroup group = TestGroup::ofScores({{1, 9, 9}, {5, 9, 9}}, {{1, 9, 9}, {5, 9, 9}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Compare 1"));
        QCOMPARE(rowOf(document, 2, 2, 11), words("3 0 0 0 0 0 0 0 0 0"));
        // Pairs 1 and 2 share kvadrant 2, pairs 3 and 6 kvadrant 4, the last four kvadrant 1.
        QVERIFY(document.selectSheet("Compare 2"));
        QCOMPARE(rowOf(document, 2, 2, 11), words("2 0 1 0 0 0 0 0 0 0.125"));
        QVERIFY(document.selectSheet("Compare 9"));
        QCOMPARE(rowOf(document, 2, 2, 11), words("1 0 0 0 0 1 1 0 1 0.375"));
    }

    void comparedPairsLeaveOutTheReference_data()
    {
        QTest::addColumn<QString>("sheet");
        QTest::addColumn<QVector<int>>("pairs");
        QTest::newRow("first") << "Compare 1" << QVector<int>{1, 2, 3, 4, 5, 6, 7, 8};
        QTest::newRow("middle") << "Compare 5" << QVector<int>{0, 1, 2, 3, 5, 6, 7, 8};
        QTest::newRow("last") << "Compare 9" << QVector<int>{0, 1, 2, 3, 4, 5, 6, 7};
    }

    void comparedPairsLeaveOutTheReference()
    {
        QFETCH(QString, sheet);
        QFETCH(QVector<int>, pairs);
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        QVERIFY(document.selectSheet(sheet));
        for (int c = 0; c < 8; ++c) {
            QString heading = document.read(1, c + 3).toString();
            heading.replace("regression+", "regression +");
            QCOMPARE(heading, ExpectedAnalysis::pairLabel(pairs.at(c), "3"));
        }
    }

    void closedUpLabelStandsOnAllButOneCompareSheet()
    {
        QXlsx::Document document(written(TestGroup::ofSize(4)));
        const QStringList names = document.sheetNames();
        for (const QString &name : names) {
            QVERIFY(document.selectSheet(name));
            const bool expected = name.startsWith("Compare ") && name != "Compare 6";
            const QStringList headings = rowOf(document, 1, 1, 220);
            QCOMPARE(headings.filter("regression+").size(), expected ? 1 : 0);
        }
        QVERIFY(document.selectSheet("Compare 6"));
        QCOMPARE(document.read(1, 2).toString(),
                 "Reference: Simple linear regression + Interquartile range");
    }

    void notesKeepTheirPlace_data()
    {
        QTest::addColumn<int>("count");
        QTest::newRow("fewer rows than the notes") << 1;
        QTest::newRow("as many") << 4;
        QTest::newRow("more") << 40;
    }

    void notesKeepTheirPlace()
    {
        QFETCH(int, count);
        QXlsx::Document document(written(TestGroup::ofSize(count)));
        QVERIFY(document.selectSheet("Median"));
        QCOMPARE(rowOf(document, 5, 11, 12), words("- Information"));
        QCOMPARE(rowOf(document, 6, 11, 12),
                 (QStringList{"-", "Numbers in columns 2 and higher = kvadrants"}));
        QVERIFY(document.selectSheet("Compare 4"));
        QCOMPARE(rowOf(document, 5, 12, 13), words("- Information"));
        QCOMPARE(document.read(8, 14).toString(), "1 - same, 0 - different");
        QVERIFY(document.selectSheet("Convergence&Variability"));
        QCOMPARE(rowOf(document, 5, 10, 11), words("- Information"));
        QCOMPARE(document.read(6, 11).toString(), "1 - worse than median, 0 better than median");
        QVERIFY(document.selectSheet("VarAnova"));
        QCOMPARE(rowOf(document, 5, 18, 24), words("- - - - - - -"));
    }

    void anovaMedianStartsInTheSecondColumn()
    {
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        QVERIFY(document.selectSheet("AnovaMedian"));
        QVERIFY(!document.cellAt(1, 1));
        QVERIFY(!document.cellAt(2, 1));
        QCOMPARE(document.read(1, 2).toString(), ExpectedAnalysis::pairLabel(0, "3"));
        QCOMPARE(document.read(1, 24).toString(), ExpectedAnalysis::pairLabel(8, "3"));
        QCOMPARE(document.read(1, 26).toString(), ExpectedAnalysis::pairLabel(1, "3"));
        QCOMPARE(document.read(1, 27).toString(), ExpectedAnalysis::pairLabel(0, "3"));
        QCOMPARE(document.read(1, 215).toString(), ExpectedAnalysis::pairLabel(8, "3"));
        QCOMPARE(document.read(1, 216).toString(), ExpectedAnalysis::pairLabel(7, "3"));
        QVERIFY(!document.cellAt(1, 214));
        QVERIFY(!document.cellAt(1, 217));
    }

    void patientOnTheMedianIsWorse()
    {
        const TestGroup group = TestGroup::ofScores({{1, 7, 7}, {2, 8, 8}, {3, 9, 9}},
                                                    {{1, 7, 9}, {2, 8, 8}, {3, 9, 7}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Convergence&Variability"));
        QCOMPARE(rowOf(document, 3, 1, 9), words("A 0 0 0 - A 0 0 1"));
        QCOMPARE(rowOf(document, 4, 1, 9), words("B 1 1 1 - B 1 1 1"));
        QCOMPARE(rowOf(document, 5, 2, 9), words("1 1 1 - C 1 1 0"));
    }

    void sharesOfTheMethodSheets()
    {
        // Flags of the first: 0 0 0 and 0 1 1; of the second: 1 1 1 and 1 0 1.
        const TestGroup group = TestGroup::ofScores({{1, 1, 1}, {2, 2, 2}}, {{1, 2, 2}, {2, 1, 2}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Covergence compare 1"));
        QCOMPARE(rowOf(document, 2, 1, 5), words("A 0 1 1 1"));
        QCOMPARE(rowOf(document, 3, 1, 5), words("B 1 1 1 1"));
        QVERIFY(document.selectSheet("Variability compare 1"));
        QCOMPARE(rowOf(document, 2, 1, 5), words("A 0 0 0 0"));
        QCOMPARE(rowOf(document, 3, 1, 5), words("B 1 0 1 0.5"));
        QVERIFY(document.selectSheet("Variability compare 3"));
        QCOMPARE(rowOf(document, 2, 1, 5), words("A 1 0 1 0.5"));
        QCOMPARE(rowOf(document, 3, 1, 5), words("B 1 1 0 0.5"));
    }

    void secondVariabilitySheetHasAForeignHeading()
    {
        // By the standard deviation the first is better, by the two others worse.
        const TestGroup group = TestGroup::ofScores({{1, 1, 1}, {2, 2, 2}}, {{1, 2, 2}, {2, 1, 1}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Variability compare 2"));
        QCOMPARE(document.read(1, 3).toString(), "Median difference");
        QCOMPARE(rowOf(document, 2, 1, 5), words("A 1 0 1 0.5"));
    }

    void varAnovaStartsWithTheStandardDeviation()
    {
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        QVERIFY(document.selectSheet("VarAnova"));
        QCOMPARE(document.read(1, 1).toString(), "Standard deviation");
        QCOMPARE(document.read(1, 2).toString(), "Difference standard deviation offset 3");
    }

    void unmarkedPatientsHitNothing()
    {
        const TestGroup group = TestGroup::ofScores({{1, 1, 1}, {5, 5, 5}}, {{1, 1, 1}, {5, 5, 5}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("IdealCompare"));
        QCOMPARE(rowOf(document, 2, 1, 12), words("A -1 0 0 0 0 0 0 0 0 0 -"));
        QCOMPARE(rowOf(document, 3, 1, 12), words("B -1 0 0 0 0 0 0 0 0 0 -"));
    }

    void hitsUnderAllPairs()
    {
        TestGroup group = TestGroup::ofScores({{1, 1, 1}, {5, 5, 5}}, {{1, 1, 1}, {5, 5, 5}});
        group.patients[0].idealKvadrant = 3;
        group.patients[1].idealKvadrant = 2;
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("IdealCompare"));
        QCOMPARE(rowOf(document, 2, 1, 12), words("A 3 1 1 1 1 1 1 1 1 1 -"));
        QCOMPARE(rowOf(document, 3, 1, 12), words("B 2 0 0 0 0 0 0 0 0 0 -"));
    }

    void hitUnderTheLastPairAloneShowsInTheShare()
    {
        // Medians 3 and 3: only the last pair puts the second patient below both.
        TestGroup group = TestGroup::ofScores({{1, 9, 9}, {5, 9, 1}}, {{1, 9, 9}, {5, 9, 1}});
        group.patients[1].idealKvadrant = 3;
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("IdealCompare"));
        QCOMPARE(rowOf(document, 3, 1, 10), words("B 3 0 0 0 0 0 0 0 0"));
        QCOMPARE(document.read(3, 11).toDouble(), 1.0 / 9.0);
        QCOMPARE(document.read(1, 11).toString(), "% same as reference");
    }

    // No scores miss under the last pair alone, so the kvadrants themselves are given.
    void missUnderTheLastPairAloneShowsInTheShare()
    {
        const auto fill = [](int, RowCells &cells) {
            putIdealCells(cells, 4, {4, 4, 4, 4, 4, 4, 4, 4, 3});
        };
        WorkbookWriter workbook;
        workbook.addSheet({"Ideal", {1, fill}});
        QVERIFY(workbook.save("ideal.xlsx"));
        const QXlsx::Document document("ideal.xlsx");
        QCOMPARE(rowOf(document, 1, 1, 10), words("- 4 1 1 1 1 1 1 1 1"));
        QCOMPARE(difference(document.read(1, 11).toDouble(), 8.0 / 9.0, 0), QString());
    }

    void emptyPairsAreMisses()
    {
        TestGroup group = TestGroup::ofScores({{1, 1, 1}, {5, 5, 5}}, {{1, 1, 1}, {5, 5, 5}});
        group.patients[1].idealKvadrant = 1;
        group.scores[1].convergence[2] = notANumber;
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("IdealCompare"));
        QCOMPARE(rowOf(document, 3, 1, 10), words("B 1 1 1 1 1 1 1 0 0"));
        QCOMPARE(document.read(3, 11).toDouble(), 6.0 / 9.0);
    }

    void averagesReachNoCell()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.averageCenter = {{}, {1e9, -1e9, notANumber}, {-1e9, 1e9, notANumber}};
        const Book book = ExpectedAnalysis::book(group, "3");
        QCOMPARE(ExpectedSheets::differences(written(group), book), QString());
    }

    void settingOfTheCenterChangesNothing()
    {
        // Median 2, mean 4: with the mean the middle patient would be better.
        const TestGroup group = TestGroup::ofScores({{1, 1, 1}, {2, 2, 2}, {9, 9, 9}},
                                                    {{1, 1, 1}, {2, 2, 2}, {9, 9, 9}});
        for (const int median : {0, 1}) {
            useSettings(settingsText(0, 0, median));
            QXlsx::Document document(written(group));
            QVERIFY(document.selectSheet("Median"));
            QCOMPARE(rowOf(document, 3, 2, 10), words("1 1 1 1 1 1 1 1 1"));
        }
    }

    void identifierStaysText()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[0].id = "=1+1";
        group.patients[1].id = "http://example.org/";
        group.patients[2].id = "  007 ";
        group.patients[3].id = group.patients.at(0).id;
        const Book book = ExpectedAnalysis::book(group, "3");
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void nameIsTakenAsItStands()
    {
        const TestGroup group = TestGroup::ofSize(1);
        writeAnalysisWorkbook("no extension", group.patients, group.scores, group.averageCenter,
                              group.medianCenter);
        QVERIFY(QFileInfo("no extension").isFile());
        QVERIFY(!QFileInfo::exists("no extension.xlsx"));
    }

private:
    static QString written(const TestGroup &group)
    {
        QString path = "analysis.xlsx";
        QFile::remove(path);
        writeAnalysisWorkbook(path, group.patients, group.scores, group.averageCenter,
                              group.medianCenter);
        return path;
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestAnalysisWorkbook)
#include "tst_analysisworkbook.moc"
