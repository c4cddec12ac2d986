// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/analysisworkbook.h"

#include <QSet>
#include <QtTest>
#include <xlsxdocument.h>

#include "support/expectedanalysis.h"
#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/testgroups.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/idealsheet.h"
#include "xlsx/writing/workbookwriter.h"

using ExpectedSheets::Book;
using Numbers::infinity;
using Numbers::notANumber;
using TestWorkbooks::Saved;

namespace
{

QString written(const TestGroup &group)
{
    QString path = "analysis.xlsx";
    QFile::remove(path);
    writeAnalysisWorkbook(path, group.patients, group.scores, group.averageCenter,
                          group.medianCenter);
    return path;
}

// What is wrong with the workbook of the group; empty when nothing is.
QString differencesFor(const TestGroup &group, const QString &skipText)
{
    const Book book = ExpectedAnalysis::book(group, skipText);
    return ExpectedSheets::differences(written(group), book);
}

// Scores of a group, by patient and method.
using Scores = QVector<QVector<double>>;

const Scores lowAndHigh = {{1, 1, 1}, {5, 5, 5}};

// Data of cellsForScores(): scores and marks of a group, and lines of its workbook.
void addScoresColumns()
{
    QTest::addColumn<Scores>("convergence");
    QTest::addColumn<Scores>("variability");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QVector<int>>("ideals");
}

void addScores(const char *name, const Scores &convergence, const Scores &variability,
               const QStringList &lines, const QVector<int> &ideals = {-1, -1, -1, -1})
{
    QTest::newRow(name) << convergence << variability << lines << ideals;
}

TestGroup fetchedGroup()
{
    QFETCH(Scores, convergence);
    QFETCH(Scores, variability);
    QFETCH(QVector<int>, ideals);
    TestGroup group = TestGroup::ofScores(convergence, variability);
    for (int patient = 0; patient < group.patients.size(); ++patient) {
        group.patients[patient].idealKvadrant = ideals.at(patient);
    }
    return group;
}

void cellsForScores()
{
    QFETCH(QStringList, lines);
    const Saved saved(written(fetchedGroup()));
    for (const QString &line : lines) {
        QCOMPARE(saved.lineLike(line), line);
    }
}

} // namespace

