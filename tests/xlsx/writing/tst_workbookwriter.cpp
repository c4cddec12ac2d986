// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/writing/workbookwriter.h"

#include <ctime>
#include <limits>

#include <QtTest>
#include <QXmlStreamReader>

#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "xlsx/formatlimits.h"
#include "xlsx/reading/workbookloader.h"

using ExpectedSheets::Book;
using ExpectedSheets::Cells;
using ExpectedSheets::put;

namespace
{

const QString path = "cells.xlsx";
constexpr double third = 1.0 / 3.0;

// A sheet with these cells.
CellSheet sheetOf(const QString &name, const Cells &cells)
{
    const int rows = cells.isEmpty() ? 0 : cells.lastKey().first;
    return {name, {rows, [cells](int row, RowCells &out) {
                       for (auto it = cells.lowerBound({row, 0}); it != cells.end(); ++it) {
                           const auto [cellRow, column] = it.key();
                           if (cellRow != row) {
                               break;
                           }
                           if (it->userType() == QMetaType::QString) {
                               out.text(column, it->toString());
                           } else {
                               out.number(column, it->toDouble());
                           }
                       }
                   }}};
}

template<typename Content>
Cells cellsOf(int row, int column, const Content &content)
{
    Cells cells;
    put(cells, row, column, content);
    return cells;
}

CellSheet sheetOfText(const QString &text)
{
    return sheetOf("Sheet", cellsOf(1, 1, text));
}

bool save(const CellSheet &sheet)
{
    WorkbookWriter workbook;
    return workbook.addSheet(sheet) && workbook.save(path);
}

// What is wrong with the saved sheet; empty when nothing is.
QString differences(const Cells &expected)
{
    return ExpectedSheets::differences(path, {{"Sheet", expected, {}}});
}

} // namespace

class TestWorkbookWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersKeepTheirSheetAndTheirPlace()
    {
        WorkbookWriter workbook;
        Book book;
        for (int i = 0; i < 12; ++i) {
            const QString name = QString("Sheet %1").arg(i);
            Cells cells;
            for (const int column : {1, 26, 27, 702, 703}) {
                put(cells, 20 - i, column, i % 3 == 0 ? double(i) : i + third * column);
            }
            QVERIFY(workbook.addSheet(sheetOf(name, cells)));
            book.append({name, cells, {}});
        }
        QVERIFY(workbook.save(path));
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
    }

    void numberIsItsShortestDigits_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QByteArray>("digits");
        QTest::newRow("whole") << 48.0 << QByteArray("48");
        QTest::newRow("negative") << -1.0 << QByteArray("-1");
        QTest::newRow("zero") << 0.0 << QByteArray("0");
        QTest::newRow("negative zero") << -0.0 << QByteArray("-0");
        QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
        QTest::newRow("third") << third << QByteArray("0.3333333333333333");
        QTest::newRow("whole with zeros") << 100000.0 << QByteArray("100000");
        QTest::newRow("largest whole") << 999999999999999.0 << QByteArray("999999999999999");
        QTest::newRow("beyond") << 1e15 << QByteArray("1e+15");
        QTest::newRow("largest") << std::numeric_limits<double>::max()
                                 << QByteArray("1.7976931348623157e+308");
        QTest::newRow("least") << std::numeric_limits<double>::denorm_min() << QByteArray("5e-324");
    }

    void numberIsItsShortestDigits()
    {
        QFETCH(double, number);
        QFETCH(QByteArray, digits);
        const Cells cells = cellsOf(1, 1, number);
        QVERIFY(save(sheetOf("Sheet", cells)));
        QVERIFY(TestWorkbooks::part(path, "xl/worksheets/sheet1.xml")
                    .contains("<v>" + digits + "</v>"));
        QCOMPARE(differences(cells), QString());
    }

    void whatIsNotFiniteIsAText()
    {
        const auto fill = [](int /*row*/, RowCells &cells) {
            cells.number(1, Numbers::notANumber);
            cells.number(2, Numbers::infinity);
            cells.number(3, -Numbers::infinity);
        };
        QVERIFY(save({"Sheet", {1, fill}}));
        Cells expected;
        put(expected, 1, 1, QString("nan"));
        put(expected, 1, 2, QString("inf"));
        put(expected, 1, 3, QString("-inf"));
        QCOMPARE(differences(expected), QString());
    }

    void sheetTellsItsExtentAndItsRows()
    {
        Cells cells;
        put(cells, 2, 3, 1.5);
        put(cells, 2, 28, QString("a"));
        put(cells, 5, 2, 7.0);
        QVERIFY(save(sheetOf("Sheet", cells)));
        const QByteArray xml = TestWorkbooks::part(path, "xl/worksheets/sheet1.xml");
        QVERIFY(xml.contains(R"(<dimension ref="B2:AB5"/>)"));
        QVERIFY(xml.contains(R"(<sheetData><row r="2"><c r="C2" t="n"><v>1.5</v></c>)"
                             R"(<c r="AB2" t="s"><v>0</v></c></row>)"
                             R"(<row r="5"><c r="B5" t="n"><v>7</v></c></row></sheetData>)"));
    }

    void partsAreXmlOfVersionOne_data()
    {
        QTest::addColumn<QByteArray>("part");
        for (const char *part :
             {"docProps/core.xml", "xl/sharedStrings.xml", "xl/worksheets/sheet1.xml"}) {
            QTest::newRow(part) << QByteArray(part);
        }
    }

    void partsAreXmlOfVersionOne()
    {
        QFETCH(const QByteArray, part);
        QVERIFY(save(sheetOfText("text")));
        QXmlStreamReader xml(TestWorkbooks::part(path, part));
        QCOMPARE(xml.readNext(), QXmlStreamReader::StartDocument);
        QCOMPARE(xml.documentVersion().toString(), "1.0");
        QCOMPARE(xml.documentEncoding().toString(), "UTF-8");
        while (!xml.atEnd()) {
            xml.readNext();
        }
        QCOMPARE(xml.errorString(), QString());
    }

    void sheetOfOneCellAndOfNone()
    {
        QVERIFY(save(sheetOf("Sheet", cellsOf(3, 2, 1.0))));
        QVERIFY(TestWorkbooks::part(path, "xl/worksheets/sheet1.xml")
                    .contains(R"(<dimension ref="B3"/>)"));
        QVERIFY(save(sheetOf("Sheet", {})));
        QVERIFY(TestWorkbooks::part(path, "xl/worksheets/sheet1.xml")
                    .contains(R"(<dimension ref="A1"/>)"));
        QCOMPARE(differences({}), QString());
    }

    void cellsBeyondTheLastColumnAreLeftOut()
    {
        const auto fill = [](int /*row*/, RowCells &cells) {
            cells.number(16384, third);
            cells.number(16385, third);
            cells.text(16386, "text");
        };
        QVERIFY(save({"Sheet", {1, fill}}));
        QCOMPARE(differences(cellsOf(1, 16384, third)), QString());
    }

    void lastColumnTakesATextAndANumberThatIsNone()
    {
        const auto fill = [](int row, RowCells &cells) {
            if (row == 1) {
                cells.text(16384, "last");
            } else {
                cells.number(16384, Numbers::infinity);
            }
            cells.text(16385, "beyond");
        };
        QVERIFY(save({"Sheet", {2, fill}}));
        ExpectedSheets::Cells expected;
        put(expected, 1, 16384, QString("last"));
        put(expected, 2, 16384, QString("inf"));
        const Book book = {{"Sheet", expected, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
    }

    void sharedTextsAreCounted()
    {
        const auto fill = [](int row, RowCells &cells) {
            cells.text(1, "in each row");
            if (row == 2) {
                cells.text(2, "once");
            }
            cells.number(3, row);
        };
        WorkbookWriter workbook;
        QVERIFY(workbook.addSheet({"One", {3, fill}}));
        QVERIFY(workbook.addSheet({"Two", {3, fill}}));
        QVERIFY(workbook.save(path));
        // Two different texts: one in six cells, one in two.
        QVERIFY(TestWorkbooks::part(path, "xl/sharedStrings.xml")
                    .contains(R"( count="8" uniqueCount="2">)"));
    }

    void propertiesNameTheOrigin()
    {
        WorkbookWriter workbook;
        QVERIFY(workbook.addSheet(sheetOfText("text")));
        workbook.setOrigin(QString::fromUtf8("Mérő & <co>"), QString("offset") + QChar(0xd800));
        QVERIFY(workbook.save(path));
        const QByteArray properties = TestWorkbooks::part(path, "docProps/core.xml");
        QVERIFY(properties.contains("<dc:creator>Mérő &amp; &lt;co&gt;</dc:creator>"
                                    "<dc:description>offset\xEF\xBF\xBD</dc:description>"));
        QVERIFY(loadWorkbook(path).document);
    }

    void propertiesNameNothingUnasked()
    {
        QVERIFY(save(sheetOfText("text")));
        const QByteArray properties = TestWorkbooks::part(path, "docProps/core.xml");
        QVERIFY(properties.endsWith("elements/1.1/\"></cp:coreProperties>"));
    }

    void rowsBeyondTheLastAreLeftOut()
    {
        constexpr int lastRow = 1048576;
        const auto fill = [](int row, RowCells &cells) {
            if (row >= lastRow) {
                cells.number(1, row);
            }
        };
        QVERIFY(save({"Sheet", {lastRow + 5, fill}}));
        const QByteArray xml = TestWorkbooks::part(path, "xl/worksheets/sheet1.xml");
        QVERIFY(xml.contains(R"(<dimension ref="A1048576"/>)"));
        QCOMPARE(xml.count("<row "), 1);
    }

    void carriageReturnsBecomeLineFeeds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("alone") << "a\rb"
                               << "a\nb";
        QTest::newRow("with its line feed") << "a\r\nb"
                                            << "a\nb";
        QTest::newRow("after a line feed") << "a\n\rb"
                                           << "a\n\nb";
        QTest::newRow("two") << "\r\r\n"
                             << "\n\n";
        // CR LF counts as one character.
        const QString longest(FormatLimits::textLength - 1, 'x');
        QTest::newRow("longest text") << "\r\n" + longest << '\n' + longest;
    }

    void carriageReturnsBecomeLineFeeds()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QVERIFY(save(sheetOfText(text)));
        QCOMPARE(differences(cellsOf(1, 1, expected)), QString());
        // XML readers would turn a carriage return into a line feed.
        const QByteArray strings = TestWorkbooks::part(path, "xl/sharedStrings.xml");
        QVERIFY(strings.contains('\n'));
        QVERIFY(!strings.contains('\r'));
    }

    // Without the mark some readers drop blanks at the ends and join lines.
    void textsThatNeedTheirBlanksAreMarked_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("marked");
        QTest::newRow("blank at the start") << " a" << true;
        QTest::newRow("blank at the end") << "a " << true;
        QTest::newRow("line feed inside") << "a\nb" << true;
        QTest::newRow("tab inside") << "a\tb" << true;
        QTest::newRow("blank inside") << "a b" << false;
        QTest::newRow("empty") << "" << false;
    }

    void textsThatNeedTheirBlanksAreMarked()
    {
        QFETCH(const QString, text);
        QFETCH(const bool, marked);
        QVERIFY(save(sheetOfText(text)));
        const QByteArray strings = TestWorkbooks::part(path, "xl/sharedStrings.xml");
        const QByteArray start = marked ? R"(<si><t xml:space="preserve">)" : "<si><t>";
        QVERIFY(strings.contains(start + text.toUtf8() + "</t></si>"));
    }

    void textThatLooksLikeAnEscapeIsEscaped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("letter") << "_x0041_" << QByteArray("_x005F_x0041_");
        QTest::newRow("carriage return") << "a_x000D_b" << QByteArray("a_x005F_x000D_b");
        QTest::newRow("small digits") << "_x00e9_" << QByteArray("_x005F_x00e9_");
        QTest::newRow("escape of an escape")
            << "_x005F_x0041_" << QByteArray("_x005F_x005F_x005F_x0041_");
        QTest::newRow("two with a common line")
            << "_x0041_x0042_" << QByteArray("_x005F_x0041_x005F_x0042_");
        QTest::newRow("three digits") << "_x041_" << QByteArray("_x041_");
        QTest::newRow("no hexadecimal digit") << "_x00G1_" << QByteArray("_x00G1_");
        QTest::newRow("large x") << "_X0041_" << QByteArray("_X0041_");
        QTest::newRow("no end") << "_x0041" << QByteArray("_x0041");
    }

    void textThatLooksLikeAnEscapeIsEscaped()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, written);
        QVERIFY(save(sheetOfText(text)));
        QVERIFY(
            TestWorkbooks::part(path, "xl/sharedStrings.xml").contains("<t>" + written + "</t>"));
        const LoadedWorkbook loaded = loadWorkbook(path);
        QVERIFY(loaded.document);
        QCOMPARE(loaded.document->read(1, 1).toString(), text);
    }

    void nameOfAnEarlierSheetIsRefused()
    {
        const Cells inFirst = cellsOf(1, 1, third);
        const Cells inSecond = cellsOf(1, 1, 2 * third);
        WorkbookWriter workbook;
        QVERIFY(workbook.addSheet(sheetOf("First", inFirst)));
        QVERIFY(!workbook.addSheet(sheetOf("First", inSecond)));
        QVERIFY(!workbook.addChartSheet("First"));
        QVERIFY(workbook.addSheet(sheetOf("Second", inSecond)));
        QVERIFY(workbook.save(path));
        const Book book = {{"First", inFirst, {}}, {"Second", inSecond, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
    }

    void workbookWithoutCellsCanBeRead()
    {
        WorkbookWriter workbook;
        QVERIFY(workbook.addChartSheet("Empty"));
        QVERIFY(workbook.save(path));
        const Book book = {{"Empty", {}, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
    }

#ifdef Q_OS_UNIX
    // Neither the time nor the zone of the saving shows.
    void sameCellsGiveTheSameBytes()
    {
        const CellSheet sheet = sheetOfText("text");
        const QByteArray zone = qgetenv("TZ");
        QVector<QByteArray> files;
        // Archives count in steps of two seconds.
        const auto step = [] { return QDateTime::currentSecsSinceEpoch() / 2; };
        qint64 first = 0;
        for (const char *name : {"UTC", "Pacific/Kiritimati", "America/New_York"}) {
            QVERIFY(QTest::qWaitFor([step, first] { return step() != first; }));
            qputenv("TZ", name);
            tzset();
            QVERIFY(save(sheet));
            files.append(m_folder.readFile(path));
            first = first == 0 ? step() : first;
        }
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
        tzset();
        QVERIFY(!files.at(0).isEmpty());
        QCOMPARE(files.at(1), files.at(0));
        QCOMPARE(files.at(2), files.at(0));
    }
#endif

private:
    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookWriter)
#include "tst_workbookwriter.moc"
