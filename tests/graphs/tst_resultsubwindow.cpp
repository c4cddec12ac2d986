// SPDX-License-Identifier: GPL-3.0-or-later
#include <QPainter>
#include <QtTest>

#include "graphs/resultsubwindow.h"
#include "support/graphdrawing.h"
#include "support/numbers.h"
#include "support/svgdrawing.h"

using Numbers::infinity;
using Operation = RecordingPaintDevice::Operation;

namespace
{

// By default two patients at the edges, one in the lower left and one in the upper right.
ResultSubWindow windowOf(const QVector<Point> &points = {{6, 2}, {20, 9}}, double centerX = 10,
                         double centerY = 4)
{
    return {scoresOf(points), 1, 1, centerY, centerX};
}

int widthOf(const QString &text)
{
    return QFontMetrics(QFont()).horizontalAdvance(text);
}

// The summary of a text that ends at x.
QString endingAt(int x, int y, const QString &text)
{
    return QString("text %1 %2: ").arg(x - widthOf(text)).arg(y) + text;
}

// Answers every text of the class in capitals.
class Capitals : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *text, const char * /*disambiguation*/,
                      int /*n*/) const override
    {
        return qstrcmp(context, "ResultSubWindow") == 0 ? QString(text).toUpper() : QString();
    }
};

} // namespace

Q_DECLARE_METATYPE(Point)

class TestResultSubWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowHasNoTitleAndNoSmallestSize()
    {
        const ResultSubWindow window = windowOf();
        QCOMPARE(window.windowTitle(), QString());
        QCOMPARE(window.minimumSize(), QSize(0, 0));
        QCOMPARE(window.parent(), nullptr);
    }

    void paintsInOrder()
    {
        const GraphDrawing drawing(windowOf({{6, 2}, {10, 4}, {20, 9}}));

        const QStringList expected = {
            "text 175 100: B/W; text 525 100: W/W; text 175 300: B/B; text 525 300: W/B",
            "text 224 212: 6; text 288 212: 8; text 672 212: 20; text 512 212: 5",
            endingAt(350, 274, "2"),
            endingAt(350, 242, "3"),
            endingAt(350, 50, "9"),
            endingAt(350, 130, "6.5"),
            "path; text 352 210: 10",
            endingAt(347, 198, "4"),
            "ellipse 220 262 4 4; text 226 268: p0; ellipse 348 198 4 4; text 354 204: p1",
            "ellipse 668 38 4 4; text 674 44: p2",
            endingAt(690, 225, "Convergence"),
            endingAt(347, 30, "Variability"),
            "text 5 398: Convergence: Linear least squares fitting",
            "text 5 385: Variability: Difference standard deviation offset",
        };
        QCOMPARE(drawing.summaries().join("; "), expected.join("; "));
        QCOMPARE(pathPoints(drawing.operations(Operation::Path).first().path),
                 "10,200 690,200; 350,10 350,390; 222,200 222,210; 286,200 286,210; "
                 "670,200 670,210; 510,200 510,210; 350,264 340,264; 350,232 340,232; "
                 "350,40 340,40; 350,120 340,120");
    }

    void pensBrushesAndFonts()
    {
        const GraphDrawing drawing(windowOf());
        for (const Operation &operation : drawing.operations().mid(4)) {
            QCOMPARE(operation.font, QFont());
            QCOMPARE(operation.pen, QPen());
            if (operation.kind == Operation::Ellipse) {
                QCOMPARE(operation.brush, QBrush(Qt::black, Qt::SolidPattern));
            }
            if (operation.kind == Operation::Path) {
                QCOMPARE(operation.brush, QBrush());
            }
        }
    }

    void kvadrantLabelsAreLargeAndGrey()
    {
        const GraphDrawing drawing(windowOf());
        for (const Operation &label : drawing.operations().mid(0, 4)) {
            QCOMPARE(label.font.family(), "Arial");
            QCOMPARE(label.font.pointSize(), 30);
            QVERIFY(!label.font.italic());
            QVERIFY(!label.font.bold());
            QCOMPARE(label.pen, QPen(QColor(128, 128, 128, 100)));
        }
    }

    void painterIsLeftAsItWas()
    {
        const ResultSubWindow window = windowOf();
        RecordingPaintDevice device;
        QPainter painter(&device);
        QFont font;
        font.setPointSize(7);
        const QPen pen(Qt::blue, 3);
        const QBrush brush(Qt::red);
        painter.setFont(font);
        painter.setPen(pen);
        painter.setBrush(brush);
        window.drawGraph(&painter, 700, 400);
        QCOMPARE(painter.font(), font);
        QCOMPARE(painter.pen(), pen);
        QCOMPARE(painter.brush(), brush);
        QCOMPARE(device.operations(Operation::Path).first().pen, pen);
        QCOMPARE(device.operations().last().font, font);
    }

    void fontsKeepTheirSize()
    {
        const ResultSubWindow window = windowOf();
        const GraphDrawing small(window, 300, 200);
        const GraphDrawing large(window, 3000, 2000);
        QCOMPARE(small.operations().size(), large.operations().size());
        for (int i = 0; i < small.operations().size(); ++i) {
            QCOMPARE(small.operations().at(i).font, large.operations().at(i).font);
        }
    }

    void methodNamesFollowTheIndices_data()
    {
        QTest::addColumn<double>("variability");
        QTest::addColumn<double>("convergence");
        QTest::addColumn<QString>("convergenceLine");
        QTest::addColumn<QString>("variabilityLine");
        QTest::newRow("0") << 0.0 << 0.0 << "Convergence: Median difference"
                           << "Variability: Standard deviation";
        QTest::newRow("1 and 2") << 2.0 << 1.0 << "Convergence: Linear least squares fitting"
                                 << "Variability: Interquartile range";
        QTest::newRow("2 and 1") << 1.0 << 2.0 << "Convergence: C*e^(k*x)"
                                 << "Variability: Difference standard deviation offset";
        QTest::newRow("truncated") << 2.9 << 1.5 << "Convergence: Linear least squares fitting"
                                   << "Variability: Interquartile range";
        QTest::newRow("toward zero") << -0.9 << 0.9 << "Convergence: Median difference"
                                     << "Variability: Standard deviation";
        QTest::newRow("none") << 3.0 << -1.0 << "Convergence: "
                              << "Variability: ";
        QTest::newRow("NaN and infinite") << qQNaN() << infinity << "Convergence: "
                                          << "Variability: ";
    }

    void methodNamesFollowTheIndices()
    {
        QFETCH(double, variability);
        QFETCH(double, convergence);
        QFETCH(QString, convergenceLine);
        QFETCH(QString, variabilityLine);
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), variability, convergence, 4, 10);
        const GraphDrawing drawing(window);
        QCOMPARE(drawing.summaries().mid(drawing.summaries().size() - 2),
                 QStringList() << "text 5 398: " + convergenceLine
                               << "text 5 385: " + variabilityLine);
    }

    void indicesChooseTheScores()
    {
        const QVector<PatientScoreRecord> scores = {
            {"a", {0, 0, 10}, {0, 4, 0}},
            {"b", {100, 100, 20}, {100, 9, 100}},
        };
        const ResultSubWindow window(scores, 1, 2, 4, 10);
        const GraphDrawing drawing(window);
        const QVector<Operation> dots = drawing.operations(Operation::Ellipse);
        QCOMPARE(dots.size(), 2);
        QCOMPARE(dots.at(0).rect.center(), QPointF(350, 200));
        QCOMPARE(dots.at(1).rect.center(), QPointF(670, 40));
    }

    void laterDrawingReplacesTheScale()
    {
        const ResultSubWindow window = windowOf({{6, 2}, {10, 4}, {20, 9}});
        const GraphDrawing before(window);
        const GraphDrawing page(window, 575, 411);
        const GraphDrawing after(window);
        QCOMPARE(after.summaries(), before.summaries());
        QCOMPARE(page.operations(Operation::Path).first().path.elementCount(), 20);
        QCOMPARE(page.operations(Operation::Ellipse).first().rect.center(), QPointF(184.5, 271.7));
    }

    void textsAreTranslated()
    {
        Capitals translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 0, 2, 4, 10);
        const GraphDrawing drawing(window);
        QCoreApplication::removeTranslator(&translator);
        QStringList texts;
        for (const Operation &text : drawing.operations(Operation::Text)) {
            texts << text.text;
        }
        QCOMPARE(texts.mid(texts.size() - 4),
                 QStringList() << "CONVERGENCE"
                               << "VARIABILITY"
                               << "CONVERGENCE: C*E^(K*X)"
                               << "VARIABILITY: STANDARD DEVIATION");
        QVERIFY(texts.contains("p0"));
    }

    void patientOnTheCrossHasBothCentersPrintedOnce()
    {
        const GraphDrawing drawing(windowOf({{1, 1}, {11, 5}, {16, 7}}, 11, 5));
        const QStringList all = drawing.summaries();
        QCOMPARE(all.count("ellipse 348 198 4 4"), 1);
        QCOMPARE(all.count("text 352 210: 11"), 1);
        QCOMPARE(all.count(endingAt(347, 198, "5")), 1);
        QCOMPARE(all.filter(QRegularExpression(": 11$")).size(), 1);
        QCOMPARE(all.filter(QRegularExpression(": 5$")).size(), 1);
    }

    void widgetShowsTheSameDrawing()
    {
        ResultSubWindow window = windowOf({{6, 2}, {10, 4}, {20, 9}});
        window.resize(820, 510);
        const auto [shown, drawn] = shownAndDrawn(window);
        QCOMPARE(shown, drawn);
        QCOMPARE(shown.pixelColor(790, 40), QColor(Qt::black));
    }

    void degenerateGroupKeepsCrossAndTexts_data()
    {
        QTest::addColumn<QVector<Point>>("points");
        QTest::addColumn<double>("centerX");
        QTest::addColumn<double>("centerY");
        QTest::addColumn<int>("dots");
        QTest::newRow("one patient on both centers") << QVector<Point>{{7, 3}} << 7.0 << 3.0 << 0;
        QTest::newRow("equal convergence") << QVector<Point>{{7, 1}, {7, 5}} << 7.0 << 3.0 << 0;
        QTest::newRow("equal variability") << QVector<Point>{{1, 3}, {9, 3}} << 5.0 << 3.0 << 0;
        QTest::newRow("one NaN") << QVector<Point>{{qQNaN(), 3}, {1, 2}, {9, 4}} << 5.0 << 3.0 << 2;
        QTest::newRow("NaN everywhere")
            << QVector<Point>{{qQNaN(), qQNaN()}} << qQNaN() << qQNaN() << 0;
        QTest::newRow("NaN beside a center")
            << QVector<Point>{{qQNaN(), qQNaN()}} << 5.0 << 3.0 << 0;
        QTest::newRow("infinite") << QVector<Point>{{infinity, -infinity}, {1, 2}} << 5.0 << 3.0
                                  << 1;
        QTest::newRow("huge") << QVector<Point>{{1e308, 1e308}, {-1e308, -1e308}} << 0.0 << 0.0
                              << 2;
        QTest::newRow("huge beside the center")
            << QVector<Point>{{1.7e308, 1.7e308}, {-1.7e308, -1.7e308}} << 1.7e308 << 1.7e308 << 1;
    }

    void degenerateGroupKeepsCrossAndTexts()
    {
        QFETCH(QVector<Point>, points);
        QFETCH(double, centerX);
        QFETCH(double, centerY);
        const GraphDrawing drawing(windowOf(points, centerX, centerY));
        QTEST(int(drawing.operations(Operation::Ellipse).size()), "dots");
        QVERIFY(pathPoints(drawing.operations(Operation::Path).first().path)
                    .startsWith("10,200 690,200; 350,10 350,390"));
        const QStringList all = drawing.summaries();
        QCOMPARE(all.at(0), "text 175 100: B/W");
        QCOMPARE(all.mid(all.size() - 4),
                 QStringList() << endingAt(690, 225, "Convergence")
                               << endingAt(347, 30, "Variability")
                               << "text 5 398: Convergence: Linear least squares fitting"
                               << "text 5 385: Variability: Difference standard deviation offset");
    }

    void svgIsWellFormed_data() { degenerateGroupKeepsCrossAndTexts_data(); }

    void svgIsWellFormed()
    {
        QFETCH(QVector<Point>, points);
        QFETCH(double, centerX);
        QFETCH(double, centerY);
        QVector<PatientScoreRecord> scores = scoresOf(points);
        scores[0].id = QString("<&\x01") + QChar(0xDC00);
        const ResultSubWindow window(scores, 1, 1, centerY, centerX);
        const QByteArray svg = SvgDrawing::drawn(
            {575, 411}, [&window](QPainter *painter) { window.drawGraph(painter, 575, 411); });
        QCOMPARE(SvgDrawing::fault(svg), QString());
        QVERIFY(
            SvgDrawing::texts(svg).endsWith("Variability: Difference standard deviation offset"));
    }
};

QTEST_MAIN(TestResultSubWindow)
#include "tst_resultsubwindow.moc"
