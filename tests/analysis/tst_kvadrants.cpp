// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include <QtTest>

#include "analysis/kvadrants.h"
#include "support/numbers.h"

using Numbers::infinity;
using Numbers::notANumber;

namespace
{

// The values of all six methods, convergence first.
PatientScoreRecord record(const std::array<double, 6> &values)
{
    const auto [c0, c1, c2, v0, v1, v2] = values;
    return {{}, {c0, c1, c2}, {v0, v1, v2}};
}

template<size_t count>
QVector<int> listOf(const std::array<int, count> &numbers)
{
    return QVector<int>(numbers.begin(), numbers.end());
}

} // namespace

class TestKvadrants : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What every rule says about one value and one center; the kvadrant is that of a point whose
    // other coordinate is better.
    void everyRuleOnOneValue_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("center");
        QTest::addColumn<bool>("convergenceBetter");
        QTest::addColumn<bool>("variabilityBetter");
        QTest::addColumn<int>("side");
        QTest::addColumn<int>("kvadrantByConvergence");
        QTest::addColumn<int>("kvadrantByVariability");
        QTest::addColumn<int>("flag");
        constexpr int better = int(Side::Better);
        constexpr int on = int(Side::OnCenter);
        constexpr int worse = int(Side::Worse);
        const double nan = notANumber;
        QTest::newRow("below") << 1.0 << 2.0 << true << true << better << 3 << 3 << 0;
        QTest::newRow("equal") << 2.0 << 2.0 << false << false << on << 4 << 2 << 1;
        QTest::newRow("above") << 3.0 << 2.0 << false << false << worse << 4 << 2 << 1;
        QTest::newRow("NaN value") << nan << 2.0 << false << true << on << 0 << 0 << 0;
        QTest::newRow("NaN center") << 2.0 << nan << false << true << on << 0 << 0 << 0;
        QTest::newRow("NaN both") << nan << nan << false << true << on << 0 << 0 << 0;
        QTest::newRow("just below")
            << 2.0 << 2.0000000000000004 << true << true << better << 3 << 3 << 0;
        QTest::newRow("negative") << -3.0 << -2.0 << true << true << better << 3 << 3 << 0;
        QTest::newRow("zeros of both signs") << -0.0 << 0.0 << false << false << on << 4 << 2 << 1;
        QTest::newRow("infinite") << infinity << 2.0 << false << false << worse << 4 << 2 << 1;
        QTest::newRow("infinite both")
            << infinity << infinity << false << false << on << 4 << 2 << 1;
        QTest::newRow("minus infinity")
            << -infinity << 2.0 << true << true << better << 3 << 3 << 0;
    }
    void everyRuleOnOneValue()
    {
        QFETCH(const double, value);
        QFETCH(const double, center);
        const Mark mark =
            markOf(record({value, 0, 0, value, 0, 0}), record({center, 0, 0, center, 0, 0}), 0, 0);
        QTEST(mark.convergenceBetter, "convergenceBetter");
        QTEST(mark.variabilityBetter, "variabilityBetter");
        QTEST(int(sideOf(value, center)), "side");
        QTEST(kvadrantOf(value, 0.0, center, 1.0), "kvadrantByConvergence");
        QTEST(kvadrantOf(0.0, value, 1.0, center), "kvadrantByVariability");
        QTEST(worseFlag(value, center), "flag");
    }

    void kvadrantsAreNumberedFromTheUpperRightCounterClockwise()
    {
        QCOMPARE(kvadrantOf(3.0, 30.0, 2.0, 20.0), 1);
        QCOMPARE(kvadrantOf(1.0, 30.0, 2.0, 20.0), 2);
        QCOMPARE(kvadrantOf(1.0, 10.0, 2.0, 20.0), 3);
        QCOMPARE(kvadrantOf(3.0, 10.0, 2.0, 20.0), 4);
    }
    void onBothCentersIsWorseWorse() { QCOMPARE(kvadrantOf(2.0, 20.0, 2.0, 20.0), 1); }
    void oneNaNLeavesNoKvadrantHoweverTheOtherAxisStands()
    {
        QCOMPARE(kvadrantOf(notANumber, 30.0, 2.0, 20.0), noKvadrant);
        QCOMPARE(kvadrantOf(3.0, notANumber, 2.0, 20.0), noKvadrant);
        QCOMPARE(kvadrantOf(3.0, 30.0, notANumber, 20.0), noKvadrant);
        QCOMPARE(kvadrantOf(3.0, 30.0, 2.0, notANumber), noKvadrant);
    }

    void theMarkIsThatOfTheChosenMethods()
    {
        // Better by convergence 1 and by variability 2 alone.
        const PatientScoreRecord score = record({5, 1, 5, 5, 5, 1});
        const PatientScoreRecord center = record({3, 3, 3, 3, 3, 3});
        for (int convergence = 0; convergence < 3; ++convergence) {
            for (int variability = 0; variability < 3; ++variability) {
                const Mark mark = markOf(score, center, convergence, variability);
                QCOMPARE(mark.convergenceBetter, convergence == 1);
                QCOMPARE(mark.variabilityBetter, variability == 2);
            }
        }
    }
    void theMarkMeetsTheCenterOfItsOwnMethod()
    {
        const PatientScoreRecord score = record({5, 5, 5, 5, 5, 5});
        const PatientScoreRecord center = record({4, 6, 4, 4, 4, 6});
        QVERIFY(markOf(score, center, 1, 0).convergenceBetter);
        QVERIFY(!markOf(score, center, 2, 0).convergenceBetter);
        QVERIFY(markOf(score, center, 0, 2).variabilityBetter);
        QVERIFY(!markOf(score, center, 0, 1).variabilityBetter);
    }

    void pairsComeByConvergenceThenVariability()
    {
        // Convergence better, worse, better; variability worse, better, better.
        const auto kvadrants =
            pairKvadrants(record({1, 3, 0, 30, 10, 0}), record({2, 2, 2, 20, 20, 20}));
        QCOMPARE(listOf(kvadrants), QVector<int>({2, 3, 3, 1, 4, 4, 2, 3, 3}));
    }
    void pairsMeetTheMediansOfTheFirstMethods()
    {
        // Against the medians of their own methods, all but the first pair were better throughout.
        const auto kvadrants =
            pairKvadrants(record({3, 3, 3, 30, 30, 30}), record({2, 9, 9, 20, 90, 90}));
        QCOMPARE(listOf(kvadrants), QVector<int>(pairCount, 1));
    }
    void pairsOnTheMediansAreInKvadrantOne()
    {
        const PatientScoreRecord both = record({2, 2, 2, 20, 20, 20});
        QCOMPARE(listOf(pairKvadrants(both, both)), QVector<int>(pairCount, 1));
    }
    void aNaNLeavesItsPairsWithoutKvadrant()
    {
        const auto kvadrants = pairKvadrants(record({3, notANumber, 3, 30, 30, notANumber}),
                                             record({2, notANumber, 2, 20, 20, notANumber}));
        QCOMPARE(listOf(kvadrants), QVector<int>({1, 1, 0, 0, 0, 0, 1, 1, 0}));
    }

    void flagsMeetTheMediansOfTheirOwnMethods()
    {
        const PatientScoreRecord score = record({3, 3, 3, 30, 30, 30});
        const PatientScoreRecord medians = record({2, 3, 4, 40, 30, 20});
        QCOMPARE(listOf(worseFlags(score, medians, &PatientScoreRecord::convergence)),
                 QVector<int>({1, 1, 0}));
        QCOMPARE(listOf(worseFlags(score, medians, &PatientScoreRecord::variability)),
                 QVector<int>({0, 1, 1}));
    }
};

QTEST_APPLESS_MAIN(TestKvadrants)
#include "tst_kvadrants.moc"
