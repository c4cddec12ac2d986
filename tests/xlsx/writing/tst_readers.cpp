// SPDX-License-Identifier: GPL-3.0-or-later
// What other programs read in a saved workbook.

#include <limits>

#include <QStandardPaths>
#include <QtTest>

#include "support/expectedsheets.h"
#include "support/workingfolder.h"
#include "xlsx/reading/workbookloader.h"
#include "xlsx/writing/workbookwriter.h"

using ExpectedSheets::Book;
using ExpectedSheets::put;

namespace
{

const QString path = "texts.xlsx";

QStringList plainTexts()
{
    return {"  two  inside  ",
            "   ",
            "=1+1",
            "007",
            "1e5",
            "2020-01-02",
            "TRUE",
            "A1",
            "'text",
            "http://example.org/a?b=c&d",
            "mailto:someone@example.org",
            R"("quoted" <b>&amp;</b> ]]>)",
            QString::fromUtf8("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D abc"),
            QString::fromUtf8("\xF0\x9F\x98\x80 x"),
            "\ta\tb",
            "a\nb",
            "\n\n",
            "_x041_",
            QString(32767, 'x')};
}

// A text that looks like an escape, and what the file has for it.
struct Escaped {
    QString text;
    QString written;
};

QVector<Escaped> escapedTexts()
{
    return {{"_x0041_", "_x005F_x0041_"},
            {"_x000D_", "_x005F_x000D_"},
            {"a_x00e9_b", "a_x005F_x00e9_b"},
            {"_x0041_x0042_", "_x005F_x0041_x005F_x0042_"}};
}

// Here openpyxl decodes once too often.
const Escaped escapeOfAnEscape = {"_x005F_x0041_", "_x005F_x005F_x005F_x0041_"};

QVector<double> numbers()
{
    return {1.0 / 3.0,
            48.7,
            -0.00001,
            100000,
            123456789012.25,
            std::numeric_limits<double>::max(),
            std::numeric_limits<double>::min()};
}

void putColumn(ExpectedSheets::Cells &cells, const QStringList &texts)
{
    for (const QString &text : texts) {
        put(cells, 1 + int(cells.size()), 1, text);
    }
}

// Texts in column 1, and numbers after the first of them.
Book bookOf(const QStringList &texts)
{
    ExpectedSheets::Cells cells;
    putColumn(cells, texts);
    int column = 2;
    for (const double number : numbers()) {
        put(cells, 1, column++, number);
    }
    return {{"Texts & numbers", cells, {}}};
}

bool save(const QStringList &texts)
{
    const auto fill = [texts](int row, RowCells &cells) {
        cells.text(1, texts.at(row - 1));
        int column = 2;
        for (const double number : row == 1 ? numbers() : QVector<double>()) {
            cells.number(column++, number);
        }
    };
    WorkbookWriter workbook;
    workbook.setOrigin("A program", "what it did");
    return workbook.addSheet({"Texts & numbers", {int(texts.size()), fill}}) && workbook.save(path);
}

QStringList hardTexts()
{
    QStringList texts = plainTexts();
    for (const Escaped &escaped : escapedTexts()) {
        texts.append(escaped.text);
    }
    return texts;
}

} // namespace

class TestReaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void glymarkReadsWhatWasSaved()
    {
        const QStringList texts = hardTexts() + QStringList(escapeOfAnEscape.text);
        QVERIFY(save(texts));
        const LoadedWorkbook loaded = loadWorkbook(path);
        QVERIFY(loaded.document);
        for (int i = 0; i < texts.size(); ++i) {
            QCOMPARE(loaded.document->read(i + 1, 1).toString(), texts.at(i));
        }
        int column = 2;
        for (const double number : numbers()) {
            QVERIFY(loaded.document->read(1, column++).toDouble() == number);
        }
    }

    void openpyxlReadsWhatWasSaved()
    {
        QVERIFY(save(hardTexts()));
        QCOMPARE(ExpectedSheets::differencesIn("openpyxl", path, bookOf(hardTexts())), QString());
    }

    // It knows no escapes and shows what the file has.
    void gnumericReadsWhatWasSaved()
    {
        if (QStandardPaths::findExecutable("ssconvert").isEmpty()) {
            QSKIP("Gnumeric is not installed");
        }
        QVERIFY(save(hardTexts()));
        QStringList texts = plainTexts();
        for (const Escaped &escaped : escapedTexts()) {
            texts.append(escaped.written);
        }
        QCOMPARE(ExpectedSheets::differencesIn("ssconvert", path, bookOf(texts)), QString());
    }

    // script/setup does not install it: it is larger than all else that the tests need.
    void libreOfficeReadsWhatWasSaved()
    {
        if (QStandardPaths::findExecutable("soffice").isEmpty()) {
            QSKIP("LibreOffice is not installed");
        }
        const QStringList texts = hardTexts() + QStringList(escapeOfAnEscape.text);
        QVERIFY(save(texts));
        QCOMPARE(ExpectedSheets::differencesIn("soffice", path, bookOf(texts)), QString());
    }

private:
    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestReaders)
#include "tst_readers.moc"
