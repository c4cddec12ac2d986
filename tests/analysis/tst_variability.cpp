// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <limits>
#include <memory>

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

#include "analysis/patientrecord.h"
#include "analysis/variability.h"
#include "settings/cconfig.h"
#include "support/numbers.h"
#include "support/workingfolder.h"

using Numbers::difference;
using Numbers::differenceFromZero;
using Numbers::infinity;
using Numbers::notANumber;
using Series = QVector<double>;

namespace
{

Series oneTo(int last)
{
    Series values;
    for (int i = 1; i <= last; ++i) {
        values.append(i);
    }
    return values;
}

Series randomSeries(QRandomGenerator &random)
{
    const int count = random.bounded(2, 41);
    Series values;
    for (int i = 0; i < count; ++i) {
        values.append(30.0 + random.bounded(90.0));
    }
    return values;
}

// Root of the mean square of all distances between two entries, which needs no mean.
double spread(const Series &values)
{
    long double squares = 0.0L;
    for (int i = 0; i < values.size(); ++i) {
        for (int j = 0; j < i; ++j) {
            const long double distance = static_cast<long double>(values.at(i)) - values.at(j);
            squares += distance * distance;
        }
    }
    return double(std::sqrt(squares) / values.size());
}

Series stepsFrom(const Series &values, int first)
{
    Series steps;
    for (int i = first; i + 1 < values.size(); ++i) {
        steps.append(values.at(i) - values.at(i + 1));
    }
    return steps;
}

// The deviation in the given order: sum, mean, squares.
double deviationInOrder(const Series &values)
{
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    const double mean = sum / double(values.size());
    double squares = 0.0;
    for (const double value : values) {
        const double distance = value - mean;
        squares += distance * distance;
    }
    return std::sqrt(squares / double(values.size()));
}

// The entry with the given number of entries before it, found without a sort.
double ranked(const Series &values, int rank)
{
    for (const double candidate : values) {
        int below = 0;
        int equal = 0;
        for (const double value : values) {
            below += value < candidate ? 1 : 0;
            equal += value == candidate ? 1 : 0;
        }
        if (below <= rank && rank < below + equal) {
            return candidate;
        }
    }
    return notANumber;
}

} // namespace

