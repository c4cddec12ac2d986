// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include <memory>
#include <utility>

#include <QDir>
#include <QFile>
#include <QtTest>

#include "analysis/centers.h"
#include "settings/cconfig.h"
#include "support/numbers.h"
#include "support/workingfolder.h"

using Numbers::difference;
using Numbers::infinity;
using Numbers::notANumber;
using Series = QVector<double>;
using Scores = QVector<PatientScoreRecord>;

namespace
{

PatientScoreRecord score(double c0, double c1, double c2, double v0, double v1, double v2)
{
    return {{}, {c0, c1, c2}, {v0, v1, v2}};
}

// One patient a value, the same in all six columns.
Scores everywhere(const Series &values)
{
    Scores scores;
    for (const double value : values) {
        scores.append(score(value, value, value, value, value, value));
    }
    return scores;
}

QString differences(const Series &actual, const Series &expected)
{
    if (actual.size() != expected.size()) {
        return QString("%1 values").arg(actual.size());
    }
    QString all;
    for (int i = 0; i < actual.size(); ++i) {
        all += difference(actual.at(i), expected.at(i), 0.0);
    }
    return all;
}

} // namespace

class TestCenters : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<WorkingFolder>(); }

    void cleanup() { m_folder.reset(); }

    void medianAndMean_data()
    {
        QTest::addColumn<Series>("values");
        QTest::addColumn<double>("median");
        QTest::addColumn<double>("mean");
        QTest::newRow("no patients") << Series{} << notANumber << notANumber;
        QTest::newRow("one patient") << Series{-2.75} << -2.75 << -2.75;
        QTest::newRow("two patients") << Series{7, 2} << 4.5 << 4.5;
        QTest::newRow("two equal patients") << Series{3, 3} << 3.0 << 3.0;
        QTest::newRow("three patients") << Series{1, 2, 9} << 2.0 << 4.0;
        QTest::newRow("three patients, unsorted") << Series{9, 1, 2} << 2.0 << 4.0;
        QTest::newRow("four patients") << Series{10, -1, 4, 2} << 3.0 << 3.75;
        QTest::newRow("five patients") << Series{5, 4, 3, 2, -4} << 3.0 << 2.0;
        QTest::newRow("not a number is last of three")
            << Series{notANumber, 5, 3} << 5.0 << notANumber;
        QTest::newRow("not a number is last of four")
            << Series{5, notANumber, 3, 8} << 6.5 << notANumber;
        QTest::newRow("not a number in the middle")
            << Series{notANumber, 1, notANumber} << notANumber << notANumber;
        QTest::newRow("half of them not a number")
            << Series{notANumber, 1, notANumber, 2} << notANumber << notANumber;
        QTest::newRow("NaN after infinity")
            << Series{notANumber, infinity, 1} << infinity << notANumber;
        QTest::newRow("infinity") << Series{1, infinity, 2} << 2.0 << infinity;
    }

    void medianAndMean()
    {
        QFETCH(const Series, values);
        QFETCH(const double, median);
        QFETCH(const double, mean);
        const Scores scores = everywhere(values);
        QCOMPARE(differences(convergenceMedians(scores), Series(3, median)), QString());
        QCOMPARE(differences(variabilityMedians(scores), Series(3, median)), QString());
        QCOMPARE(differences(convergenceAverages(scores), Series(3, mean)), QString());
        QCOMPARE(differences(variabilityAverages(scores), Series(3, mean)), QString());
    }

    void evenMedianIsHalfTheRoundedSum()
    {
        // 1 and 3 * 2^-54 have the sum 1 + 2^-52.
        const Scores scores = everywhere({std::ldexp(3.0, -54), 1});
        const Series half(3, 0.5 + std::ldexp(1.0, -53));
        QCOMPARE(differences(convergenceMedians(scores), half), QString());
        QCOMPARE(differences(variabilityMedians(scores), half), QString());
    }

    void eachColumnHasItsOwnCenter()
    {
        // The medians come from three different patients.
        const Scores scores = {score(1, 20, 9, 4, 50, 600), score(2, 30, 5, 1, 80, 500),
                               score(9, 10, 7, 7, 20, 100)};
        QCOMPARE(differences(convergenceMedians(scores), {2, 20, 7}), QString());
        QCOMPARE(differences(variabilityMedians(scores), {4, 50, 500}), QString());
        QCOMPARE(differences(convergenceAverages(scores), {4, 20, 7}), QString());
        QCOMPARE(differences(variabilityAverages(scores), {4, 50, 400}), QString());
    }

    void oneSeesOnlyItsFamily()
    {
        const Scores scores = {score(1, 2, 3, notANumber, notANumber, notANumber)};
        QCOMPARE(differences(convergenceMedians(scores), {1, 2, 3}), QString());
        QCOMPARE(differences(convergenceAverages(scores), {1, 2, 3}), QString());
        QCOMPARE(differences(variabilityMedians(scores), Series(3, notANumber)), QString());
        QCOMPARE(differences(variabilityAverages(scores), Series(3, notANumber)), QString());
    }

    void meansAddInPatientOrder()
    {
        // The 1 is lost beside the first, and stays beside nothing.
        const Scores lost = everywhere({1e16, 1, -1e16});
        QCOMPARE(differences(convergenceAverages(lost), Series(3, 0.0)), QString());
        QCOMPARE(differences(variabilityAverages(lost), Series(3, 0.0)), QString());
        const Scores kept = everywhere({1e16, -1e16, 1});
        QCOMPARE(differences(convergenceAverages(kept), Series(3, 1.0 / 3.0)), QString());
        QCOMPARE(differences(variabilityAverages(kept), Series(3, 1.0 / 3.0)), QString());
    }

    void notANumberInOneColumn()
    {
        const Scores scores = {score(1, 2, notANumber, 4, 5, 6), score(3, 4, 7, 8, notANumber, 8)};
        QCOMPARE(differences(convergenceAverages(scores), {2, 3, notANumber}), QString());
        QCOMPARE(differences(variabilityAverages(scores), {6, notANumber, 7}), QString());
        QCOMPARE(differences(convergenceMedians(scores), {2, 3, notANumber}), QString());
        QCOMPARE(differences(variabilityMedians(scores), {6, notANumber, 7}), QString());
    }

    void manyNotANumber()
    {
        // Long enough for a sort to lose its way when the order is no order.
        Series values;
        for (int i = 0; i < 1001; ++i) {
            values.append(i % 3 == 0 ? notANumber : 1000.0 - i);
        }
        // 667 numbers stand before the others; the entry 500 is the 501st smallest of them.
        Series numbers;
        for (const double value : std::as_const(values)) {
            if (value == value) {
                numbers.prepend(value);
            }
        }
        QCOMPARE(numbers.size(), 667);
        QCOMPARE(differences(convergenceMedians(everywhere(values)), Series(3, numbers.at(500))),
                 QString());
        QCOMPARE(differences(variabilityMedians(everywhere(Series(1001, notANumber))),
                             Series(3, notANumber)),
                 QString());
    }

    void theScoresAreLeftAlone()
    {
        const Scores scores = everywhere({3, 1, 2});
        convergenceMedians(scores);
        variabilityMedians(scores);
        for (int i = 0; i < scores.size(); ++i) {
            QCOMPARE(scores.at(i).convergence, Series(3, Series({3, 1, 2}).at(i)));
            QCOMPARE(scores.at(i).variability, Series(3, Series({3, 1, 2}).at(i)));
        }
    }

    void bothCentersComeTogether()
    {
        // By hand: the columns are 1, 2, 9 and its multiples by 1, 2, 3, 10, 20 and 30.
        const auto patient = [](double value) {
            return score(value, 2 * value, 3 * value, 10 * value, 20 * value, 30 * value);
        };
        const Centers centers = centersOf({patient(1), patient(2), patient(9)});
        QCOMPARE(centers.median.convergence, Series({2, 4, 6}));
        QCOMPARE(centers.median.variability, Series({20, 40, 60}));
        QCOMPARE(centers.average.convergence, Series({4, 8, 12}));
        QCOMPARE(centers.average.variability, Series({40, 80, 120}));
        QVERIFY(centers.median.id.isEmpty() && centers.average.id.isEmpty());
    }

    void theSettingChoosesTheCenter_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("isMedian");
        QTest::newRow("1") << QByteArray("[Result]\nMedian = 1\n") << true;
        QTest::newRow("0") << QByteArray("[Result]\nMedian = 0\n") << false;
        QTest::newRow("corrected") << QByteArray("[Result]\nMedian = -1\n") << true;
        QTest::newRow("1.9") << QByteArray("[Result]\nMedian = 1.9\n") << true;
        QTest::newRow("not a number") << QByteArray("[Result]\nMedian = 1x\n") << false;
        QTest::newRow("missing") << QByteArray("[Method]\nVariance = 1\n") << false;
        QTest::newRow("empty file") << QByteArray() << false;
    }

    void theSettingChoosesTheCenter()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const bool, isMedian);
        useSettings(file);
        const PatientScoreRecord average;
        const PatientScoreRecord median;
        QCOMPARE(&chosenCenter(median, average), isMedian ? &median : &average);
    }

    void theChoiceIsReadOnEveryCall()
    {
        const PatientScoreRecord average;
        const PatientScoreRecord median;
        CConfig::instance().saveConfig(0, 0, 1, 3, 1);
        QCOMPARE(&chosenCenter(median, average), &median);
        CConfig::instance().saveConfig(0, 0, 0, 3, 1);
        QCOMPARE(&chosenCenter(median, average), &average);
    }
};

QTEST_GUILESS_MAIN(TestCenters)
#include "tst_centers.moc"
