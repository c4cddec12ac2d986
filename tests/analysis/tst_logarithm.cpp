// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include <QtTest>

#include "analysis/logarithm.h"
#include "support/dice.h"
#include "support/numbers.h"

using Numbers::difference;
using Numbers::infinity;
using Numbers::notANumber;

namespace
{

// The distance from the exact value, in units of the last place.
long double error(double x)
{
    const double result = naturalLogarithm(x);
    const double lastPlace = std::nextafter(std::abs(result), infinity) - std::abs(result);
    return std::abs(result - std::log(static_cast<long double>(x))) / lastPlace;
}

} // namespace

class TestLogarithm : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Computed with 60 digits and rounded once.
    void knownValues_data()
    {
        QTest::addColumn<double>("x");
        QTest::addColumn<double>("expected");
        const auto row = [](double x, double expected) {
            QTest::addRow("%.17g", x) << x << expected;
        };
        row(0.0, -infinity);
        row(5e-324, -744.4400719213812);
        row(2.2250738585072014e-308, -708.3964185322641);
        row(0.1, -2.3025850929940455);
        row(0.9375, -0.06453852113757118);
        row(0.99, -0.01005033585350145);
        row(1.0, 0.0);
        row(1.03, 0.02955880224154443);
        row(1.0647, 0.0626930693384234);
        row(2.0, 0.6931471805599453);
        row(10.0, 2.302585092994046);
        row(55.3, 4.012772908528289);
        row(1.7976931348623157e308, 709.782712893384);
        row(infinity, infinity);
        row(-1.0, notANumber);
        row(-infinity, notANumber);
        row(notANumber, notANumber);
    }

    void knownValues()
    {
        QFETCH(const double, x);
        QFETCH(const double, expected);
        QCOMPARE(difference(naturalLogarithm(x), expected, 0.0), QString());
    }

    // The distances allow for the rounding of the wider logarithm.
    void tenthsAreRoundedCorrectly()
    {
        for (int count = 1; count <= 4000; ++count) {
            QVERIFY2(error(count / 10.0) <= 0.501L, qPrintable(QString::number(count)));
        }
    }

    void allSizesAreAlmostRoundedCorrectly()
    {
        Dice dice(7);
        for (int run = 0; run < 100000; ++run) {
            const double x = std::ldexp(1.0 + dice.below(1 << 30) * 0x1p-30,
                                        run % 2 == 0 ? dice.below(4) - 2 : dice.below(2040) - 1022);
            QVERIFY2(error(x) <= 0.52L, qPrintable(QString::number(x, 'g', 17)));
        }
    }
};

QTEST_GUILESS_MAIN(TestLogarithm)
#include "tst_logarithm.moc"