class TestVariability : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<WorkingFolder>();
        useSkip("3");
    }

    void cleanup() { m_folder.reset(); }

    void knownDeviations_data()
    {
        QTest::addColumn<Series>("values");
        QTest::addColumn<QByteArray>("skip");
        QTest::addColumn<double>("deviation");
        QTest::addColumn<double>("steps");
        const Series four = {50, 60, 55, 70};
        const Series eight = {48, 52, 50, 55, 53, 58, 57, 60};
        QTest::newRow("four values")
            << four << QByteArray("0") << 7.39509972887452 << 8.49836585598798;
        QTest::newRow("eight values")
            << eight << QByteArray("3") << std::sqrt(118.875 / 8.0) << 2.86138078556490;
    }

    void knownDeviations()
    {
        QFETCH(const Series, values);
        QFETCH(const QByteArray, skip);
        QFETCH(const double, deviation);
        QFETCH(const double, steps);
        useSkip(skip);
        QCOMPARE(difference(standardDeviation(values), deviation, 2e-15), QString());
        QCOMPARE(difference(differenceStandardDeviationOffset(values), steps, 2e-15), QString());
    }

    void knownQuartileRanges_data()
    {
        QTest::addColumn<Series>("values");
        QTest::addColumn<double>("range");
        QTest::newRow("eight values") << Series{48, 52, 50, 55, 53, 58, 57, 60} << 8.0;
        QTest::newRow("1 to 7") << oneTo(7) << 3.0;
        QTest::newRow("1 to 8") << oneTo(8) << 5.0;

        // Squares, so that every pair of positions has a distance of its own.
        const Series s = {1, 4, 9, 16, 25, 36, 49, 64, 81, 100, 121, 144, 169};
        const QVector<double> expected = {
            0.0, // one value
            s.at(1) - s.at(0),
            s.at(1) - s.at(0),
            s.at(3) - (s.at(0) + s.at(1)) * 0.5, // four: held to the last entry
            (s.at(3) + s.at(4)) * 0.5 - (s.at(0) + s.at(1)) * 0.5,
            s.at(4) - s.at(1),
            s.at(4) - s.at(1),
            (s.at(6) + s.at(7)) * 0.5 - (s.at(1) + s.at(2)) * 0.5,
            (s.at(6) + s.at(7)) * 0.5 - (s.at(1) + s.at(2)) * 0.5,
            s.at(7) - s.at(2),
            s.at(7) - s.at(2),
            (s.at(9) + s.at(10)) * 0.5 - (s.at(2) + s.at(3)) * 0.5,
            (s.at(9) + s.at(10)) * 0.5 - (s.at(2) + s.at(3)) * 0.5,
        };
        for (int count = 1; count <= s.size(); ++count) {
            QTest::addRow("%d squares", count) << s.mid(0, count) << expected.at(count - 1);
        }
    }

    void knownQuartileRanges()
    {
        QFETCH(Series, values);
        QFETCH(const double, range);
        QCOMPARE(difference(interquartileRange(values), range, 0.0), QString());
        std::reverse(values.begin(), values.end());
        QCOMPARE(difference(interquartileRange(values), range, 0.0), QString());
    }

    void constantSeriesHaveNoSpread_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {1, 2, 3, 4, 5, 6, 7, 8, 9, 24, 1000}) {
            QTest::addRow("%d values", count) << count;
        }
    }

    void constantSeriesHaveNoSpread()
    {
        QFETCH(const int, count);
        useSkip("0");
        // A whole number, whose sums are exact, and one whose mean carries a rounding error.
        const Series whole(count, 55.0);
        QCOMPARE(difference(standardDeviation(whole), 0.0, 0.0), QString());
        const Series broken(count, 55.3);
        QCOMPARE(differenceFromZero(standardDeviation(broken), 1e-11), QString());
        QCOMPARE(difference(interquartileRange(broken), 0.0, 0.0), QString());
        QCOMPARE(difference(differenceStandardDeviationOffset(broken), count > 1 ? 0.0 : notANumber,
                            0.0),
                 QString());
    }

    void twoValues()
    {
        useSkip("0");
        const Series values = {62.5, 50};
        QCOMPARE(difference(standardDeviation(values), 6.25, 0.0), QString());
        QCOMPARE(difference(differenceStandardDeviationOffset(values), 0.0, 0.0), QString());
        QCOMPARE(difference(interquartileRange(values), 12.5, 0.0), QString());
    }

    void skippedValues_data()
    {
        QTest::addColumn<QByteArray>("skip");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("firstUsed");
        const auto row = [](const char *skip, int count, int firstUsed) {
            QTest::addRow("skip %s of %d", skip, count) << QByteArray(skip) << count << firstUsed;
        };
        row("3", 2, 0);
        row("3", 3, 0);
        row("3", 4, 3);
        row("3", 5, 3);
        row("3", 6, 3);
        row("3", 7, 3);
        row("0", 2, 0);
        row("0", 6, 0);
        row("1", 2, 1);
        row("1", 3, 1);
        row("1", 6, 1);
        row("2.9", 2, 0);
        row("2.9", 3, 2);
        row("2.9", 6, 2);
        row("-0.5", 6, 0);
        row("-1", 2, 0);
        row("-1", 6, 0);
        row("5000", 6, 0);
        row("4294967297", 6, 0);
        row("18446744073709551616", 6, 0);
        row("nan", 6, 0);
        row("3x", 6, 0);
    }

    void skippedValues()
    {
        QFETCH(const QByteArray, skip);
        QFETCH(const int, count);
        QFETCH(const int, firstUsed);
        useSkip(skip);
        // Steps of 1, 3, 5 and so on: leaving one more out always changes the spread.
        Series values;
        for (int i = 0; i < count; ++i) {
            values.append(40.0 + i * i);
        }
        // The deviation of n such steps is sqrt((n * n - 1) / 3).
        const int steps = count - firstUsed - 1;
        const double expected = steps == 0 ? notANumber : std::sqrt((steps * steps - 1) / 3.0);
        QCOMPARE(difference(differenceStandardDeviationOffset(values), expected, 1e-15), QString());
    }

    void skipIsReadOnEveryCall()
    {
        const Series values = {50, 60, 55, 70};
        QCOMPARE(difference(differenceStandardDeviationOffset(values), notANumber, 0.0), QString());
        CConfig::instance().saveConfig(0, 0, 1, 0, 1);
        QCOMPARE(difference(differenceStandardDeviationOffset(values), 8.49836585598798, 2e-15),
                 QString());
        CConfig::instance().saveConfig(0, 0, 1, 2, 1);
        QCOMPARE(difference(differenceStandardDeviationOffset(values), 0.0, 0.0), QString());
    }

    void aMissingSkipLeavesNothingOut()
    {
        QVERIFY(QFile::remove("config.ini"));
        CConfig::resetInstance();
        QCOMPARE(difference(differenceStandardDeviationOffset({50, 60, 55, 70}), 8.49836585598798,
                            2e-15),
                 QString());
    }

    void tooFewValues()
    {
        for (const char *skip : {"0", "1", "3", "-1"}) {
            useSkip(skip);
            QCOMPARE(difference(standardDeviation({}), notANumber, 0.0), QString());
            QCOMPARE(difference(differenceStandardDeviationOffset({}), notANumber, 0.0), QString());
            QCOMPARE(difference(interquartileRange({}), notANumber, 0.0), QString());
            QCOMPARE(difference(standardDeviation({55.3}), 0.0, 0.0), QString());
            QCOMPARE(difference(differenceStandardDeviationOffset({55.3}), notANumber, 0.0),
                     QString());
            QCOMPARE(difference(interquartileRange({55.3}), 0.0, 0.0), QString());
        }
    }

    void nanPropagates()
    {
        useSkip("0");
        const Series values = {notANumber, 50, 60, 55, 70, 40};
        QCOMPARE(difference(standardDeviation(values), notANumber, 0.0), QString());
        QCOMPARE(difference(differenceStandardDeviationOffset(values), notANumber, 0.0), QString());
        // Behind the five numbers: s[4] - s[1].
        QCOMPARE(difference(interquartileRange(values), 20.0, 0.0), QString());
        QCOMPARE(difference(interquartileRange({notANumber, 50}), notANumber, 0.0), QString());
        useSkip("1");
        QCOMPARE(difference(differenceStandardDeviationOffset({notANumber, 50, 60, 70}), 0.0, 0.0),
                 QString());
    }

    void infiniteValuesGoThrough()
    {
        QCOMPARE(difference(standardDeviation({50, infinity}), notANumber, 0.0), QString());
        QCOMPARE(difference(interquartileRange({50, infinity}), infinity, 0.0), QString());
    }

    void quartilesOfUnsortedValues()
    {
        QCOMPARE(difference(interquartileRange({7, 1, 5, 3, 2, 6, 4}), 3.0, 0.0), QString());
        QCOMPARE(difference(interquartileRange({-7, 1, -5, 3}), 9.0, 0.0), QString());
    }

    void quartilesAreRoundedOneByOne()
    {
        // 1 and its next double: their sum loses its last bit, so the lower quartile is 1. Taken
        // from the sum of the upper two, they would leave 1 - 2^-53.
        const double next = std::nextafter(1.0, 2.0);
        QCOMPARE(difference(interquartileRange({1, next, 1.5, 2, 2}), 1.0, 0.0), QString());
    }

    void quartileIsHalfTheRoundedSum()
    {
        // 1 and 3 * 2^-54 have the sum 1 + 2^-52. The smaller and half the way to the larger would
        // be 0.5, and the range 0.5.
        const double tiny = std::ldexp(3.0, -54);
        QCOMPARE(
            difference(interquartileRange({tiny, 1, 1, 1, 1}), 0.5 - std::ldexp(1.0, -53), 0.0),
            QString());
    }

    void allMethodsComeInOrder()
    {
        useSkip("0");
        const Series all = variabilityValues({"a", {50, 60, 55, 70, 40}, -1});
        QCOMPARE(all.size(), 3);
        QCOMPARE(difference(all.at(0), 10.0, 1e-15), QString());
        // Steps -10, 5, -15, 30 about 2.5.
        QCOMPARE(difference(all.at(1), std::sqrt(306.25), 1e-15), QString());
        QCOMPARE(difference(all.at(2), 20.0, 0.0), QString());
        QCOMPARE(int(StandardDeviation), 0);
        QCOMPARE(int(DifferenceStandardDeviationOffset), 1);
        QCOMPARE(int(InterquartileRange), 2);
        QCOMPARE(variabilityValues({}).size(), 3);
    }

    void theSeriesIsLeftAlone()
    {
        const PatientRecord patient = {"a", {70, 50, 60, 55}, 2};
        variabilityValues(patient);
        QCOMPARE(patient.values, Series({70, 50, 60, 55}));
    }

    void thePrescribedArithmeticToTheLastBit()
    {
        useSkip("3");
        QRandomGenerator random(30);
        for (int run = 0; run < 200; ++run) {
            Series values = randomSeries(random);
            if (run % 4 == 0) {
                values.fill(values.first());
            }
            QCOMPARE(difference(standardDeviation(values), deviationInOrder(values), 0.0),
                     QString());
            const int first = values.size() > 3 ? 3 : 0;
            QCOMPARE(difference(differenceStandardDeviationOffset(values),
                                deviationInOrder(stepsFrom(values, first)), 0.0),
                     QString());
        }
    }

    void randomSeriesAgreeWithClosedForms()
    {
        useSkip("2");
        QRandomGenerator random(20260102);
        for (int run = 0; run < 1000; ++run) {
            const Series values = randomSeries(random);
            QCOMPARE(difference(standardDeviation(values), spread(values), 1e-12), QString());

            const Series steps = stepsFrom(values, values.size() > 2 ? 2 : 0);
            QCOMPARE(difference(differenceStandardDeviationOffset(values),
                                steps.isEmpty() ? notANumber : spread(steps), 1e-12),
                     QString());

            const int half = int(values.size()) / 2;
            const int top = int(values.size()) - 1;
            const int low = half % 2 == 1 ? (half - 1) / 2 : half / 2 - 1;
            const int lowNext = half % 2 == 1 ? low : low + 1;
            const int high = half % 2 == 1 ? low + half : lowNext + half;
            const int highNext = half % 2 == 1 ? high : std::min(high + 1, top);
            const double range = (ranked(values, high) + ranked(values, highNext)) / 2
                - (ranked(values, low) + ranked(values, lowNext)) / 2;
            QCOMPARE(difference(interquartileRange(values), range, 1e-12), QString());
        }
    }
};

QTEST_GUILESS_MAIN(TestVariability)
#include "tst_variability.moc"