class TestAnalysisWorkbook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { useSkip("3"); }

    void sheetsStandInOrder()
    {
        const QString names =
            "Median, Compare 1, Compare 2, Compare 3, Compare 4, Compare 5, Compare 6, Compare 7, "
            "Compare 8, Compare 9, AnovaMedian, Convergence&Variability, Covergence compare 1, "
            "Covergence compare 2, Covergence compare 3, ConvAnova, Variability compare 1, "
            "Variability compare 2, Variability compare 3, VarAnova, IdealCompare";
        const TestGroup unmarked = TestGroup::ofValues({{50, 45, 40}, {50, 55}});
        QCOMPARE(QXlsx::Document(written(unmarked)).sheetNames().join(", "), names);
    }

    void everyCellOfTheGroup_data() { TestGroup::addSizes(); }

    void everyCellOfTheGroup()
    {
        QFETCH(int, patientCount);
        QCOMPARE(differencesFor(TestGroup::ofSize(patientCount), "3"), QString());
    }

    void largeGroupHasMarksOfEveryKind()
    {
        const TestGroup group = TestGroup::ofSize(40);
        QSet<int> kvadrants;
        QSet<int> ideals;
        bool hit = false;
        for (int patient = 0; patient < 40; ++patient) {
            const int ideal = group.patients.at(patient).idealKvadrant;
            ideals.insert(ideal);
            for (int pair = 0; pair < 9; ++pair) {
                const int kvadrant = ExpectedAnalysis::kvadrant(group, patient, pair);
                kvadrants.insert(kvadrant);
                hit = hit || kvadrant == ideal;
            }
        }
        // 0 comes from patients of four values, of which the offset leaves no step.
        QCOMPARE(kvadrants, (QSet<int>{0, 1, 2, 3, 4}));
        QCOMPARE(ideals, (QSet<int>{-1, 1, 2, 3, 4}));
        QVERIFY(hit);
    }

    void everyCellForTheOffset_data()
    {
        TestGroup::addOffsets({{"0", "0"},
                               {"3", "3"},
                               {"4", "4"},
                               {"9", "9"},
                               {"36", "36"},
                               {"40", "40"},
                               {"2.9", "2"},
                               {"-1", "18446744073709551615"}});
    }

    void everyCellForTheOffset()
    {
        QFETCH(QByteArray, skip);
        QFETCH(QString, text);
        useSkip(skip);
        QCOMPARE(differencesFor(TestGroup::ofSize(4), text), QString());
    }

    void labels_data()
    {
        QTest::addColumn<QByteArray>("skip");
        QTest::addColumn<QString>("cell");
        QTest::addColumn<QString>("label");
        const auto row = [](const char *name, const char *skip, const char *cell,
                            const char *label) {
            QTest::newRow(name) << QByteArray(skip) << QString(cell) << QString(label);
        };
        row("offset of 0 is shown", "0", "Median C1",
            "Median difference + Difference standard Deviation + offset 0");
        row("reference pair ends in the offset", "3", "Compare 2 B1",
            "Reference: Median difference + Difference standard Deviation + offset 3");
        row("reference method ends in the offset", "4", "Variability compare 2 B1",
            "Reference: Difference standard deviation offset 4");
        row("method ends in the offset", "4", "Convergence&Variability H2",
            "Difference standard deviation offset 4");
        row("reference pair keeps its blank", "3", "Compare 6 B1",
            "Reference: Simple linear regression + Interquartile range");
        row("foreign heading of the second variability sheet", "3", "Variability compare 2 C1",
            "Median difference");
        row("VarAnova starts with the standard deviation", "3", "VarAnova A1",
            "Standard deviation");
        row("and its second column is the next method's", "3", "VarAnova B1",
            "Difference standard deviation offset 3");
        row("share takes the place of the last pair", "3", "IdealCompare K1",
            "% same as reference");
    }

    void labels()
    {
        QFETCH(QByteArray, skip);
        QFETCH(QString, cell);
        QFETCH(QString, label);
        useSkip(skip);
        QCOMPARE(Saved(written(TestGroup::ofSize(2))).cell(cell), label);
    }

    void everyCellForScores_data()
    {
        addScoresColumns();
        const Scores numbers = {{1, 2, 3}, {3, 1, 2}, {2, 3, 1}, {2, 2, 2}};
        for (int method = 0; method < 3; ++method) {
            Scores one = numbers;
            one[1][method] = notANumber;
            Scores most = numbers;
            most[0][method] = most[1][method] = most[2][method] = notANumber;
            const auto name = [method](const char *text) {
                return QString(text).arg(method).toLatin1();
            };
            addScores(name("NaN in convergence %1 of one"), one, numbers, {});
            addScores(name("NaN in variability %1 of one"), numbers, one, {});
            // The medians are NaN, too.
            addScores(name("NaN in convergence %1 of most"), most, numbers, {});
            addScores(name("NaN in variability %1 of most"), numbers, most, {});
            addScores(name("NaN in both %1"), most, one, {});
        }
        addScores("infinity", {{-infinity, 0, 0}, {1, 0, 0}, {infinity, 0, 0}},
                  {{infinity, 0, 0}, {infinity, 0, 0}, {0, 0, 0}}, {});
    }

    void everyCellForScores() { QCOMPARE(differencesFor(fetchedGroup(), "3"), QString()); }

    void kvadrants_data()
    {
        addScoresColumns();
        // The second patient is the median of either first method.
        addScores("1 on both medians", {{1, 0, 0}, {2, 0, 0}, {9, 0, 0}},
                  {{4, 0, 0}, {5, 0, 0}, {6, 0, 0}},
                  {"Median B2: 3", "Median B3: 1", "Median B4: 1"});
        // Medians 2 and 2: the second patient is on the one and below the other.
        addScores("4 on the median of convergence", {{1, 1, 1}, {2, 2, 2}, {9, 9, 9}},
                  {{2, 2, 2}, {1, 1, 1}, {9, 9, 9}}, {"Median B3: 4 4 4 4 4 4 4 4 4"});
        addScores("1 for two equal patients", {{3, 3, 3}, {3, 3, 3}}, {{4, 4, 4}, {4, 4, 4}},
                  {"Median B2: 1 1 1 1 1 1 1 1 1", "Median B3: 1 1 1 1 1 1 1 1 1"});
        addScores("infinity is a number", {{-infinity, 0, 0}, {1, 0, 0}, {infinity, 0, 0}},
                  {{infinity, 0, 0}, {infinity, 0, 0}, {0, 0, 0}},
                  {"Median B2: 2", "Median B3: 1", "Median B4: 4"});
        // Medians of the first methods 2 and 5, of the third 0.85 and 9.5. The last pair: all are
        // below 2, and none is below 5. Under the medians of the third methods the patients would
        // be in the kvadrants 3, 1, 4 and 2. The flags of the third patient do follow these: W/B.
        addScores("of all pairs by the medians of the first methods",
                  {{1, 0, 0.5}, {2, 0, 1.0}, {3, 0, 1.5}, {2, 0, 0.7}},
                  {{4, 0, 9}, {5, 0, 10}, {6, 0, 5}, {5, 0, 11}},
                  {"Median J2: 2", "Median J3: 2", "Median J4: 2", "Median J5: 2",
                   "Convergence&Variability D5: 1", "Convergence&Variability I5: 0"});
    }

    void kvadrants() { cellsForScores(); }

    void agreement_data()
    {
        addScoresColumns();
        QStringList lines;
        for (int number = 1; number <= 9; ++number) {
            lines << QString("Compare %1 B2: 3 1 1 1 1 1 1 1 1 1").arg(number)
                  << QString("Compare %1 B3: 1 1 1 1 1 1 1 1 1 1").arg(number);
        }
        // The first patient is below both medians with everything.
        addScores("equal kvadrants agree everywhere", lowAndHigh, lowAndHigh, lines);
        // Medians 3 and 3. The first patient is in kvadrant 3 under pair 0 and nowhere else. Pairs
        // 1 and 2 share kvadrant 2, pairs 3 and 6 kvadrant 4, the last four kvadrant 1.
        const Scores lone = {{1, 9, 9}, {5, 9, 9}};
        addScores("lone reference agrees with no pair", lone, lone,
                  {"Compare 1 B2: 3 0 0 0 0 0 0 0 0 0", "Compare 2 B2: 2 0 1 0 0 0 0 0 0 0.125",
                   "Compare 9 B2: 1 0 0 0 0 1 1 0 1 0.375"});
        // Pairs 1, 4, 6, 7 and 8 of the first are empty.
        addScores("empty kvadrants agree with each other", {{1, 1, notANumber}, {2, 2, 2}},
                  {{1, notANumber, 1}, {2, 2, 2}}, {"Compare 2 B2: 0 0 0 0 1 0 1 1 1 0.5"});
        // Flags of the first: 0 0 0 and 0 1 1; of the second: 1 1 1 and 1 0 1.
        addScores("of methods", {{1, 1, 1}, {2, 2, 2}}, {{1, 2, 2}, {2, 1, 2}},
                  {"Covergence compare 1 A2: A 0 1 1 1", "Covergence compare 1 A3: B 1 1 1 1",
                   "Variability compare 1 A2: A 0 0 0 0", "Variability compare 1 A3: B 1 0 1 0.5",
                   "Variability compare 3 A2: A 1 0 1 0.5",
                   "Variability compare 3 A3: B 1 1 0 0.5"});
        // By the standard deviation the first is better, by the two others worse.
        addScores("foreign heading changes no cell below", {{1, 1, 1}, {2, 2, 2}},
                  {{1, 2, 2}, {2, 1, 1}}, {"Variability compare 2 A2: A 1 0 1 0.5"});
    }

    void agreement() { cellsForScores(); }

    void flags_data()
    {
        addScoresColumns();
        addScores("on the median is worse", {{1, 7, 7}, {2, 8, 8}, {3, 9, 9}},
                  {{1, 7, 9}, {2, 8, 8}, {3, 9, 7}},
                  {"Convergence&Variability A3: A 0 0 0 - A 0 0 1",
                   "Convergence&Variability A4: B 1 1 1 - B 1 1 1",
                   "Convergence&Variability B5: 1 1 1 - C 1 1 0"});
        addScores("NaN counts as better", {{notANumber, 5, 5}, {1, 5, 5}},
                  {{7, notANumber, 7}, {7, 2, 7}},
                  {"Convergence&Variability B3: 0 1 1", "Convergence&Variability G3: 1 0 1"});
    }

    void flags() { cellsForScores(); }

    void idealKvadrants_data()
    {
        addScoresColumns();
        addScores("none is hit by no pair", lowAndHigh, lowAndHigh,
                  {"IdealCompare A2: A -1 0 0 0 0 0 0 0 0 0 -",
                   "IdealCompare A3: B -1 0 0 0 0 0 0 0 0 0 -"});
        addScores("hit by all pairs", lowAndHigh, lowAndHigh,
                  {"IdealCompare A2: A 3 1 1 1 1 1 1 1 1 1 -",
                   "IdealCompare A3: B 2 0 0 0 0 0 0 0 0 0 -"},
                  {3, 2});
        // Medians 3 and 3: only the last pair puts the second patient below both.
        const Scores lone = {{1, 9, 9}, {5, 9, 1}};
        addScores("hit by the last pair alone shows in the share", lone, lone,
                  {"IdealCompare A3: B 3 0 0 0 0 0 0 0 0 0.1111111111111111"}, {-1, 3});
        addScores("missed by empty pairs", {{1, 1, 1}, {5, 5, notANumber}}, lowAndHigh,
                  {"IdealCompare A3: B 1 1 1 1 1 1 1 0 0 0.6666666666666666"}, {-1, 1});
    }

    void idealKvadrants() { cellsForScores(); }

    // No scores miss under the last pair alone, so the kvadrants themselves are given.
    void missUnderTheLastPairAloneShowsInTheShare()
    {
        TestGroup group = TestGroup::ofSize(1);
        group.patients[0].idealKvadrant = 4;
        WorkbookWriter workbook;
        workbook.addSheet(idealSheet(group.patients, {{4, 4, 4, 4, 4, 4, 4, 4, 3}}, {}));
        QVERIFY(workbook.save("ideal.xlsx"));
        const QString line = "IdealCompare B2: 4 1 1 1 1 1 1 1 1 0.8888888888888888";
        QCOMPARE(Saved("ideal.xlsx").lineLike(line), line);
    }

    void notANumberLeavesTheKvadrantEmpty()
    {
        // Of the first no exponential fit, of the second no step after the offset of 3.
        TestGroup group =
            TestGroup::ofValues({{50, -1, 40, 30, 20}, {50, 40, 30, 20}, {9, 8, 7, 5, 4}});
        for (PatientRecord &patient : group.patients) {
            patient.idealKvadrant = 1;
        }
        const Saved saved(written(group));
        // The entry is written as 0, and counts as a miss.
        for (const QString line :
             {"Median H2: - - -", "Median C3: -", "Median F3: -", "Median I3: -", "Compare 7 B2: 0",
              "AnovaMedian C3: 0", "IdealCompare I2: 0"}) {
            QCOMPARE(saved.lineLike(line), line);
        }
        for (const char *cell : {"Median G2", "Median B3"}) {
            QVERIFY(saved.cell(cell) != "-");
        }
    }

    void comparedPairsLeaveOutTheReference_data()
    {
        QTest::addColumn<QVector<int>>("pairs");
        QTest::newRow("Compare 1") << QVector<int>{1, 2, 3, 4, 5, 6, 7, 8};
        QTest::newRow("Compare 5") << QVector<int>{0, 1, 2, 3, 5, 6, 7, 8};
        QTest::newRow("Compare 9") << QVector<int>{0, 1, 2, 3, 4, 5, 6, 7};
    }

    void comparedPairsLeaveOutTheReference()
    {
        QFETCH(QVector<int>, pairs);
        const Saved saved(written(TestGroup::ofSize(2)));
        for (int i = 0; i < 8; ++i) {
            const QString place = QString("%1 %2").arg(QTest::currentDataTag()).arg(QChar('C' + i));
            const QString heading = saved.cell(place + '1').replace("regression+", "regression +");
            QCOMPARE(heading, ExpectedAnalysis::pairLabel(pairs.at(i), "3"));
        }
    }

    void closedUpLabelStandsOnAllButOneCompareSheet()
    {
        QXlsx::Document document(written(TestGroup::ofSize(4)));
        const QStringList names = document.sheetNames();
        for (const QString &name : names) {
            QVERIFY(document.selectSheet(name));
            QStringList headings;
            for (int column = 1; column <= 220; ++column) {
                headings << document.read(1, column).toString();
            }
            const bool expected = name.startsWith("Compare ") && name != "Compare 6";
            QCOMPARE(headings.filter("regression+").size(), expected ? 1 : 0);
        }
    }

    void notesKeepTheirPlace_data()
    {
        QTest::addColumn<int>("patientCount");
        QTest::newRow("fewer rows than the notes") << 1;
        QTest::newRow("as many") << 4;
        QTest::newRow("more") << 40;
    }

    void notesKeepTheirPlace()
    {
        QFETCH(int, patientCount);
        const Saved saved(written(TestGroup::ofSize(patientCount)));
        for (const QString line :
             {"Median K5: - Information", "Compare 4 L5: - Information",
              "Convergence&Variability J5: - Information", "VarAnova R5: - - - - - - -"}) {
            QCOMPARE(saved.lineLike(line), line);
        }
        QCOMPARE(saved.cell("Median K6"), "-");
        QCOMPARE(saved.cell("Median L6"), "Numbers in columns 2 and higher = kvadrants");
        QCOMPARE(saved.cell("Compare 4 N8"), "1 - same, 0 - different");
        QCOMPARE(saved.cell("Convergence&Variability K6"),
                 "1 - worse than median, 0 better than median");
    }

    void anovaMedianStartsInTheSecondColumn()
    {
        const Saved saved(written(TestGroup::ofSize(2)));
        for (const char *empty : {"A1", "A2", "HF1", "HI1"}) {
            QCOMPARE(saved.cell(QString("AnovaMedian ") + empty), "-");
        }
        const QMap<QString, int> pairs = {{"B1", 0},  {"X1", 8},  {"Z1", 1},
                                          {"AA1", 0}, {"HG1", 8}, {"HH1", 7}};
        for (auto it = pairs.cbegin(); it != pairs.cend(); ++it) {
            QCOMPARE(saved.cell("AnovaMedian " + it.key()),
                     ExpectedAnalysis::pairLabel(it.value(), "3"));
        }
    }

    void averagesReachNoCell()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.averageCenter = {{}, {1e9, -1e9, notANumber}, {-1e9, 1e9, notANumber}};
        QCOMPARE(differencesFor(group, "3"), QString());
    }

    void settingOfTheCenterChangesNothing()
    {
        // Median 2, mean 4: with the mean the middle patient would be better.
        const Scores scores = {{1, 1, 1}, {2, 2, 2}, {9, 9, 9}};
        const QString line = "Median B3: 1 1 1 1 1 1 1 1 1";
        for (const int median : {0, 1}) {
            useSettings(settingsText(0, 0, median));
            QCOMPARE(Saved(written(TestGroup::ofScores(scores, scores))).lineLike(line), line);
        }
    }

    void identifierStaysText()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[0].id = "=1+1";
        group.patients[1].id = "http://example.org/";
        group.patients[2].id = "  007 ";
        group.patients[3].id = group.patients.at(0).id;
        QCOMPARE(differencesFor(group, "3"), QString());
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
    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestAnalysisWorkbook)
#include "tst_analysisworkbook.moc"
