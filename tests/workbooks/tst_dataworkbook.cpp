// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/dataworkbook.h"

#include <limits>

#include <QtTest>

#include "settings/cconfig.h"
#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/testgroups.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"

using ExpectedSheets::Book;
using ExpectedSheets::Cells;
using ExpectedSheets::put;
using Numbers::infinity;
using Numbers::notANumber;
using TestWorkbooks::Saved;

namespace
{

// As "Standard deviation difference offset" without its first three characters.
const QString clippedByThree = "ndard deviation difference offset";

void putNumber(Cells &cells, int row, int column, double value)
{
    if (qIsNaN(value)) {
        put(cells, row, column, "nan");
    } else if (qIsInf(value)) {
        put(cells, row, column, value > 0 ? "inf" : "-inf");
    } else {
        put(cells, row, column, value);
    }
}

// A column number as a spreadsheet names it.
QString columnLetters(int column)
{
    QString letters;
    for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
        letters.prepend(char('A' + (rest - 1) % 26));
    }
    return letters;
}

Book expectedBook(const TestGroup &group, const QString &clippedLabel = clippedByThree)
{
    Cells data;
    Cells results;
    QStringList series;
    const QStringList labels = {"Median difference", "Linear least squares",
                                "C*e^(k*x)",         "Standard deviation",
                                clippedLabel,        "Interquartile range"};
    for (int i = 0; i < 6; ++i) {
        put(results, i + 2, 1, labels.at(i));
    }
    for (int k = 0; k < group.patients.size(); ++k) {
        const PatientRecord &patient = group.patients.at(k);
        put(data, k + 2, 1, patient.id);
        put(results, 1, k + 2, patient.id);
        const int count = int(patient.values.size());
        for (int j = 0; j < count; ++j) {
            put(data, 1, j + 2, j + 1);
            putNumber(data, k + 2, j + 2, patient.values.at(j));
        }
        for (int method = 0; method < 3; ++method) {
            putNumber(results, 2 + method, k + 2, group.scores.at(k).convergence.at(method));
            putNumber(results, 5 + method, k + 2, group.scores.at(k).variability.at(method));
        }
        // A range of one cell is written as that cell.
        const QString last =
            count == 1 ? QString() : QString(":$%1$%2").arg(columnLetters(count + 1)).arg(k + 2);
        series.append(QString("Data!$B$%1").arg(k + 2) + last);
    }
    return {{"Data", data, {}}, {"Method result", results, {}}, {"Graph", {}, series}};
}

QString written(const TestGroup &group)
{
    QString path = "data.xlsx";
    QFile::remove(path);
    if (!writeDataWorkbook(path, group.patients, group.scores)) {
        qFatal("the result is always true");
    }
    return path;
}

// What is wrong with the workbook of the group; empty when nothing is.
QString differencesFor(const TestGroup &group, const QString &clippedLabel = clippedByThree)
{
    return ExpectedSheets::differences(written(group), expectedBook(group, clippedLabel));
}

} // namespace

