// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>

#include <QtTest>

#include "graphs/patientgraphgeometry.h"
#include "support/graphdrawing.h"
#include "support/numbers.h"

using Numbers::infinity;

namespace
{

PatientRecord patient(const QString &id, const QVector<double> &values)
{
    return {id, values, PatientRecord::noIdealKvadrant};
}

PatientGraphGeometry geometryOf(const QVector<PatientRecord> &patients, double width = 700,
                                double height = 400)
{
    return {patients, PatientGraphBounds(patients), width, height, textWidth};
}

// The peak is truncated to 50, so that there are five bands.
QVector<PatientRecord> unequalPatients()
{
    return patientsOf({{50.5, 40, 10}, {0, 10, 20, 30, 40}});
}

} // namespace

class TestPatientGraphGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void positionsAtThreeSizes_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<QString>("axes");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("smallest window")
            << 700.0 << 400.0
            << "50,280 675,280; 60,290 60,15; 50,230 675,230; 50,180 675,180; 50,130 675,130; "
               "50,80 675,80; 50,30 675,30; 185,280 185,290; 310,280 310,290; 435,280 435,290; "
               "560,280 560,290"
            << "60,27.5 185,80 310,230"
            << "60,280 185,230 310,180 435,130 560,80";
        QTest::newRow("large window")
            << 1200.0 << 800.0
            << "50,680 1175,680; 60,690 60,15; 50,550 1175,550; 50,420 1175,420; 50,290 1175,290; "
               "50,160 1175,160; 50,30 1175,30; 285,680 285,690; 510,680 510,690; 735,680 735,690; "
               "960,680 960,690"
            << "60,23.5 285,160 510,550"
            << "60,680 285,550 510,420 735,290 960,160";
        QTest::newRow("half of an exported page")
            << 575.0 << 411.0
            << "50,291 550,291; 60,301 60,15; 50,238.8 550,238.8; 50,186.6 550,186.6; "
               "50,134.4 550,134.4; 50,82.2 550,82.2; 50,30 550,30; 160,291 160,301; "
               "260,291 260,301; 360,291 360,301; 460,291 460,301"
            << "60,27.39 160,82.2 260,238.8"
            << "60,291 160,238.8 260,186.6 360,134.4 460,82.2";
    }

    void positionsAtThreeSizes()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        const PatientGraphGeometry geometry = geometryOf(unequalPatients(), width, height);
        QTEST(pathPoints(geometry.axesPath), "axes");
        QCOMPARE(geometry.patientPaths.size(), 2);
        QTEST(pathPoints(geometry.patientPaths.at(0)), "first");
        QTEST(pathPoints(geometry.patientPaths.at(1)), "second");
    }

    void labelsAtThreeSizes_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<QString>("horizontal");
        QTest::addColumn<QString>("vertical");
        QTest::newRow("smallest window")
            << 700.0 << 400.0
            << "1 at 57,301; 2 at 182,301; 3 at 307,301; x at 675,290; 4 at 432,301; 5 at 557,301"
            << "10 at 35,242; 20 at 35,192; 30 at 35,142; 40 at 35,92; 50 at 35,42; "
               "mmol/mol at 10,25";
        QTest::newRow("large window")
            << 1200.0 << 800.0
            << "1 at 57,701; 2 at 282,701; 3 at 507,701; x at 1175,690; 4 at 732,701; 5 at 957,701"
            << "10 at 35,562; 20 at 35,432; 30 at 35,302; 40 at 35,172; 50 at 35,42; "
               "mmol/mol at 10,25";
        QTest::newRow("half of an exported page")
            << 575.0 << 411.0
            << "1 at 57,312; 2 at 157,312; 3 at 257,312; x at 550,301; 4 at 357,312; 5 at 457,312"
            << "10 at 35,250; 20 at 35,198; 30 at 35,146; 40 at 35,94; 50 at 35,42; "
               "mmol/mol at 10,25";
    }

    void labelsAtThreeSizes()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        const PatientGraphGeometry geometry = geometryOf(unequalPatients(), width, height);
        QTEST(described(geometry.horizontalLabels), "horizontal");
        QTEST(described(geometry.verticalLabels), "vertical");
    }

    void largestValueIsTruncated_data()
    {
        QTest::addColumn<QVector<double>>("values");
        QTest::addColumn<quint64>("maxValue");
        QTest::addColumn<double>("bands");
        QTest::newRow("50.5") << QVector<double>{50.5} << quint64(50) << 5.0;
        QTest::newRow("49.7") << QVector<double>{49.7} << quint64(49) << 5.0;
        QTest::newRow("50") << QVector<double>{50} << quint64(50) << 5.0;
        QTest::newRow("51") << QVector<double>{51} << quint64(51) << 6.0;
        QTest::newRow("1") << QVector<double>{0.5, 1.9, 1.0} << quint64(1) << 1.0;
        QTest::newRow("falling") << QVector<double>{90, 80.5, 12} << quint64(90) << 9.0;
        QTest::newRow("below one") << QVector<double>{0.99} << quint64(0) << 0.0;
        QTest::newRow("zero and below")
            << QVector<double>{0, -3, -1e300, -infinity} << quint64(0) << 0.0;
        QTest::newRow("NaN") << QVector<double>{qQNaN(), 20, qQNaN()} << quint64(20) << 2.0;
    }

    void largestValueIsTruncated()
    {
        QFETCH(QVector<double>, values);
        const QVector<PatientRecord> patients = patientsOf({values});
        QTEST(PatientGraphBounds(patients).maxValue, "maxValue");
        QTEST(geometryOf(patients).bands, "bands");
    }

    void peakRisesAboveTheTopGridLine()
    {
        const PatientGraphGeometry geometry = geometryOf(patientsOf({{50.5}}));
        QCOMPARE(geometry.yScale, 5.0);
        QCOMPARE(pathPoints(geometry.patientPaths.at(0)), "60,27.5");
    }

    void longestPatientGivesTheCount()
    {
        const QVector<PatientRecord> patients =
            patientsOf({{10, 20}, {}, {10, 20, 30, 40, 50}, {10}});
        QCOMPARE(PatientGraphBounds(patients).maxCount, 5.0);
        const PatientGraphGeometry geometry = geometryOf(patients);
        QCOMPARE(geometry.xStep, 125.0);
        QCOMPARE(geometry.patientPaths.size(), 4);
        QCOMPARE(pathPoints(geometry.patientPaths.at(0)), "60,230 185,180");
        QCOMPARE(geometry.patientPaths.at(1).elementCount(), 0);
        QCOMPARE(geometry.patientPaths.at(2).elementCount(), 5);
        QCOMPARE(geometry.patientPaths.at(3).elementCount(), 1);
        QCOMPARE(described(geometry.horizontalLabels),
                 "1 at 57,301; 2 at 182,301; x at 675,290; 3 at 307,301; 4 at 432,301; "
                 "5 at 557,301");
    }

    void axisLetterFollowsTheFirstPatient_data()
    {
        QTest::addColumn<int>("firstCount");
        QTest::addColumn<int>("letterAt");
        QTest::newRow("without values") << 0 << -1;
        QTest::newRow("shorter than the longest") << 2 << 2;
        QTest::newRow("as long") << 4 << 4;
        QTest::newRow("longest") << 5 << 5;
    }

    void axisLetterFollowsTheFirstPatient()
    {
        QFETCH(int, firstCount);
        const PatientGraphGeometry geometry =
            geometryOf(patientsOf({QVector<double>(firstCount, 30.0), {10, 20, 30, 40}}));
        QStringList texts;
        for (const GraphText &label : geometry.horizontalLabels) {
            if (label.text == "x") {
                QCOMPARE(label.position, QPoint(675, 290));
            }
            texts << label.text;
        }
        QTEST(int(texts.indexOf("x")), "letterAt");
    }

    void valuesBelowOneLeaveOnlyAxesAndLegend()
    {
        const PatientGraphGeometry geometry = geometryOf(patientsOf({{0.2, 0.9, 0, -0.5}}));
        QCOMPARE(pathPoints(geometry.axesPath),
                 "50,280 675,280; 60,290 60,15; 216.25,280 216.25,290; "
                 "372.5,280 372.5,290; 528.75,280 528.75,290");
        QCOMPARE(geometry.patientPaths.size(), 1);
        QCOMPARE(geometry.patientPaths.at(0).elementCount(), 0);
        QCOMPARE(described(geometry.verticalLabels), "");
        QCOMPARE(described(geometry.horizontalLabels),
                 "1 at 57,301; 2 at 213,301; 3 at 369,301; 4 at 525,301; x at 675,290");
        QCOMPARE(described(geometry.legend), "0: 20,310 20x20, p0 at 45,325");
    }

    void groupWithoutValuesHasAxesAndLegend()
    {
        const QVector<PatientRecord> patients = patientsOf({{}, {}});
        QCOMPARE(PatientGraphBounds(patients).maxCount, -1.0);
        const PatientGraphGeometry geometry = geometryOf(patients);
        QCOMPARE(pathPoints(geometry.axesPath), "50,280 675,280; 60,290 60,15");
        QCOMPARE(geometry.patientPaths.size(), 2);
        QCOMPARE(described(geometry.horizontalLabels), "");
        QCOMPARE(described(geometry.verticalLabels), "");
        QCOMPARE(described(geometry.legend),
                 "0: 20,310 20x20, p0 at 45,325; 1: 80,310 20x20, p1 at 105,325");
    }

    void oneMeasurementHasOneLabelAndNoTick()
    {
        const PatientGraphGeometry geometry = geometryOf(patientsOf({{10}}));
        QCOMPARE(pathPoints(geometry.axesPath), "50,280 675,280; 60,290 60,15; 50,30 675,30");
        QCOMPARE(described(geometry.horizontalLabels), "1 at 57,301; x at 675,290");
    }

    void negativeValueLiesBelowTheAxis()
    {
        const PatientGraphGeometry geometry = geometryOf(patientsOf({{50, -10}}));
        QCOMPARE(pathPoints(geometry.patientPaths.at(0)), "60,30 372.5,330");
    }

    void nanIsLeftOutAndOutOfRangeMovedToTheEdge_data()
    {
        QTest::addColumn<QVector<double>>("values");
        QTest::addColumn<QString>("points");
        // Five values, at most 50: 5 pixels per unit, 125 per measurement.
        QTest::newRow("first") << QVector<double>{qQNaN(), 10, 20, 30, 50}
                               << "185,230 310,180 435,130 560,30";
        QTest::newRow("inner") << QVector<double>{10, 20, qQNaN(), 30, 50}
                               << "60,230 185,180 435,130 560,30";
        QTest::newRow("last") << QVector<double>{10, 20, 30, 50, qQNaN()}
                              << "60,230 185,180 310,130 435,30";
        // The edge is 2^24.
        QTest::newRow("infinite") << QVector<double>{10, 20, 30, 50, -infinity}
                                  << "60,230 185,180 310,130 435,30 560,1.67772e+07";
        QTest::newRow("beyond the range")
            << QVector<double>{10, -1e8, -1e300, 30, 50}
            << "60,230 185,1.67772e+07 310,1.67772e+07 435,130 560,30";
        QTest::newRow("within the range") << QVector<double>{10, -1e6, 20, 30, 50}
                                          << "60,230 185,5.00028e+06 310,180 435,130 560,30";
    }

    void nanIsLeftOutAndOutOfRangeMovedToTheEdge()
    {
        QFETCH(QVector<double>, values);
        const PatientGraphGeometry geometry = geometryOf(patientsOf({values}));
        QTEST(pathPoints(geometry.patientPaths.at(0)), "points");
        QCOMPARE(geometry.horizontalLabels.size(), 6);
        QCOMPARE(geometry.verticalLabels.size(), 6);
    }

    void gridIsThinnedAboveAThousandBands_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("lines");
        QTest::addColumn<QString>("lowest");
        QTest::addColumn<QString>("highest");
        QTest::newRow("1000 bands") << 10000.0 << 1000 << "10"
                                    << "10000";
        QTest::newRow("1000 bands, truncated") << 10000.9 << 1000 << "10"
                                               << "10000";
        QTest::newRow("1001 bands") << 10001.0 << 100 << "100"
                                    << "10000";
        QTest::newRow("10000 bands") << 100000.0 << 1000 << "100"
                                     << "100000";
        QTest::newRow("10009 bands") << 100090.0 << 1000 << "100"
                                     << "100000";
        QTest::newRow("10010 bands") << 100100.0 << 100 << "1000"
                                     << "100000";
        QTest::newRow("1e12") << 1e12 << 1000 << "1000000000"
                              << "1000000000000";
        QTest::newRow("1e19") << 1e19 << 1000 << "10000000000000000"
                              << "10000000000000000000";
        QTest::newRow("beyond any whole number") << 1e300 << 184 << "100000000000000000"
                                                 << "18400000000000000000";
        QTest::newRow("infinite") << infinity << 184 << "100000000000000000"
                                  << "18400000000000000000";
    }

    void gridIsThinnedAboveAThousandBands()
    {
        QFETCH(double, value);
        QFETCH(int, lines);
        const PatientGraphGeometry geometry = geometryOf(patientsOf({{value, 20}}));
        QCOMPARE(geometry.verticalLabels.size(), lines + 1);
        QTEST(geometry.verticalLabels.first().text, "lowest");
        QTEST(geometry.verticalLabels.at(lines - 1).text, "highest");
        QCOMPARE(geometry.verticalLabels.last().text, "mmol/mol");
        // Two elements per line: the grid, two axes and one tick.
        QCOMPARE(geometry.axesPath.elementCount(), 2 * (lines + 3));
    }

    void hugeValuesLeaveTheScaleDefined()
    {
        const QVector<PatientRecord> patients = patientsOf({{infinity, 1e300, 1e10, 20}});
        QCOMPARE(PatientGraphBounds(patients).maxValue, std::numeric_limits<quint64>::max());
        // 250 pixels for 2^64 units: the two smaller values lie on the axis.
        QCOMPARE(pathPoints(geometryOf(patients).patientPaths.at(0)),
                 "60,-1.67772e+07 216.25,-1.67772e+07 372.5,280 528.75,280");
    }

    void legendStartsANewLineAtTheEdge()
    {
        // An entry of five characters takes 90 pixels.
        QVector<PatientRecord> patients;
        for (int i = 0; i < 9; ++i) {
            patients.append(patient(QString("id_%1").arg(i, 2), {10}));
        }
        // Seven entries end at 650; the eighth would reach 740, the ninth follows it on its line.
        QCOMPARE(described(geometryOf(patients).legend),
                 "0: 20,310 20x20, id_ 0 at 45,325; 1: 110,310 20x20, id_ 1 at 135,325; "
                 "2: 200,310 20x20, id_ 2 at 225,325; 3: 290,310 20x20, id_ 3 at 315,325; "
                 "4: 380,310 20x20, id_ 4 at 405,325; 5: 470,310 20x20, id_ 5 at 495,325; "
                 "6: 560,310 20x20, id_ 6 at 585,325; 7: 20,340 20x20, id_ 7 at 45,355; "
                 "8: 110,340 20x20, id_ 8 at 135,355");

        // An entry that ends at the edge moves too, one that ends a pixel before it stays.
        QCOMPARE(geometryOf(patients, 650).legend.at(6).square.topLeft(), QPointF(20, 340));
        QCOMPARE(geometryOf(patients, 651).legend.at(6).square.topLeft(), QPointF(560, 310));
    }

    void wideLegendEntryLeavesALineEmpty()
    {
        const QString wide(64, 'w');
        const QVector<PatientRecord> patients = {patient(wide, {10}), patient(wide, {10}),
                                                 patient("n", {10})};
        const PatientGraphGeometry geometry = geometryOf(patients);
        QCOMPARE(geometry.legend.at(0).square, QRectF(20, 340, 20, 20));
        QCOMPARE(geometry.legend.at(1).square, QRectF(20, 370, 20, 20));
        QCOMPARE(geometry.legend.at(2).square, QRectF(20, 400, 20, 20));
    }

    void legendFallsBelowTheWidget()
    {
        const PatientGraphGeometry geometry =
            geometryOf(patientsOf(QVector<QVector<double>>(100, {10})));
        QCOMPARE(geometry.legend.size(), 100);
        QCOMPARE(geometry.legend.last().patient, 99);
        QVERIFY(geometry.legend.last().square.top() > 400);
    }

    void sizeOutOfRangePlacesOnlyTheUnit()
    {
        for (const double size : {qQNaN(), infinity, 1e300}) {
            const PatientGraphGeometry geometry = geometryOf(patientsOf({{10, 20}}), size, size);
            QCOMPARE(geometry.axesPath.elementCount(), 0);
            QCOMPARE(geometry.patientPaths.at(0).elementCount(), 0);
            QCOMPARE(geometry.horizontalLabels.size(), 0);
            // The unit has a fixed place at any size, as long as there is a band.
            QCOMPARE(described(geometry.verticalLabels), "mmol/mol at 10,25");
            QCOMPARE(geometryOf(patientsOf({{0.5, 0.9}}), size, size).verticalLabels.size(), 0);
            QCOMPARE(geometry.legend.size(), 0);
        }
    }

    void identifierIsValidXmlText()
    {
        const QString broken = QString("a") + QChar(0x01) + QChar(0xD800) + "b" + QChar(0xDC00)
            + QChar(0xFFFF) + QChar(0x1F);
        const QString valid = "<&\">\t\u017E\U0001F600";
        const PatientGraphGeometry geometry =
            geometryOf({patient(broken, {10}), patient(valid, {10})});
        QCOMPARE(geometry.legend.at(0).name.text, "a\uFFFD\uFFFDb\uFFFD\uFFFD\uFFFD");
        QCOMPARE(geometry.legend.at(1).name.text, valid);
    }
};

QTEST_GUILESS_MAIN(TestPatientGraphGeometry)
#include "tst_patientgraphgeometry.moc"
