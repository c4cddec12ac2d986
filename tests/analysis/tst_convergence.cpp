// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include <Eigen/QR>
#include <Eigen/SVD>
#include <QRandomGenerator>
#include <QtTest>

#include "analysis/convergence.h"
#include "analysis/linearsolvers.h"
#include "analysis/median.h"
#include "analysis/patientrecord.h"
#include "support/fitsums.h"
#include "support/numbers.h"

using Numbers::difference;
using Numbers::differenceFromZero;
using Numbers::notANumber;
using Series = QVector<double>;

namespace
{

// A drift with noise about it, as patients have it.
Series randomSeries(QRandomGenerator &random)
{
    const int count = random.bounded(2, 41);
    const double start = 30.0 + random.bounded(90.0);
    const double drift = random.bounded(4.0) - 2.0;
    Series values;
    for (int i = 0; i < count; ++i) {
        values.append(
            std::max(1.0 + random.bounded(1.0), start + drift * i + random.bounded(20.0) - 10.0));
    }
    return values;
}

// Counts the steps below and above the result, without a sort.
bool isMedianStep(const Series &values, double result)
{
    int below = 0;
    int above = 0;
    for (int i = 0; i + 1 < values.size(); ++i) {
        const double step = values.at(i + 1) - values.at(i);
        below += step < result ? 1 : 0;
        above += step > result ? 1 : 0;
    }
    const int steps = int(values.size()) - 1;
    return steps % 2 == 0 ? below == above : below == steps / 2 && above == steps / 2;
}

// A result, and the magnitude of what is solved along with it or cancels out in it: rounding errors
// are relative to that.
struct Reference {
    long double value;
    long double scale;
};

// Slope from the sums about the means.
Reference slope(const Series &values)
{
    const int count = int(values.size());
    const long double center = (count - 1) / 2.0L;
    long double xy = 0.0L;
    long double xx = 0.0L;
    long double magnitude = 0.0L;
    for (int i = 0; i < count; ++i) {
        xy += (i - center) * values.at(i);
        xx += (i - center) * (i - center);
        magnitude += std::abs((i - center) * values.at(i));
    }
    return {xy / xx, magnitude / xx};
}

// k by Cramer's rule, solved along with ln C.
Reference growth(const Series &values)
{
    const FitSums<long double> sums(values);
    return {sums.numerator() / sums.denominator(),
            std::abs((sums.s3 * sums.s2 - sums.s4 * sums.s1) / sums.denominator())};
}

// The median of the steps, from the sorted steps.
double medianStep(const Series &values)
{
    Series steps;
    for (int i = 1; i < values.size(); ++i) {
        steps.append(values.at(i) - values.at(i - 1));
    }
    std::sort(steps.begin(), steps.end());
    const int middle = int(steps.size()) / 2;
    return steps.size() % 2 == 1 ? steps.at(middle)
                                 : (steps.at(middle - 1) + steps.at(middle)) * 0.5;
}

// The decompositions themselves, not by way of the program's solvers.
double slopeByEigen(const Series &values)
{
    Eigen::MatrixXd a(values.size(), 2);
    Eigen::VectorXd b(values.size());
    for (int i = 0; i < values.size(); ++i) {
        a.row(i) << i, 1.0;
        b(i) = values.at(i);
    }
    return Eigen::JacobiSVD<Eigen::MatrixXd>(a, Eigen::ComputeThinU | Eigen::ComputeThinV)
        .solve(b)(0);
}

double growthByEigen(const Series &values)
{
    const FitSums<double> sums(values);
    Eigen::MatrixXd matrix(2, 2);
    matrix << sums.s0, sums.s1, sums.s1, sums.s2;
    Eigen::VectorXd right(2);
    right << sums.s3, sums.s4;
    return Eigen::ColPivHouseholderQR<Eigen::MatrixXd>(matrix).solve(right)(1);
}

QString differenceFrom(double actual, const Reference &expected)
{
    const long double distance = std::abs(actual - expected.value);
    const bool close = distance <= 1e-12L * std::abs(expected.value) + 1e-15L * expected.scale;
    return close ? QString() : Numbers::difference(actual, double(expected.value), 1e-12);
}

} // namespace

