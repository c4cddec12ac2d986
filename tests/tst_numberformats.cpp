#include <QTest>

#include "xlsx/numberformats.h"

class TestNumberFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codeOfDatesIsOne_data()
    {
        addCodes({QStringLiteral("d.m.yyyy"),    QStringLiteral("YYYY-MM-DD"),
                  QStringLiteral("h:mm"),        QStringLiteral("mm:ss.0"),
                  QStringLiteral("[h]:mm:ss"),   QStringLiteral("[mm]"),
                  QStringLiteral("[ss].00"),     QStringLiteral("[$-409]h:mm AM/PM;@"),
                  QStringLiteral("[Red]d/m/yy"), QStringLiteral("\"on \"dd"),
                  QStringLiteral("\\odd"),       QStringLiteral("_-yyyy"),
                  QStringLiteral("* mmm"),       QStringLiteral("0;d.m.yyyy"),
                  QStringLiteral("\"0\"d"),      QStringLiteral("[$-804]aaaa;@"),
                  QStringLiteral("[$-411]ggge"), QStringLiteral("e"),
                  QStringLiteral("bbbb"),        QStringLiteral("0_\";d"),
                  QStringLiteral("General;d")});
    }

    void codeOfDatesIsOne()
    {
        QFETCH(const QString, code);
        QVERIFY(NumberFormats::isDateCode(code));
    }

    void codeOfNumbersIsNone_data()
    {
        addCodes({QStringLiteral("General"),
                  QStringLiteral("General\" mmol\""),
                  QStringLiteral("EUR 0.00"),
                  QStringLiteral("Core 0"),
                  QStringLiteral("0.00"),
                  QStringLiteral("@"),
                  QStringLiteral("#,##0.00;[Red]-#,##0.00"),
                  QStringLiteral("0.0 \"mmol/mol\""),
                  QStringLiteral("0.0 mmol/mol"),
                  QStringLiteral("\"day \"0"),
                  QStringLiteral("0.0\\ \\m\\m\\o\\l"),
                  QStringLiteral("[Red]0"),
                  QStringLiteral("[>100]0"),
                  QStringLiteral("[$SEK] 0"),
                  QStringLiteral("_d0"),
                  QStringLiteral("*d0"),
                  QStringLiteral("0.00E+00"),
                  QStringLiteral("# ?/?"),
                  QStringLiteral("0;\"d\""),
                  QStringLiteral("0\"d;d\""),
                  QStringLiteral("\"d"),
                  QStringLiteral("[d"),
                  QStringLiteral("\\"),
                  QStringLiteral("0\\;d"),
                  QString()});
    }

    void codeOfNumbersIsNone()
    {
        QFETCH(const QString, code);
        QVERIFY(!NumberFormats::isDateCode(code));
    }

    void builtinFormatsAreKnown_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("expected");
        const auto row = [](int number, NumberFormats::Kind kind) {
            QTest::addRow("%d", number) << number << static_cast<int>(kind);
        };
        for (const int number : {0, 1, 4, 9, 13, 23, 37, 44, 48, 49, 59, 163}) {
            row(number, NumberFormats::Kind::Number);
        }
        for (const int number : {14, 22, 27, 36, 45, 47, 50, 58, 71, 81}) {
            row(number, NumberFormats::Kind::Date);
        }
        for (const int number : {164, 1000000}) {
            row(number, NumberFormats::Kind::Unknown);
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
