#include "xlsx/workbookwriter.h"

#include <QtTest>

#include "support/expectedsheets.h"
#include "support/numbers.h"
#include "support/workingfolder.h"
#include "xlsx/zippackage.h"

using ExpectedSheets::Book;
using ExpectedSheets::put;

namespace
{

const QString sheetName = "Sheet";
const QString path = "cells.xlsx";
constexpr double third = 1.0 / 3.0;

// A part of a workbook as it stands in the file; empty if it cannot be read.
QByteArray partOf(const QString &workbook, const QByteArray &name)
{
    QFile file(workbook);
    ZipPackage package;
    QByteArray content;
    const auto append = [&content](const char *data, int size) {
        content.append(data, size);
        return true;
    };
    const bool read = file.open(QIODevice::ReadOnly) && package.open(&file) == LoadError::None
        && package.read(name, 1 << 20, append) == LoadError::None;
    return read ? content : QByteArray();
}

} // namespace

class TestWorkbookWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void laterContentOfACellStands()
    {
        WorkbookWriter cells;
        cells.addSheet(sheetName);
        ExpectedSheets::Cells expected;
        const auto write = [&cells](int row, double number) { cells.writeNumber(row, 1, number); };
        write(1, third);
        write(1, 2);
        put(expected, 1, 1, 2.0);
        write(2, third);
        cells.writeText(2, 1, "text");
        put(expected, 2, 1, "text");
        write(3, third);
        write(3, Numbers::notANumber);
        put(expected, 3, 1, "nan");
        write(4, 2);
        write(4, third);
        put(expected, 4, 1, third);
        QVERIFY(cells.save(path));
        const Book book = {{sheetName, expected, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void longNumbersOfAllSheetsStayApart()
    {
        WorkbookWriter cells;
        Book book;
        for (int i = 0; i < 12; ++i) {
            const QString name = QString("Sheet %1").arg(i);
            cells.addSheet(name);
            ExpectedSheets::Cells expected;
            for (int column : {27, 3, 1}) {
                // Every third sheet holds short numbers only.
                const double number = i % 3 == 0 ? i : i + third * column;
                cells.writeNumber(20 - i, column, number);
                put(expected, 20 - i, column, number);
            }
            book.append({name, expected, {}});
        }
        QVERIFY(cells.save(path));
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void cellsBeyondTheLastColumnAreLeftOut()
    {
        WorkbookWriter cells;
        cells.addSheet(sheetName);
        cells.writeNumber(1, 16384, third);
        cells.writeNumber(1, 16385, third);
        cells.writeText(1, 16386, "text");
        ExpectedSheets::Cells expected;
        put(expected, 1, 16384, third);
        QVERIFY(cells.save(path));
        const Book book = {{sheetName, expected, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

    void carriageReturnsBecomeLineFeeds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("alone") << "a\rb"
                               << "a\nb";
        QTest::newRow("with its line feed") << "a\r\nb"
                                            << "a\nb";
        QTest::newRow("behind a line feed") << "a\n\rb"
                                            << "a\n\nb";
        QTest::newRow("two") << "\r\r\n"
                             << "\n\n";
        // Only one of the two characters counts.
        const QString longest(WorkbookWriter::largestTextLength - 1, 'x');
        QTest::newRow("longest text") << "\r\n" + longest << '\n' + longest;
    }

    void carriageReturnsBecomeLineFeeds()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        WorkbookWriter cells;
        cells.addSheet(sheetName);
        cells.writeText(1, 1, text);
        ExpectedSheets::Cells content;
        put(content, 1, 1, expected);
        QVERIFY(cells.save(path));
        const Book book = {{sheetName, content, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
        // Readers of XML turn a carriage return into a line feed before anybody sees it.
        const QByteArray strings = partOf(path, "xl/sharedStrings.xml");
        QVERIFY(strings.contains('\n'));
        QVERIFY(!strings.contains('\r'));
    }

    void nameOfAnEarlierSheetIsRefused()
    {
        const QString second = "Second";
        WorkbookWriter cells;
        QVERIFY(cells.addSheet(sheetName));
        QVERIFY(!cells.addSheet(sheetName));
        cells.writeNumber(1, 1, third);
        QVERIFY(cells.addSheet(second));
        cells.writeNumber(1, 1, 2 * third);
        ExpectedSheets::Cells inFirst;
        put(inFirst, 1, 1, third);
        ExpectedSheets::Cells inSecond;
        put(inSecond, 1, 1, 2 * third);
        QVERIFY(cells.save(path));
        const Book book = {{sheetName, inFirst, {}}, {second, inSecond, {}}};
        QCOMPARE(ExpectedSheets::differences(path, book), QString());
        QCOMPARE(ExpectedSheets::differencesElsewhere(path, book), QString());
    }

private:
    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookWriter)
#include "tst_workbookwriter.moc"
