// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTest>

#include "xlsx/reading/numberformats.h"

class TestNumberFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codeOfDatesIsOne_data()
    {
        addCodes({"d.m.yyyy",
                  "YYYY-MM-DD",
                  "h:mm",
                  "mm:ss.0",
                  "[h]:mm:ss",
                  "[mm]",
                  "[Red][mm]",
                  "[ss].00",
                  "[$-409]h:mm AM/PM;@",
                  "[Red]d/m/yy",
                  "[Red]d",
                  "(d)",
                  "_-d",
                  "\"on \"dd",
                  "\\odd",
                  "_-yyyy",
                  "* mmm",
                  "0;d.m.yyyy",
                  "\"0\"d",
                  "[$-804]aaaa;@",
                  "[$-411]ggge",
                  "e",
                  "bbbb",
                  "0_\";d",
                  "General;d",
                  "yyyymmdd",
                  "hhmmss",
                  "yyyymmddThhmm",
                  "hAM/PM",
                  "AM/PM",
                  "h a/p",
                  "USD d.m.yyyy",
                  "Standard;d",
                  "dd. mmmm",
                  "D-MMM-YY",
                  "[H]",
                  "yyyy\u5e74m\u6708d\u65e5",
                  "dd mmm yyyy\u0433."});
    }

    void codeOfDatesIsOne()
    {
        QFETCH(const QString, code);
        QCOMPARE(NumberFormats::customKind(code), NumberFormats::Kind::Date);
    }

    void numberFormatsAreNotDates_data()
    {
        addCodes({"General",
                  "GENERAL",
                  "Standard",
                  "USD 0.00",
                  "usd 0.00",
                  "mmol",
                  "mmHg 0",
                  "Std. 0.0",
                  "sth",
                  "AM 0",
                  "0.00;[red]0.00",
                  "Days: 0",
                  "General\" mmol\"",
                  "EUR 0.00",
                  "Core 0",
                  "0.00",
                  "@",
                  "#,##0.00;[Red]-#,##0.00",
                  R"(0.0 "mmol/mol")",
                  "0.0 mmol/mol",
                  R"("day "0)",
                  R"(0.0\ \m\m\o\l)",
                  "[Red]0",
                  "[Magenta]0",
                  "[>100]0",
                  "[$SEK] 0",
                  "_d0",
                  "*d0",
                  "0.00E+00",
                  "# ?/?",
                  "0;\"d\"",
                  "0\"d;d\"",
                  "\"d",
                  "[d",
                  "\\",
                  "0\\;d",
                  QString()});
    }

    void numberFormatsAreNotDates()
    {
        QFETCH(const QString, code);
        QCOMPARE(NumberFormats::customKind(code), NumberFormats::Kind::Number);
    }

    void builtinFormatsAreKnown_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("expected");
        const auto row = [](int number, NumberFormats::Kind kind) {
            QTest::addRow("%d", number) << number << static_cast<int>(kind);
        };
        for (const int number : {-1, 0, 1, 4, 9, 13, 23, 37, 44, 48, 49, 59, 163, 164, 1000000}) {
            row(number, NumberFormats::Kind::Number);
        }
        for (const int number : {14, 22, 27, 36, 45, 47, 50, 58, 71, 81}) {
            row(number, NumberFormats::Kind::Date);
        }
    }

    void builtinFormatsAreKnown()
    {
        QFETCH(const int, number);
        QFETCH(const int, expected);
        QCOMPARE(static_cast<int>(NumberFormats::builtinKind(number)), expected);
    }

private:
    static void addCodes(const QStringList &codes)
    {
        QTest::addColumn<QString>("code");
        for (const QString &code : codes) {
            QTest::newRow(qPrintable(code)) << code;
        }
    }
};

QTEST_GUILESS_MAIN(TestNumberFormats)
#include "tst_numberformats.moc"
