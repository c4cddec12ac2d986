// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTest>

#include "base/xmltext.h"

class TestXmlText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesWhatXmlCannotHold_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");

        const QString pair = "\xF0\x9F\x93\x88";
        const QChar replacement(QChar::ReplacementCharacter);
        const auto row = [](const char *name, const QString &text, const QString &expected) {
            QTest::newRow(name) << text << expected;
        };
        row("empty", QString(), QString());
        row("blanks and markup stay", " <a>\t\r\n&", " <a>\t\r\n&");
        row("control character", "a\x01z", QString("a") + replacement + 'z');
        row("null character", QString(QChar(0)), replacement);
        row("surrogate pair stays", pair, pair);
        row("first half at the end", pair.left(1), replacement);
        row("second half alone", pair.mid(1) + 'x', QString(replacement) + 'x');
        row("first half before a pair", pair.left(1) + pair, replacement + pair);
        row("no characters", QString(QChar(0xFFFE)) + QChar(0xFFFF),
            QString(replacement) + replacement);
        row("replacement character stays", replacement, replacement);
    }

    void replacesWhatXmlCannotHold()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(xmlText(text), expected);
    }

    void findsPairs()
    {
        const QString text = "a\U0001F600z";
        QVERIFY(!isSurrogatePairAt(text, 0));
        QVERIFY(isSurrogatePairAt(text, 1));
        QVERIFY(!isSurrogatePairAt(text, 2));
        QVERIFY(!isSurrogatePairAt(text, 3));
        QVERIFY(!isSurrogatePairAt(text.left(2), 1));
        QVERIFY(!isSurrogatePairAt(text.mid(2), 0));
        QVERIFY(!isSurrogatePairAt(text, -1));
    }

    void cutsBetweenCharacters()
    {
        const QString text = "a\U0001F600z";
        QCOMPARE(wholeCharacters(text, 0), QString());
        QCOMPARE(wholeCharacters(text, 1), QString("a"));
        QCOMPARE(wholeCharacters(text, 2), QString("a"));
        QCOMPARE(wholeCharacters(text, 3), QString("a\U0001F600"));
        QCOMPARE(wholeCharacters(text, 4), text);
        QCOMPARE(wholeCharacters(text, 5), text);
    }
};

QTEST_GUILESS_MAIN(TestXmlText)
#include "tst_xmltext.moc"