class TestDataWorkbook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { useSkip("3"); }

    void everyCellOfTheGroup_data() { TestGroup::addSizes(); }

    void everyCellOfTheGroup()
    {
        QFETCH(int, patientCount);
        QCOMPARE(differencesFor(TestGroup::ofSize(patientCount)), QString());
    }

    void onePatientOfThreeValues()
    {
        const TestGroup group = TestGroup::ofValues({{50.5, 48, 47}});
        const Saved saved(written(group));
        for (const QString line : {"Data A1: - 1 2 3 -", "Data A2: A 50.5 48 47 -"}) {
            QCOMPARE(saved.lineLike(line), line);
        }
        QCOMPARE(expectedBook(group).at(2).series, QStringList{"Data!$B$2:$D$2"});
        QCOMPARE(differencesFor(group), QString());
    }

    void raggedRowsStopAtTheLastValue()
    {
        const TestGroup group = TestGroup::ofValues({{5, 4, 3, 2, 1}, {7, 8}});
        const Saved saved(written(group));
        for (const QString line : {"Data A1: - 1 2 3 4 5 -", "Data A3: B 7 8 -"}) {
            QCOMPARE(saved.lineLike(line), line);
        }
        QCOMPARE(expectedBook(group).at(2).series,
                 (QStringList{"Data!$B$2:$F$2", "Data!$B$3:$C$3"}));
        QCOMPARE(differencesFor(group), QString());
    }

    void columnOfResultsIsRowOfData()
    {
        const Saved saved(written(TestGroup::ofSize(4)));
        for (int k = 0; k < 4; ++k) {
            const QString id = QString("Patient %1").arg(k + 1);
            QCOMPARE(saved.cell(QString("Data A%1").arg(k + 2)), id);
            QCOMPARE(saved.cell("Method result " + columnLetters(k + 2) + '1'), id);
        }
    }

    void firstCornerStaysEmpty()
    {
        const Saved saved(written(TestGroup::ofSize(2)));
        QCOMPARE(saved.cell("Data A1"), "-");
        QCOMPARE(saved.cell("Method result A1"), "-");
    }

    void linearMethodHasItsOwnWording()
    {
        QCOMPARE(Saved(written(TestGroup::ofSize(1))).cell("Method result A3"),
                 "Linear least squares");
    }

    void skipShortensTheLabel_data()
    {
        TestGroup::addOffsets({{"0", "Standard deviation difference offset"},
                               {"1", "tandard deviation difference offset"},
                               {"2.9", "andard deviation difference offset"},
                               {"3", "ndard deviation difference offset"},
                               {"4", "dard deviation difference offset"},
                               {"9", "deviation difference offset"},
                               {"35", "t"},
                               {"36", ""},
                               {"37", ""},
                               {"40", ""},
                               {"5000000000", ""},
                               {"-1", ""},
                               {"no number", "Standard deviation difference offset"}});
    }

    void skipShortensTheLabel()
    {
        QFETCH(QByteArray, skip);
        QFETCH(QString, text);
        useSkip(skip);
        QCOMPARE(differencesFor(TestGroup::ofSize(2), text), QString());
    }

    void missingSettingsFileLeavesTheLabelWhole()
    {
        QVERIFY(QFile::remove("config.ini"));
        CConfig::resetInstance();
        QCOMPARE(Saved(written(TestGroup::ofSize(1))).cell("Method result A6"),
                 "Standard deviation difference offset");
    }

    void identifierStaysText_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("formula") << "=1+1";
        QTest::newRow("address") << "http://example.org/a?b=c&d";
        QTest::newRow("mail address") << "mailto:someone@example.org";
        QTest::newRow("file") << "file:///x";
        QTest::newRow("number") << "0012";
        QTest::newRow("exponent") << "1e5";
        QTest::newRow("date") << "2020-01-02";
        QTest::newRow("truth") << "TRUE";
        QTest::newRow("not a number") << "nan";
        QTest::newRow("markup") << "<b>bold</b> & \"quoted\" ]]>";
        QTest::newRow("blanks at the ends") << "  two  inside  ";
        QTest::newRow("only blanks") << "   ";
        QTest::newRow("tab and line feed") << "\ta\nb\t";
        QTest::newRow("apostrophe") << "'text";
        QTest::newRow("accents") << "P\xC5\x99\xC3\xADklad \xE2\x82\xAC";
        QTest::newRow("beyond the first plane") << "\xF0\x9F\x98\x80 x";
        QTest::newRow("label of a method") << "Median difference";
        QTest::newRow("empty") << "";
    }

    void identifierStaysText()
    {
        QFETCH(QString, id);
        TestGroup group = TestGroup::ofSize(2);
        group.patients[0].id = id;
        QCOMPARE(differencesFor(group), QString());
    }

    void unreadableCharactersAreReplaced_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("text");
        const QString mark(QChar::ReplacementCharacter);
        const QString a = "a";
        QTest::newRow("null") << QString(QChar(0)) + a << mark + a;
        QTest::newRow("bell") << a + QChar(7) + a << a + mark + a;
        QTest::newRow("escape") << QChar(27) + a << mark + a;
        QTest::newRow("vertical tab") << a + QChar(11) << a + mark;
        QTest::newRow("high half alone") << a + QChar(0xD83D) << a + mark;
        QTest::newRow("low half alone") << QChar(0xDE00) + a << mark + a;
        QTest::newRow("halves the wrong way round")
            << QString(QChar(0xDE00)) + QChar(0xD83D) << mark + mark;
        QTest::newRow("no character") << QString(QChar(0xFFFE)) + QChar(0xFFFF) << mark + mark;
    }

    void unreadableCharactersAreReplaced()
    {
        QFETCH(QString, id);
        QFETCH(QString, text);
        TestGroup group = TestGroup::ofSize(2);
        group.patients[1].id = id;
        const QString path = written(group);
        group.patients[1].id = text;
        QCOMPARE(ExpectedSheets::differences(path, expectedBook(group)), QString());
    }

    void longIdentifierIsCut()
    {
        TestGroup group = TestGroup::ofSize(2);
        group.patients[0].id = QString(32767, 'x');
        group.patients[1].id = QString(32766, 'y') + "\xF0\x9F\x98\x80";
        const QString path = written(group);
        // The second would end in half a character.
        group.patients[1].id = QString(32766, 'y') + QString(QChar::ReplacementCharacter);
        QCOMPARE(ExpectedSheets::differences(path, expectedBook(group)), QString());
    }

    void numbersKeepEveryDigit_data()
    {
        QTest::addColumn<double>("number");
        QTest::newRow("third") << 1.0 / 3.0;
        QTest::newRow("sum of tenths") << 0.1 + 0.2;
        QTest::newRow("one and the least step") << 1.0 + std::numeric_limits<double>::epsilon();
        QTest::newRow("largest") << std::numeric_limits<double>::max();
        QTest::newRow("smallest normal") << std::numeric_limits<double>::min();
        QTest::newRow("least of all") << std::numeric_limits<double>::denorm_min();
        QTest::newRow("negative") << -2.0 / 3.0;
        QTest::newRow("whole beyond fifteen digits") << 9007199254740993.0;
        QTest::newRow("zero") << 0.0;
        QTest::newRow("plain") << 48.7;
    }

    void numbersKeepEveryDigit()
    {
        QFETCH(double, number);
        TestGroup group = TestGroup::ofSize(4);
        // Between short and long ones.
        group.patients[1].values = {5, number, 6, number};
        group.patients[3].values = {number};
        group.scores[2].variability[1] = number;
        QCOMPARE(differencesFor(group), QString());
    }

    void numbersThatAreNotFiniteAreTexts()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[0].values = {1, notANumber, infinity, -infinity, 2};
        group.scores[1].convergence = {notANumber, infinity, -infinity};
        group.scores[2].variability = {-infinity, -notANumber, infinity};
        QCOMPARE(Saved(written(group)).lineLike("Data B2: ? ? ? ? ?"), "Data B2: 1 nan inf -inf 2");
        QCOMPARE(differencesFor(group), QString());
    }

    void resultsThatAreNotANumberAreTexts()
    {
        // A negative value has no exponential fit, and four values leave no step after an offset
        // of 3.
        const TestGroup group = TestGroup::ofValues({{50, -1, 40, 30, 20}, {50, 40, 30, 20}});
        const Saved saved(written(group));
        QCOMPARE(saved.cell("Method result B4"), "nan");
        QCOMPARE(saved.cell("Method result C6"), "nan");
        QVERIFY(saved.cell("Method result C4") != "nan");
        QVERIFY(saved.cell("Method result B6") != "nan");
        QCOMPARE(differencesFor(group), QString());
    }

    void patientWithoutValuesHasNoSeries()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[1].values.clear();
        Book book = expectedBook(group);
        book[2].series.removeAt(1);
        QCOMPARE(ExpectedSheets::differences(written(group), book), QString());
    }

    void patientsWithoutValuesHaveNoNumberedColumns()
    {
        TestGroup group = TestGroup::ofSize(1);
        group.patients[0].values.clear();
        const Saved saved(written(group));
        QCOMPARE(saved.cell("Data B1"), "-");
        QCOMPARE(saved.cell("Data A2"), group.patients.at(0).id);
    }

    void chartHasOneSeriesPerPatient_data()
    {
        QTest::addColumn<int>("patients");
        QTest::addColumn<int>("series");
        QTest::newRow("as many as a chart holds") << 255 << 255;
        QTest::newRow("one more") << 256 << 255;
        QTest::newRow("many") << 300 << 255;
    }

    void chartHasOneSeriesPerPatient()
    {
        QFETCH(int, patients);
        QFETCH(int, series);
        const TestGroup group = TestGroup::ofSize(patients);
        Book book = expectedBook(group);
        book[2].series = book.at(2).series.mid(0, series);
        QCOMPARE(book.at(2).series.size(), series);
        QCOMPARE(ExpectedSheets::differences(written(group), book), QString());
    }

    void seriesEndsAtTheLastColumn()
    {
        constexpr int lastColumn = 16384;
        const TestGroup group = TestGroup::ofValues({QVector<double>(17000, 5), {7, 8}});
        Book book = expectedBook(group);
        for (int row : {1, 2}) {
            for (int column = lastColumn + 1; column <= 17001; ++column) {
                QCOMPARE(book[0].cells.remove({row, column}), 1);
            }
        }
        book[2].series = QStringList{"Data!$B$2:$XFD$2", "Data!$B$3:$C$3"};
        QCOMPARE(ExpectedSheets::differences(written(group), book), QString());
    }

    void existingFileIsReplaced()
    {
        QFile file("old.xlsx");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("what stood here before");
        file.close();
        const TestGroup group = TestGroup::ofSize(2);
        QVERIFY(writeDataWorkbook(file.fileName(), group.patients, group.scores));
        QCOMPARE(ExpectedSheets::differences(file.fileName(), expectedBook(group)), QString());
    }

    void nameIsTakenAsItStands()
    {
        const TestGroup group = TestGroup::ofSize(1);
        QVERIFY(writeDataWorkbook("no extension", group.patients, group.scores));
        QVERIFY(QFileInfo("no extension").isFile());
        QVERIFY(!QFileInfo::exists("no extension.xlsx"));
    }

private:
    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestDataWorkbook)
#include "tst_dataworkbook.moc"
