// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>

#include <QtTest>

#include "graphs/resultplotgeometry.h"
#include "support/graphdrawing.h"
#include "support/numbers.h"

using Numbers::infinity;

namespace
{

constexpr double largest = std::numeric_limits<double>::max();

ResultPlotTexts texts()
{
    return {"B/W", "W/W", "B/B", "W/B", "Convergence", "Variability", "convergence", "variability"};
}

ResultPlotGeometry geometryOf(const QVector<Point> &points, double centerX, double centerY,
                              double width = 700, double height = 400)
{
    return {ResultPlotData(scoresOf(points), 1, 1, centerY, centerX), texts(), width, height,
            textWidth};
}

const QString cross = "10,200 690,200; 350,10 350,390";

} // namespace

class TestResultPlotGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Convergence 6, 10, 20 around 10 and variability 2, 4, 9 around 4: spans of 10 and 5.
    void positionsAtThreeSizes_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<double>("xScale");
        QTest::addColumn<double>("yScale");
        QTest::addColumn<QString>("dots");
        QTest::addColumn<QString>("axes");
        QTest::addColumn<QString>("ticks");
        QTest::addColumn<QString>("centers");

        QTest::newRow("smallest window")
            << 700.0 << 400.0 << 32.0 << 32.0
            << "222,264 p0 at 226,268; 350,200 p1 at 354,204; 670,40 p2 at 674,44"
            << "10,200 690,200; 350,10 350,390; 222,200 222,210; 286,200 286,210; 670,200 670,210; "
               "510,200 510,210; 350,264 340,264; 350,232 340,232; 350,40 340,40; 350,120 340,120"
            << "6 at 224,212; 8 at 288,212; 20 at 672,212; 5 at 512,212; 2 at 340,274; "
               "3 at 340,242; 9 at 340,50; 6.5 at 320,130"
            << "10 at 352,210; 4 at 337,198";
        QTest::newRow("large window")
            << 1200.0 << 800.0 << 57.0 << 72.0
            << "372,544 p0 at 376,548; 600,400 p1 at 604,404; 1170,40 p2 at 1174,44"
            << "10,400 1190,400; 600,10 600,790; 372,400 372,410; 486,400 486,410; "
               "1170,400 1170,410; 885,400 885,410; 600,544 590,544; 600,472 590,472; "
               "600,40 590,40; 600,220 590,220"
            << "6 at 374,412; 8 at 488,412; 20 at 1172,412; 5 at 887,412; 2 at 590,554; "
               "3 at 590,482; 9 at 590,50; 6.5 at 570,230"
            << "10 at 602,410; 4 at 587,398";
        QTest::newRow("half of an exported page")
            << 575.0 << 411.0 << 25.75 << 33.1
            << "184.5,271.7 p0 at 188,275; 287.5,205.5 p1 at 291,209; 545,40 p2 at 549,44"
            << "10,205.5 565,205.5; 287.5,10 287.5,401; 184.5,205.5 184.5,215.5; "
               "236,205.5 236,215.5; 545,205.5 545,215.5; 416.25,205.5 416.25,215.5; "
               "287.5,271.7 277.5,271.7; 287.5,238.6 277.5,238.6; 287.5,40 277.5,40; "
               "287.5,122.75 277.5,122.75"
            << "6 at 186,217; 8 at 238,217; 20 at 547,217; 5 at 418,217; 2 at 277,281; "
               "3 at 277,248; 9 at 277,50; 6.5 at 257,132"
            << "10 at 289,215; 4 at 274,203";
    }

    void positionsAtThreeSizes()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        const ResultPlotGeometry geometry =
            geometryOf({{6, 2}, {10, 4}, {20, 9}}, 10, 4, width, height);
        QTEST(geometry.xScale, "xScale");
        QTEST(geometry.yScale, "yScale");
        QTEST(described(geometry.dots), "dots");
        QTEST(pathPoints(geometry.axesPath), "axes");
        QTEST(described(geometry.tickLabels), "ticks");
        QTEST(described(geometry.centerLabels), "centers");
    }

    void fixedTextsAtThreeSizes_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<QString>("kvadrants");
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("methods");
        QTest::newRow("smallest window")
            << 700.0 << 400.0 << "B/W at 175,100; W/W at 525,100; B/B at 175,300; W/B at 525,300"
            << "Convergence at 580,225; Variability at 237,30"
            << "convergence at 5,398; variability at 5,385";
        QTest::newRow("large window")
            << 1200.0 << 800.0 << "B/W at 300,200; W/W at 900,200; B/B at 300,600; W/B at 900,600"
            << "Convergence at 1080,425; Variability at 487,30"
            << "convergence at 5,798; variability at 5,785";
        QTest::newRow("half of an exported page")
            << 575.0 << 411.0 << "B/W at 143,102; W/W at 431,102; B/B at 143,308; W/B at 431,308"
            << "Convergence at 455,230; Variability at 174,30"
            << "convergence at 5,409; variability at 5,396";
    }

    void fixedTextsAtThreeSizes()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        const ResultPlotGeometry geometry = geometryOf({{6, 2}, {20, 9}}, 10, 4, width, height);
        QTEST(described(geometry.kvadrantLabels), "kvadrants");
        QTEST(described(geometry.axisNames), "names");
        QTEST(described(geometry.methodLines), "methods");
    }

    void largerHalfSetsTheScale_data()
    {
        QTest::addColumn<double>("center");
        QTest::addColumn<double>("xScale");
        QTest::addColumn<double>("yScale");
        // Values 0 and 20 on both axes, on 640 and 320 pixels.
        QTest::newRow("upper half") << 4.0 << 20.0 << 10.0;
        QTest::newRow("lower half") << 16.0 << 20.0 << 10.0;
        QTest::newRow("middle") << 10.0 << 32.0 << 16.0;
        QTest::newRow("below all") << -20.0 << 8.0 << 4.0;
        QTest::newRow("above all") << 40.0 << 8.0 << 4.0;
    }

    void largerHalfSetsTheScale()
    {
        QFETCH(double, center);
        const ResultPlotGeometry geometry = geometryOf({{20, 0}, {0, 20}}, center, center);
        QTEST(geometry.xScale, "xScale");
        QTEST(geometry.yScale, "yScale");
    }

    void onePatientLiesAtTheEdgeOfItsSide_data()
    {
        QTest::addColumn<double>("convergence");
        QTest::addColumn<double>("variability");
        QTest::addColumn<QString>("dots");
        QTest::addColumn<QString>("ticks");
        QTest::newRow("worse on both axes")
            << 12.0 << 6.0 << "670,40 p0 at 674,44"
            << "; 670,200 670,210; 510,200 510,210; 670,200 670,210; 510,200 510,210"
               "; 350,40 340,40; 350,120 340,120; 350,40 340,40; 350,120 340,120";
        QTest::newRow("better on both axes")
            << 8.0 << 3.0 << "30,360 p0 at 34,364"
            << "; 30,200 30,210; 190,200 190,210; 30,200 30,210; 190,200 190,210"
               "; 350,360 340,360; 350,280 340,280; 350,360 340,360; 350,280 340,280";
    }

    void onePatientLiesAtTheEdgeOfItsSide()
    {
        QFETCH(double, convergence);
        QFETCH(double, variability);
        QFETCH(QString, ticks);
        const ResultPlotGeometry geometry = geometryOf({{convergence, variability}}, 10, 4);
        QTEST(described(geometry.dots), "dots");
        QCOMPARE(pathPoints(geometry.axesPath), cross + ticks);
    }

    void patientOnBothCentersLiesOnTheCross()
    {
        const ResultPlotGeometry geometry = geometryOf({{0, 0}, {10, 4}, {20, 8}}, 10, 4);
        QCOMPARE(described(geometry.dots.at(1)), "350,200 p1 at 354,204");
        QCOMPARE(described(geometry.centerLabels), "10 at 352,210; 4 at 337,198");
    }

    void axisWithoutSpreadHasItsCenterLabelOnly_data()
    {
        QTest::addColumn<double>("centerX");
        QTest::addColumn<double>("centerY");
        QTest::addColumn<QString>("ticks");
        QTest::addColumn<QString>("labels");
        // Both patients are at 7 and 3.
        QTest::newRow("convergence")
            << 7.0 << 2.0 << "; 350,40 340,40; 350,120 340,120; 350,40 340,40; 350,120 340,120"
            << "3 at 340,50; 2.5 at 320,130; 3 at 340,50; 2.5 at 320,130";
        QTest::newRow("variability")
            << 6.0 << 3.0 << "; 670,200 670,210; 510,200 510,210; 670,200 670,210; 510,200 510,210"
            << "7 at 672,212; 6.5 at 512,212; 7 at 672,212; 0.5 at 512,212";
        QTest::newRow("both") << 7.0 << 3.0 << ""
                              << "";
    }

    void axisWithoutSpreadHasItsCenterLabelOnly()
    {
        QFETCH(double, centerX);
        QFETCH(double, centerY);
        QFETCH(QString, ticks);
        const ResultPlotGeometry geometry = geometryOf({{7, 3}, {7, 3}}, centerX, centerY);
        QCOMPARE(pathPoints(geometry.axesPath), cross + ticks);
        QTEST(described(geometry.tickLabels), "labels");
        QCOMPARE(described(geometry.dots), "");
        QCOMPARE(described(geometry.centerLabels),
                 QString("%1 at 352,210; %2 at 337,198").arg(centerX).arg(centerY));
        QCOMPARE(geometry.kvadrantLabels.size(), 4);
        QCOMPARE(geometry.axisNames.size(), 2);
        QCOMPARE(geometry.methodLines.size(), 2);
    }

    void patientWithNaNIsLeftOut_data()
    {
        QTest::addColumn<double>("convergence");
        QTest::addColumn<double>("variability");
        QTest::newRow("convergence") << qQNaN() << 4.0;
        QTest::newRow("variability") << 10.0 << qQNaN();
        QTest::newRow("both") << qQNaN() << qQNaN();
    }

    void patientWithNaNIsLeftOut()
    {
        QFETCH(double, convergence);
        QFETCH(double, variability);
        const ResultPlotGeometry geometry =
            geometryOf({{6, 2}, {convergence, variability}, {20, 9}}, 10, 4);
        QCOMPARE(geometry.xScale, 32.0);
        QCOMPARE(geometry.yScale, 32.0);
        QCOMPARE(described(geometry.dots), "222,264 p0 at 226,268; 670,40 p2 at 674,44");
        QCOMPARE(geometry.tickLabels.size(), 8);
    }

    void axisOfNaNsHasNoTicks()
    {
        const ResultPlotGeometry geometry = geometryOf({{qQNaN(), 3}}, 10, 2);
        QCOMPARE(pathPoints(geometry.axesPath),
                 cross
                     + "; 350,40 340,40; 350,120 340,120; 350,40 340,40; "
                       "350,120 340,120");
        QCOMPARE(described(geometry.tickLabels),
                 "3 at 340,50; 2.5 at 320,130; 3 at 340,50; 2.5 at 320,130");
        QCOMPARE(described(geometry.dots), "");
    }

    void centerOfNaNLeavesNoDot()
    {
        const ResultPlotGeometry geometry = geometryOf({{6, 2}, {20, 9}}, qQNaN(), qQNaN());
        QCOMPARE(pathPoints(geometry.axesPath), cross);
        QCOMPARE(described(geometry.tickLabels), "");
        QCOMPARE(described(geometry.dots), "");
        QCOMPARE(described(geometry.centerLabels), "nan at 352,210; nan at 317,198");
    }

    void extremeValuesStayInRange_data()
    {
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        QTest::addColumn<double>("center");
        QTest::newRow("largest numbers") << -largest << largest << 0.0;
        QTest::newRow("center on the largest number") << -largest << largest << largest;
        QTest::newRow("infinite") << -infinity << infinity << 0.0;
        QTest::newRow("one infinite") << 1.0 << infinity << 2.0;
        QTest::newRow("infinite center") << 1.0 << 2.0 << infinity;
        QTest::newRow("smallest spread") << 0.0 << std::numeric_limits<double>::denorm_min() << 0.0;
        QTest::newRow("large center") << 1.0 << 2.0 << 1e300;
    }

    void extremeValuesStayInRange()
    {
        QFETCH(double, low);
        QFETCH(double, high);
        QFETCH(double, center);
        const ResultPlotGeometry geometry = geometryOf({{low, low}, {high, high}}, center, center);
        for (int i = 0; i < geometry.axesPath.elementCount(); ++i) {
            QVERIFY(isPlaceable(geometry.axesPath.elementAt(i)));
        }
        for (const ResultPlotGeometry::Dot &dot : geometry.dots) {
            QVERIFY(isPlaceable(dot.center));
        }
        QCOMPARE(geometry.tickLabels.size() * 2 + 4, geometry.axesPath.elementCount());
        QCOMPARE(geometry.centerLabels.size(), 2);
        QCOMPARE(geometry.methodLines.size(), 2);
    }

    void unknownMethodHasNoValues_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("below") << -1;
        QTest::newRow("above") << 3;
    }

    void unknownMethodHasNoValues()
    {
        QFETCH(int, index);
        const ResultPlotData data(scoresOf({{6, 2}}), index, index, 4, 10);
        QCOMPARE(data.patients.size(), 1);
        QVERIFY(qIsNaN(data.patients.first().convergence));
        QVERIFY(qIsNaN(data.patients.first().variability));
        QVERIFY(data.convergence.isEmpty());
        QVERIFY(data.variability.isEmpty());
    }

    void numbersHaveSixDigits()
    {
        const ResultPlotGeometry geometry =
            geometryOf({{-0.00001234, 0}, {1234567.8, 0.123456789}}, 0, 1);
        QStringList labels;
        for (const GraphText &label : geometry.tickLabels) {
            labels << label.text;
        }
        QCOMPARE(labels.join(' '),
                 "-1.234e-05 -6.17e-06 1.23457e+06 617284 0 0.5 0.123457 0.561728");
    }

    void identifierIsValidXmlText()
    {
        QVector<PatientScoreRecord> scores = scoresOf({{6, 2}});
        scores.first().id = QString("a") + QChar(0) + QChar(0x08) + "<b>";
        const ResultPlotGeometry geometry(ResultPlotData(scores, 1, 1, 4, 10), texts(), 700, 400,
                                          textWidth);
        QCOMPARE(geometry.dots.first().name.text, "a\uFFFD\uFFFD<b>");
    }

    void sizeOutOfRangePlacesNothing()
    {
        for (const double size : {qQNaN(), infinity, -1e300}) {
            const ResultPlotGeometry geometry = geometryOf({{6, 2}, {20, 9}}, 10, 4, size, size);
            QCOMPARE(geometry.axesPath.elementCount(), 0);
            QCOMPARE(geometry.dots.size(), 0);
            QCOMPARE(geometry.kvadrantLabels.size(), 0);
            QCOMPARE(geometry.tickLabels.size(), 0);
            QCOMPARE(geometry.centerLabels.size(), 0);
            QCOMPARE(geometry.axisNames.size(), 0);
            QCOMPARE(geometry.methodLines.size(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestResultPlotGeometry)
#include "tst_resultplotgeometry.moc"
