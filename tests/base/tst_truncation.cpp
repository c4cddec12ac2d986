// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <limits>

#include <QTest>

#include "base/truncation.h"
#include "support/numbers.h"

class TestTruncation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void doublesBecomeUnsigned_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<quint64>("expected");
        constexpr quint64 largest = std::numeric_limits<quint64>::max();
        const double range = std::ldexp(1.0, 64);
        const double belowRange = std::nextafter(range, 0.0);
        QTest::newRow("0") << 0.0 << quint64(0);
        QTest::newRow("-0") << -0.0 << quint64(0);
        QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min() << quint64(0);
        QTest::newRow("0.999") << 0.999 << quint64(0);
        QTest::newRow("-0.5") << -0.5 << quint64(0);
        QTest::newRow("-0.999") << -0.999 << quint64(0);
        QTest::newRow("1") << 1.0 << quint64(1);
        QTest::newRow("2.9") << 2.9 << quint64(2);
        QTest::newRow("-1") << -1.0 << largest;
        QTest::newRow("-1.9") << -1.9 << largest;
        QTest::newRow("-2") << -2.0 << largest - 1;
        QTest::newRow("2^53 + 2") << std::ldexp(1.0, 53) + 2.0 << (quint64(1) << 53) + 2;
        QTest::newRow("2^63") << std::ldexp(1.0, 63) << (quint64(1) << 63);
        QTest::newRow("-2^63") << -std::ldexp(1.0, 63) << (quint64(1) << 63);
        QTest::newRow("below 2^64") << belowRange << largest - 2047;
        QTest::newRow("above -2^64") << -belowRange << quint64(2048);
        QTest::newRow("2^64") << range << largest;
        QTest::newRow("-2^64") << -range << largest;
        QTest::newRow("1e300") << 1e300 << largest;
        QTest::newRow("-1e300") << -1e300 << largest;
        QTest::newRow("infinity") << Numbers::infinity << largest;
        QTest::newRow("-infinity") << -Numbers::infinity << largest;
        QTest::newRow("NaN") << Numbers::notANumber << largest;
        QTest::newRow("-NaN") << -Numbers::notANumber << largest;
    }

    void doublesBecomeUnsigned()
    {
        QFETCH(const double, value);
        QFETCH(const quint64, expected);
        QCOMPARE(toUnsigned(value), expected);
    }
};

QTEST_GUILESS_MAIN(TestTruncation)
#include "tst_truncation.moc"