class TestConvergence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knownSeries_data()
    {
        QTest::addColumn<Series>("values");
        QTest::addColumn<double>("step");
        QTest::addColumn<double>("line");
        QTest::addColumn<double>("growth");
        QTest::newRow("rising") << Series{50, 60, 55, 70} << 10.0 << 5.5 << 0.00117255416138;
        QTest::newRow("falling") << Series{70, 68, 65, 66, 60, 58, 55} << -2.5 << -2.5
                                 << -0.000960182856224;
        QTest::newRow("two") << Series{50, 60} << 10.0 << 10.0 << 0.0013938956941434;
    }

    void knownSeries()
    {
        QFETCH(const Series, values);
        QFETCH(const double, step);
        QFETCH(const double, line);
        QFETCH(const double, growth);
        QCOMPARE(difference(medianDifference(values), step, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), line, 1e-13), QString());
        QCOMPARE(difference(exponentialFit(values), growth, 2e-12), QString());
    }

    void twoValuesGiveTheirStep_data()
    {
        QTest::addColumn<double>("first");
        QTest::addColumn<double>("second");
        QTest::newRow("rising") << 50.0 << 60.0;
        QTest::newRow("falling") << 88.5 << 41.25;
        QTest::newRow("small") << 0.125 << 3.0;
        QTest::newRow("far apart") << 1.0 << 1000.0;
    }

    void twoValuesGiveTheirStep()
    {
        QFETCH(const double, first);
        QFETCH(const double, second);
        const Series values = {first, second};
        QCOMPARE(difference(medianDifference(values), second - first, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), second - first, 1e-13), QString());
        const double k = first * std::log(second / first) / (second * (first + second - 1.0));
        QCOMPARE(difference(exponentialFit(values), k, 1e-12), QString());
    }

    void threeValuesGiveTheMeanOfTheSteps()
    {
        QCOMPARE(medianDifference({50, 60, 55}), 2.5);
        QCOMPARE(medianDifference({40, 41, 52}), 6.0);
    }

    void evenMedianIsHalfTheRoundedSum()
    {
        // Steps of 1 and of 3 * 2^-54, whose sum is 1 + 2^-52 in a double. The smaller step and
        // half the way from it to the other would be 0.5.
        const double tiny = std::ldexp(3.0, -54);
        QCOMPARE(difference(medianDifference({-1, 0, tiny}), 0.5 + std::ldexp(1.0, -53), 0.0),
                 QString());
    }

    void constantSeriesAreFlat_data()
    {
        QTest::addColumn<Series>("values");
        for (const double value : {1.0, 2.0, 35.7, 48.0, 55.5, 120.0, 1e6}) {
            for (const int count : {2, 3, 4, 5, 24, 1000}) {
                // Singular, as every count of the value (count - 1) / 2: see below.
                if (count == 5 && value == 2.0) {
                    continue;
                }
                QTest::addRow("%d times %g", count, value) << Series(count, value);
            }
        }
    }

    void constantSeriesAreFlat()
    {
        QFETCH(const Series, values);
        QCOMPARE(difference(medianDifference(values), 0.0, 0.0), QString());
        QCOMPARE(differenceFromZero(linearLeastSquares(values), 1e-13 * values.first()), QString());
        QCOMPARE(differenceFromZero(exponentialFit(values), 1e-13), QString());
    }

    void aReversedSeriesChangesTheSign()
    {
        const Series forward = {70, 68, 65, 66, 60, 58, 55, 71};
        const Series backward = {71, 55, 58, 60, 66, 65, 68, 70};
        QCOMPARE(difference(medianDifference(backward), -medianDifference(forward), 0.0),
                 QString());
        QCOMPARE(difference(linearLeastSquares(backward), -linearLeastSquares(forward), 1e-12),
                 QString());
    }

    void theOrderOfTheValuesMatters()
    {
        const Series sorted = {50, 55, 60, 70};
        QCOMPARE(difference(medianDifference(sorted), 5.0, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(sorted), 6.5, 1e-13), QString());
        QVERIFY(!difference(exponentialFit(sorted), 0.00117255416138, 1e-3).isEmpty());
    }

    void tooFewValuesAreNotANumber_data()
    {
        QTest::addColumn<Series>("values");
        QTest::newRow("none") << Series{};
        QTest::newRow("one") << Series{55};
        QTest::newRow("one negative") << Series{-55};
    }

    void tooFewValuesAreNotANumber()
    {
        QFETCH(const Series, values);
        QCOMPARE(difference(medianDifference(values), notANumber, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), notANumber, 0.0), QString());
        QCOMPARE(difference(exponentialFit(values), notANumber, 0.0), QString());
    }

    void negativeValuesHaveNoLogarithm()
    {
        const Series values = {50, -60, 55, 70};
        QCOMPARE(difference(medianDifference(values), 15.0, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), 17.5, 1e-13), QString());
        QCOMPARE(difference(exponentialFit(values), notANumber, 0.0), QString());
        QCOMPARE(difference(exponentialFit({-50, 60}), notANumber, 0.0), QString());
        QCOMPARE(difference(exponentialFit({50, 60, -1}), notANumber, 0.0), QString());
    }

    // The system of equations is singular here, and its solver alone would give 0.
    void negativeValuesHaveNoFitWhereItIsSingular()
    {
        QCOMPARE(difference(exponentialFit({2, -1}), notANumber, 0.0), QString());
        QCOMPARE(difference(exponentialFit({-1, 2}), notANumber, 0.0), QString());
    }

    void zerosHaveNoLogarithm()
    {
        QCOMPARE(difference(exponentialFit({50, 0, 55}), notANumber, 0.0), QString());
    }

    void nanPropagates()
    {
        // The steps are 10, not a number, not a number, 2 and 1; the sort puts the two last.
        const Series values = {50, 60, notANumber, 70, 72, 73};
        QCOMPARE(difference(medianDifference(values), 10.0, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), notANumber, 0.0), QString());
        QCOMPARE(difference(exponentialFit(values), notANumber, 0.0), QString());
    }

    void aSingularFitDropsAColumn_data()
    {
        QTest::addColumn<double>("first");
        QTest::addColumn<double>("second");
        QTest::newRow("halves") << 0.5 << 0.5;
        QTest::newRow("rising") << 0.25 << 0.75;
        QTest::newRow("falling") << 0.75 << 0.25;
        QTest::newRow("far apart") << 0.0625 << 0.9375;
    }

    void aSingularFitDropsAColumn()
    {
        QFETCH(const double, first);
        QFETCH(const double, second);
        QCOMPARE(difference(exponentialFit({first, second}), 0.0, 0.0), QString());
    }

    // The smaller column is dropped, which here is that of the level: k alone carries the
    // logarithm.
    void aSingularFitCanDropTheLevel()
    {
        const double k = std::log(2.0) / 2.0;
        QCOMPARE(difference(exponentialFit({2, 2, 2, 2, 2}), k, 1e-14), QString());
    }

    void allMethodsComeInOrder()
    {
        const Series values = {50, 60, 55, 70};
        const Series all = convergenceValues({"a", values, -1});
        QCOMPARE(all.size(), 3);
        QCOMPARE(difference(all.at(0), 10.0, 0.0), QString());
        QCOMPARE(difference(all.at(1), 5.5, 1e-13), QString());
        QCOMPARE(difference(all.at(2), 0.00117255416138, 2e-12), QString());
        QCOMPARE(int(MedianDifference), 0);
        QCOMPARE(int(LinearLeastSquares), 1);
        QCOMPARE(int(ExponentialFit), 2);
        QCOMPARE(convergenceValues({}).size(), 3);
    }

    void theSeriesIsLeftAlone()
    {
        const PatientRecord patient = {"a", {70, 50, 60, 55}, 2};
        convergenceValues(patient);
        QCOMPARE(patient.values, Series({70, 50, 60, 55}));
    }

    void longSeries()
    {
        Series values;
        for (int i = 0; i < 5000; ++i) {
            values.append(40.0 + 0.25 * i);
        }
        QCOMPARE(difference(medianDifference(values), 0.25, 0.0), QString());
        QCOMPARE(difference(linearLeastSquares(values), 0.25, 1e-12), QString());
        QCOMPARE(differenceFrom(exponentialFit(values), growth(values)), QString());
    }

    // The last bit decides whether a patient with a constant series lies on the center or beside
    // it.
    void thePrescribedArithmeticToTheLastBit()
    {
        QRandomGenerator random(20);
        for (int run = 0; run < 200; ++run) {
            Series values = randomSeries(random);
            if (run % 4 == 0) {
                values.fill(values.first());
            }
            QCOMPARE(difference(medianDifference(values), medianStep(values), 0.0), QString());
            QCOMPARE(difference(linearLeastSquares(values), slopeByEigen(values), 0.0), QString());
            QCOMPARE(difference(exponentialFit(values), growthByEigen(values), 0.0), QString());
        }
    }

    void dependentColumns()
    {
        Eigen::MatrixXd a(2, 2);
        a << 1.0, 1.0, 2.0, 2.0;
        const Eigen::VectorXd b = Eigen::Vector2d(2.0, 4.0);
        const Eigen::VectorXd shortest = solveLeastSquares(a, b);
        QCOMPARE(difference(shortest(0), 1.0, 1e-15), QString());
        QCOMPARE(difference(shortest(1), 1.0, 1e-15), QString());
        const Eigen::VectorXd one = solveSquare(a, b);
        QCOMPARE(difference(one.sum(), 2.0, 1e-15), QString());
        QCOMPARE(one.minCoeff(), 0.0);
    }

    void randomSeriesAgreeWithClosedForms()
    {
        QRandomGenerator random(20260101);
        for (int run = 0; run < 1000; ++run) {
            const Series values = randomSeries(random);
            QVERIFY(isMedianStep(values, medianDifference(values)));
            QCOMPARE(differenceFrom(linearLeastSquares(values), slope(values)), QString());
            QCOMPARE(differenceFrom(exponentialFit(values), growth(values)), QString());
        }
    }
};

QTEST_GUILESS_MAIN(TestConvergence)
#include "tst_convergence.moc"
