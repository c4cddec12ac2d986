// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/dataworkbook.h"

#include <limits>

#include <QtTest>
#include <xlsxdocument.h>

#include "settings/cconfig.h"
#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/testgroups.h"
#include "support/workingfolder.h"

using ExpectedSheets::Book;
using ExpectedSheets::Cells;
using ExpectedSheets::put;
using Numbers::infinity;
using Numbers::notANumber;

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

Book expectedBook(const TestGroup &group, const QString &clippedLabel)
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

} // namespace

class TestDataWorkbook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { useSkip("3"); }

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
        const Book book = expectedBook(group, clippedByThree);
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void onePatientOfThreeValues()
    {
        const TestGroup group = TestGroup::ofValues({{50.5, 48, 47}});
        const QString path = written(group);
        QXlsx::Document document(path);
        QVERIFY(document.selectSheet("Data"));
        QCOMPARE(document.read(1, 2).toDouble(), 1.0);
        QCOMPARE(document.read(1, 3).toDouble(), 2.0);
        QCOMPARE(document.read(1, 4).toDouble(), 3.0);
        QCOMPARE(document.read(2, 1).toString(), "A");
        QCOMPARE(document.read(2, 2).toDouble(), 50.5);
        Book book = expectedBook(group, clippedByThree);
        QCOMPARE(book.at(2).series, QStringList{"Data!$B$2:$D$2"});
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void raggedRowsStopAtTheLastValue()
    {
        const TestGroup group = TestGroup::ofValues({{5, 4, 3, 2, 1}, {7, 8}});
        const QString path = written(group);
        QXlsx::Document document(path);
        QVERIFY(document.selectSheet("Data"));
        QCOMPARE(document.read(1, 6).toDouble(), 5.0);
        QVERIFY(!document.cellAt(1, 7));
        QCOMPARE(document.read(3, 3).toDouble(), 8.0);
        QVERIFY(!document.cellAt(3, 4));
        Book book = expectedBook(group, clippedByThree);
        QCOMPARE(book.at(2).series, (QStringList{"Data!$B$2:$F$2", "Data!$B$3:$C$3"}));
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void columnOfResultsIsRowOfData()
    {
        const TestGroup group = TestGroup::ofSize(4);
        QXlsx::Document document(written(group));
        for (int k = 0; k < 4; ++k) {
            const QString id = QString("Patient %1").arg(k + 1);
            QVERIFY(document.selectSheet("Data"));
            QCOMPARE(document.read(k + 2, 1).toString(), id);
            QVERIFY(document.selectSheet("Method result"));
            QCOMPARE(document.read(1, k + 2).toString(), id);
        }
    }

    void firstCornerStaysEmpty()
    {
        QXlsx::Document document(written(TestGroup::ofSize(2)));
        for (const char *name : {"Data", "Method result"}) {
            QVERIFY(document.selectSheet(name));
            QVERIFY(!document.cellAt(1, 1));
        }
    }

    void linearMethodHasItsOwnWording()
    {
        QXlsx::Document document(written(TestGroup::ofSize(1)));
        QVERIFY(document.selectSheet("Method result"));
        QCOMPARE(document.read(3, 1).toString(), "Linear least squares");
    }

    void skipShortensTheLabel_data()
    {
        QTest::addColumn<QString>("skip");
        QTest::addColumn<QString>("label");
        QTest::newRow("0") << "0"
                           << "Standard deviation difference offset";
        QTest::newRow("1") << "1"
                           << "tandard deviation difference offset";
        QTest::newRow("2.9") << "2.9"
                             << "andard deviation difference offset";
        QTest::newRow("3") << "3"
                           << "ndard deviation difference offset";
        QTest::newRow("4") << "4"
                           << "dard deviation difference offset";
        QTest::newRow("9") << "9"
                           << "deviation difference offset";
        QTest::newRow("35") << "35"
                            << "t";
        QTest::newRow("36") << "36"
                            << "";
        QTest::newRow("37") << "37"
                            << "";
        QTest::newRow("40") << "40"
                            << "";
        QTest::newRow("5000000000") << "5000000000"
                                    << "";
        QTest::newRow("-1") << "-1"
                            << "";
        QTest::newRow("no number") << "abc"
                                   << "Standard deviation difference offset";
    }

    void skipShortensTheLabel()
    {
        QFETCH(QString, skip);
        QFETCH(QString, label);
        useSkip(skip.toLatin1());
        const TestGroup group = TestGroup::ofSize(2);
        const Book book = expectedBook(group, label);
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void missingSettingsFileLeavesTheLabelWhole()
    {
        QVERIFY(QFile::remove("config.ini"));
        CConfig::resetInstance();
        QXlsx::Document document(written(TestGroup::ofSize(1)));
        QVERIFY(document.selectSheet("Method result"));
        QCOMPARE(document.read(6, 1).toString(), "Standard deviation difference offset");
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
        const Book book = expectedBook(group, clippedByThree);
        const QString path = written(group);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
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
        const Book book = expectedBook(group, clippedByThree);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void longIdentifierIsCut()
    {
        TestGroup group = TestGroup::ofSize(2);
        group.patients[0].id = QString(32767, 'x');
        group.patients[1].id = QString(32766, 'y') + "\xF0\x9F\x98\x80";
        const QString path = written(group);
        // The second would end in half a character.
        group.patients[1].id = QString(32766, 'y') + QString(QChar::ReplacementCharacter);
        QCOMPARE(ExpectedSheets::differences(path, expectedBook(group, clippedByThree)), QString());
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
        // Between others, some short and some long.
        group.patients[1].values = {5, number, 6, number};
        group.patients[3].values = {number};
        group.scores[2].variability[1] = number;
        const QString path = written(group);
        const Book book = expectedBook(group, clippedByThree);
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void numbersThatAreNotFiniteAreTexts()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[0].values = {1, notANumber, infinity, -infinity, 2};
        group.scores[1].convergence = {notANumber, infinity, -infinity};
        group.scores[2].variability = {-infinity, -notANumber, infinity};
        const QString path = written(group);
        const Book book = expectedBook(group, clippedByThree);
        QCOMPARE(book.at(0).cells.value({2, 3}).toString(), "nan");
        QCOMPARE(book.at(0).cells.value({2, 4}).toString(), "inf");
        QCOMPARE(book.at(0).cells.value({2, 5}).toString(), "-inf");
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void resultsThatAreNotANumberAreTexts()
    {
        // A negative value has no exponential fit, and four values leave no step behind an offset
        // of 3.
        const TestGroup group = TestGroup::ofValues({{50, -1, 40, 30, 20}, {50, 40, 30, 20}});
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Method result"));
        QCOMPARE(document.read(4, 2), QVariant("nan"));
        QCOMPARE(document.read(6, 3), QVariant("nan"));
        QCOMPARE(document.read(4, 3).userType(), int(QMetaType::Double));
        QCOMPARE(document.read(6, 2).userType(), int(QMetaType::Double));
    }

    void patientWithoutValuesHasNoSeries()
    {
        TestGroup group = TestGroup::ofSize(4);
        group.patients[1].values.clear();
        const QString path = written(group);
        Book book = expectedBook(group, clippedByThree);
        book[2].series.removeAt(1);
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void patientsWithoutValuesHaveNoNumberedColumns()
    {
        TestGroup group = TestGroup::ofSize(1);
        group.patients[0].values.clear();
        QXlsx::Document document(written(group));
        QVERIFY(document.selectSheet("Data"));
        QVERIFY(!document.cellAt(1, 2));
        QCOMPARE(document.read(2, 1).toString(), group.patients.at(0).id);
    }

    void chartHasOneSeriesAPatient_data()
    {
        QTest::addColumn<int>("patients");
        QTest::addColumn<int>("series");
        QTest::newRow("as many as a chart holds") << 255 << 255;
        QTest::newRow("one more") << 256 << 255;
        QTest::newRow("many") << 300 << 255;
    }

    void chartHasOneSeriesAPatient()
    {
        QFETCH(int, patients);
        QFETCH(int, series);
        const TestGroup group = TestGroup::ofSize(patients);
        const QString path = written(group);
        Book book = expectedBook(group, clippedByThree);
        book[2].series = book.at(2).series.mid(0, series);
        QCOMPARE(book.at(2).series.size(), series);
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void seriesEndsAtTheLastColumn()
    {
        constexpr int lastColumn = 16384;
        const TestGroup group = TestGroup::ofValues({QVector<double>(17000, 5), {7, 8}});
        const QString path = written(group);
        Book book = expectedBook(group, clippedByThree);
        for (int row : {1, 2}) {
            for (int column = lastColumn + 1; column <= 17001; ++column) {
                QCOMPARE(book[0].cells.remove({row, column}), 1);
            }
        }
        book[2].series = QStringList{"Data!$B$2:$XFD$2", "Data!$B$3:$C$3"};
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void existingFileIsReplaced()
    {
        QFile file("old.xlsx");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("what stood here before");
        file.close();
        const TestGroup group = TestGroup::ofSize(2);
        QVERIFY(writeDataWorkbook(file.fileName(), group.patients, group.scores));
        QCOMPARE(ExpectedSheets::differences(file.fileName(), expectedBook(group, clippedByThree)),
                 QString());
    }

    void nameIsTakenAsItStands()
    {
        const TestGroup group = TestGroup::ofSize(1);
        QVERIFY(writeDataWorkbook("no extension", group.patients, group.scores));
        QVERIFY(QFileInfo("no extension").isFile());
        QVERIFY(!QFileInfo::exists("no extension.xlsx"));
    }

private:
    static QString written(const TestGroup &group)
    {
        QString path = "data.xlsx";
        QFile::remove(path);
        if (!writeDataWorkbook(path, group.patients, group.scores)) {
            qFatal("the result is always true");
        }
        return path;
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestDataWorkbook)
#include "tst_dataworkbook.moc"
