// SPDX-License-Identifier: GPL-3.0-or-later
// What the message says of rows with too few values, in both languages.

#include <QCoreApplication>
#include <QTest>
#include <QTextDocument>
#include <QTranslator>

#include "support/handmadeworkbook.h"
#include "support/mainwindowtester.h"

namespace
{

const char *const reason = "Open file|Every patient needs at least two values. Nothing was "
                           "opened. These rows have fewer:\n";
const char *const czechReason = "Otevřít soubor|Každý pacient musí mít alespoň dvě hodnoty. Nic "
                                "nebylo otevřeno. Méně hodnot mají tyto řádky:\n";
const char *const rowIsAPatient = "\nEach row must be one patient: the identifier in column A, the "
                                  "values from column B on.";
const char *const czechRowIsAPatient = "\nKaždý řádek musí být jeden pacient: ve sloupci A "
                                       "identifikátor, od sloupce B hodnoty.";
const char *const fileName = "\n\nbad.xlsx";

QByteArray cellOfType(const char *type, const char *value)
{
    return QByteArray("<c t=\"") + type + "\"><v>" + value + "</v></c>";
}

QByteArray cellOfFormat(const char *format, const char *value)
{
    return QByteArray("<c s=\"") + format + "\"><v>" + value + "</v></c>";
}

/// Three patients, of whom the second, in row 3, has \p cell in column B.
HandmadeWorkbook workbookWith(const QByteArray &cell)
{
    const auto row = [](const char *name, const QByteArray &first) {
        return cellOfType("str", name) + first + "<c><v>61</v></c><c><v>62</v></c>";
    };
    HandmadeWorkbook workbook;
    // No format, a date, a date with time, a time.
    workbook.styles = "<cellXfs><xf/><xf numFmtId=\"14\"/><xf numFmtId=\"22\"/>"
                      "<xf numFmtId=\"20\"/></cellXfs>";
    workbook.strings = "<si><t>60,5</t></si>";
    workbook.rows = sheetRows({{},
                               row("Novak", "<c><v>60</v></c>"),
                               row("Dvorak", cell),
                               row("Svoboda", "<c><v>60</v></c>")});
    return workbook;
}

/// The message about a workbook.
QString refusal(StartedTester &tester, const QVector<TestWorkbooks::Row> &rows)
{
    tester.openRefused("bad.xlsx", rows);
    return tester.answers.messages().constLast();
}

} // namespace

class TestShortRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellThatEndedTheRowIsNamed_data()
    {
        QTest::addColumn<QByteArray>("cell");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("czech");
        const auto row = [](const char *name, const QByteArray &cell, const char *english,
                            const char *czech) {
            QTest::newRow(name) << cell << QString(english) << QString(czech);
        };
        const auto text = [](const char *name, const QByteArray &cell, const char *shown) {
            QTest::newRow(name) << cell << QString("B3 \"%1\" is not a number").arg(shown)
                                << QString("„%1“ v buňce B3 není číslo").arg(shown);
        };
        text("shared text", cellOfType("s", "0"), "60,5");
        text("inline text", "<c t=\"inlineStr\"><is><t>60 mmol</t></is></c>", "60 mmol");
        text("placeholder", cellOfType("str", "%1 %3"), "%1 %3");
        text("no date", cellOfFormat("1", "-1"), "########");
        text("almost an error", cellOfType("str", "#N/A yet"), "#N/A yet");
        row("nothing", "<c/>", "B3 is empty", "buňka B3 je prázdná");
        row("blanks", cellOfType("str", "  "), "B3 is empty", "buňka B3 je prázdná");
        row("formula without a result", "<c><f>B2</f></c>", "B3 is empty", "buňka B3 je prázdná");
        row("zero", "<c><v>0</v></c>", "B3 is 0", "v buňce B3 je 0");
        row("text of zero", cellOfType("str", "0.00"), "B3 is 0", "v buňce B3 je 0");
        row("false", cellOfType("b", "0"), "B3 is FALSE", "v buňce B3 je NEPRAVDA");
        for (const QByteArray &date : {cellOfFormat("1", "45351"), cellOfFormat("2", "45351.5"),
                                       cellOfFormat("3", "0.5"), cellOfType("d", "2024-02-29")}) {
            row(date, date, "B3 is a date or a time", "v buňce B3 je datum nebo čas");
        }
        for (const char *error : {"#N/A", "#DIV/0!", "#NAME?", "#GETTING_DATA", "#SPILL!"}) {
            QTest::newRow(error) << cellOfType("e", error)
                                 << QString("B3 is the error %1").arg(error)
                                 << QString("v buňce B3 je chyba %1").arg(error);
        }
    }

    void cellThatEndedTheRowIsNamed()
    {
        QFETCH(const QByteArray, cell);
        QFETCH(const QString, english);
        QFETCH(const QString, czech);
        StartedTester tester;
        workbookWith(cell).save(tester.path("bad.xlsx"));
        tester.openRefused("bad.xlsx");
        QTranslator translator;
        QVERIFY(translator.load(CZECH_CATALOGUE));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        tester.openRefused("bad.xlsx");
        QCOMPARE(
            tester.answers.messages(),
            QStringList({reason + QString("Row 3: Dvorak (%1)").arg(english) + fileName,
                         czechReason + QString("Řádek 3: Dvorak (%1)").arg(czech) + fileName}));
    }

    void rowMayEndAfterOneValue()
    {
        StartedTester tester;
        QCOMPARE(refusal(tester, {{"a", 50.0, 60.0}, {"b", 50.0, "60,5"}, {"c", 50.0, 60.0}}),
                 reason + QString("Row 3: b (C3 \"60,5\" is not a number)") + fileName);
    }

    void whereMostRowsAreShortARowMustBeAPatient_data()
    {
        QTest::addColumn<int>("good");
        QTest::addColumn<int>("bad");
        QTest::addColumn<bool>("told");
        QTest::newRow("one of one") << 0 << 1 << true;
        QTest::newRow("one of two") << 1 << 1 << false;
        QTest::newRow("two of three") << 1 << 2 << true;
        QTest::newRow("two of four") << 2 << 2 << false;
    }

    void whereMostRowsAreShortARowMustBeAPatient()
    {
        QFETCH(const int, good);
        QFETCH(const int, bad);
        QFETCH(const bool, told);
        QVector<TestWorkbooks::Row> rows(good, {"good", 50.0, 60.0});
        QString expected;
        for (int i = 0; i < bad; ++i) {
            expected +=
                QString("%1Row %2: bad (B%2 is empty)").arg(i ? "\n" : "").arg(good + i + 2);
            rows.append({"bad"});
        }
        StartedTester tester;
        QCOMPARE(refusal(tester, rows), reason + expected + (told ? rowIsAPatient : "") + fileName);
    }

    void firstTenRowsAreNamed_data()
    {
        QTest::addColumn<int>("patients");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("czechLast");
        QTest::newRow("ten") << 10 << QString() << QString();
        QTest::newRow("thirteen") << 13 << "\nand 3 more"
                                  << "\nPočet dalších řádků: 3";
    }

    void firstTenRowsAreNamed()
    {
        QFETCH(const int, patients);
        QFETCH(const QString, last);
        QFETCH(const QString, czechLast);
        QStringList named;
        QStringList czechNamed;
        for (int row = 2; row < 12; ++row) {
            named << QString("Row %1: p (C%1 is 0)").arg(row);
            czechNamed << QString("Řádek %1: p (v buňce C%1 je 0)").arg(row);
        }
        const QVector<TestWorkbooks::Row> rows(patients, {"p", 50.0, 0.0, 60.0});
        StartedTester tester;
        QCOMPARE(refusal(tester, rows),
                 reason + named.join('\n') + last + rowIsAPatient + fileName);
        QTranslator translator;
        QVERIFY(translator.load(CZECH_CATALOGUE));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCOMPARE(refusal(tester, rows),
                 czechReason + czechNamed.join('\n') + czechLast + czechRowIsAPatient + fileName);
    }

    void longTextsAreCut()
    {
        StartedTester tester;
        const QString text =
            refusal(tester, {{QString(5000, 'x') + "\nend", QString(5000, 'y') + "\nend"}});
        QCOMPARE(text.section('\n', 1, 1),
                 QString("Row 2: %1\u2026 (B2 \"%2\u2026\" is not a number)")
                     .arg(QString(60, 'x'), QString(60, 'y')));
    }

    void identifierIsNotTakenForMarkup()
    {
        StartedTester tester;
        const QString text = refusal(tester, {{"<b>bold</b>", "<i>60</i>"}}).section('|', 1);
        QVERIFY(text.contains("Row 2: <b>bold</b> (B2 \"<i>60</i>\" is not a number)"));
        QVERIFY2(!Qt::mightBeRichText(text), "the identifier would be taken for markup");
    }

    void noCharacterIsCutInTwo_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("kept");
        QTest::newRow("the limit of 60 before a pair") << 60 << 60;
        QTest::newRow("the limit inside a pair") << 59 << 59;
        QTest::newRow("the limit after a pair") << 58 << 60;
    }

    void noCharacterIsCutInTwo()
    {
        QFETCH(const int, before);
        QFETCH(const int, kept);
        StartedTester tester;
        const QString identifier = QString(before, 'x') + "\U0001F600" + "tail";
        QCOMPARE(refusal(tester, {{identifier, identifier}}).section('\n', 1, 1),
                 QString("Row 2: %1\u2026 (B2 \"%1\u2026\" is not a number)")
                     .arg(identifier.left(kept)));
    }
};

QTEST_MAIN(TestShortRows)
#include "tst_shortrows.moc"
