// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>

#include <QPainter>
#include <QtTest>

#include "graphs/resultsubwindow.h"
#include "support/recordingpaintdevice.h"
#include "support/svgdrawing.h"

namespace
{

using Operation = RecordingPaintDevice::Operation;

constexpr double inf = std::numeric_limits<double>::infinity();

struct Pair {
    double convergence;
    double variability;
};

// The same pair for every method.
QVector<PatientScoreRecord> scoresOf(const QVector<Pair> &pairs)
{
    QVector<PatientScoreRecord> scores;
    for (const Pair &pair : pairs) {
        scores.append({QString("patient %1").arg(scores.size()),
                       QVector<double>(methodCount, pair.convergence),
                       QVector<double>(methodCount, pair.variability)});
    }
    return scores;
}

void draw(RecordingPaintDevice *device, const ResultSubWindow &window, double width = 700,
          double height = 400)
{
    QPainter painter(device);
    window.drawGraph(&painter, width, height);
}

int widthOf(const QString &text)
{
    return QFontMetrics(QFont()).horizontalAdvance(text);
}

// A text that ends at x, a few pixels before it.
QString endingAt(int x, int y, const QString &text)
{
    return QString("text %1 %2: ").arg(x - widthOf(text)).arg(y) + text;
}

// A white picture on which texts are as large as in the widget.
QImage imageLike(const QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.setDotsPerMeterX(qRound(widget.logicalDpiX() * 100 / 2.54));
    image.setDotsPerMeterY(qRound(widget.logicalDpiY() * 100 / 2.54));
    image.fill(Qt::white);
    return image;
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

Q_DECLARE_METATYPE(Pair)

class TestResultSubWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowHasNoTitleAndNoSmallestSize()
    {
        const ResultSubWindow window(scoresOf({{6, 2}}), 0, 0, 4, 10);
        QCOMPARE(window.windowTitle(), QString());
        QCOMPARE(window.minimumSize(), QSize(0, 0));
        QCOMPARE(window.parent(), nullptr);
    }

    void paintsInOrder()
    {
        const ResultSubWindow window(scoresOf({{6, 2}, {10, 4}, {20, 9}}), 1, 1, 4, 10);
        RecordingPaintDevice device;
        draw(&device, window);

        const auto text = [](const char *summary) { return summary; };
        QStringList expected;
        expected << text("text 175 100: B/W") << text("text 525 100: W/W")
                 << text("text 175 300: B/B") << text("text 525 300: W/B");
        expected << text("text 224 212: 6") << text("text 288 212: 8") << text("text 672 212: 20")
                 << text("text 512 212: 5");
        expected << endingAt(350, 274, text("2")) << endingAt(350, 242, text("3"))
                 << endingAt(350, 50, text("9")) << endingAt(350, 130, text("6.5"));
        expected << text("path");
        expected << text("text 352 210: 10") << endingAt(347, 198, text("4"));
        expected << text("ellipse 220 262 4 4") << text("text 226 268: patient 0")
                 << text("ellipse 348 198 4 4") << text("text 354 204: patient 1")
                 << text("ellipse 668 38 4 4") << text("text 674 44: patient 2");
        expected << endingAt(690, 225, text("Convergence"))
                 << endingAt(347, 30, text("Variability"));
        expected << text("text 5 398: Convergence: Linear least squares fitting")
                 << text("text 5 385: Variability: Difference standard deviation offset");
        QCOMPARE(device.summaries(), expected);
        QCOMPARE(pathPoints(device.operations(Operation::Path).first().path),
                 text("10,200 690,200; 350,10 350,390; 222,200 222,210; 286,200 286,210; "
                      "670,200 670,210; 510,200 510,210; 350,264 340,264; 350,232 340,232; "
                      "350,40 340,40; 350,120 340,120"));
    }

    void pensBrushesAndFonts()
    {
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 1, 1, 4, 10);
        RecordingPaintDevice device;
        draw(&device, window);
        for (const Operation &operation : device.operations().mid(4)) {
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
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 1, 1, 4, 10);
        RecordingPaintDevice device;
        draw(&device, window);
        for (const Operation &label : device.operations().mid(0, 4)) {
            QCOMPARE(label.font.family(), "Arial");
            QCOMPARE(label.font.pointSize(), 30);
            QVERIFY(!label.font.italic());
            QVERIFY(!label.font.bold());
            QCOMPARE(label.pen, QPen(QColor(128, 128, 128, 100)));
        }
    }

    void painterIsLeftAsItWas()
    {
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 1, 1, 4, 10);
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
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 1, 1, 4, 10);
        RecordingPaintDevice small;
        RecordingPaintDevice large;
        draw(&small, window, 300, 200);
        draw(&large, window, 3000, 2000);
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
        QTest::newRow("whole part") << 2.9 << 1.5 << "Convergence: Linear least squares fitting"
                                    << "Variability: Interquartile range";
        QTest::newRow("toward zero") << -0.9 << 0.9 << "Convergence: Median difference"
                                     << "Variability: Standard deviation";
        QTest::newRow("none") << 3.0 << -1.0 << "Convergence: "
                              << "Variability: ";
        QTest::newRow("not numbers") << qQNaN() << inf << "Convergence: "
                                     << "Variability: ";
    }

    void methodNamesFollowTheIndices()
    {
        QFETCH(double, variability);
        QFETCH(double, convergence);
        QFETCH(QString, convergenceLine);
        QFETCH(QString, variabilityLine);
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), variability, convergence, 4, 10);
        RecordingPaintDevice device;
        draw(&device, window);
        QCOMPARE(device.summaries().mid(device.summaries().size() - 2),
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
        RecordingPaintDevice device;
        draw(&device, window);
        const QVector<Operation> dots = device.operations(Operation::Ellipse);
        QCOMPARE(dots.size(), 2);
        QCOMPARE(dots.at(0).rect.center(), QPointF(350, 200));
        QCOMPARE(dots.at(1).rect.center(), QPointF(670, 40));
    }

    void laterDrawingReplacesTheScale()
    {
        const ResultSubWindow window(scoresOf({{6, 2}, {10, 4}, {20, 9}}), 1, 1, 4, 10);
        RecordingPaintDevice before;
        RecordingPaintDevice page;
        RecordingPaintDevice after;
        draw(&before, window);
        draw(&page, window, 575, 411);
        draw(&after, window);
        QCOMPARE(after.summaries(), before.summaries());
        QCOMPARE(page.operations(Operation::Path).first().path.elementCount(), 20);
        QCOMPARE(page.operations(Operation::Ellipse).first().rect.center(), QPointF(184.5, 271.7));
    }

    void textsAreTranslated()
    {
        Capitals translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        const ResultSubWindow window(scoresOf({{6, 2}, {20, 9}}), 0, 2, 4, 10);
        RecordingPaintDevice device;
        draw(&device, window);
        QCoreApplication::removeTranslator(&translator);
        QStringList texts;
        for (const Operation &text : device.operations(Operation::Text)) {
            texts << text.text;
        }
        QCOMPARE(texts.mid(texts.size() - 4),
                 QStringList() << "CONVERGENCE"
                               << "VARIABILITY"
                               << "CONVERGENCE: C*E^(K*X)"
                               << "VARIABILITY: STANDARD DEVIATION");
        QVERIFY(texts.contains("patient 0"));
    }

    void patientOnTheCrossHasBothCentersPrintedOnce()
    {
        const ResultSubWindow window(scoresOf({{1, 1}, {11, 5}, {16, 7}}), 0, 0, 5, 11);
        RecordingPaintDevice device;
        draw(&device, window);
        const QStringList all = device.summaries();
        QCOMPARE(all.count("ellipse 348 198 4 4"), 1);
        QCOMPARE(all.count("text 352 210: 11"), 1);
        QCOMPARE(all.count(endingAt(347, 198, "5")), 1);
        QCOMPARE(all.filter(QRegularExpression(": 11$")).size(), 1);
        QCOMPARE(all.filter(QRegularExpression(": 5$")).size(), 1);
    }

    void widgetShowsTheSameDrawing()
    {
        ResultSubWindow window(scoresOf({{6, 2}, {10, 4}, {20, 9}}), 1, 1, 4, 10);
        window.resize(820, 510);
        QImage shown = imageLike(window);
        QImage drawn = shown;
        window.render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
        QPainter painter(&drawn);
        painter.setRenderHint(QPainter::Antialiasing);
        window.drawGraph(&painter, 820, 510);
        painter.end();
        QCOMPARE(shown, drawn);
        QCOMPARE(shown.pixelColor(790, 40), QColor(Qt::black));
    }

    void degenerateGroupKeepsAxesAndTexts_data()
    {
        QTest::addColumn<QVector<Pair>>("pairs");
        QTest::addColumn<double>("centerX");
        QTest::addColumn<double>("centerY");
        QTest::addColumn<int>("dots");
        QTest::newRow("one patient on both centers") << QVector<Pair>{{7, 3}} << 7.0 << 3.0 << 0;
        QTest::newRow("equal convergence") << QVector<Pair>{{7, 1}, {7, 5}} << 7.0 << 3.0 << 0;
        QTest::newRow("equal variability") << QVector<Pair>{{1, 3}, {9, 3}} << 5.0 << 3.0 << 0;
        QTest::newRow("one is not a number")
            << QVector<Pair>{{qQNaN(), 3}, {1, 2}, {9, 4}} << 5.0 << 3.0 << 2;
        QTest::newRow("none is a number")
            << QVector<Pair>{{qQNaN(), qQNaN()}} << qQNaN() << qQNaN() << 0;
        QTest::newRow("numbers elsewhere") << QVector<Pair>{{qQNaN(), qQNaN()}} << 5.0 << 3.0 << 0;
        QTest::newRow("infinite") << QVector<Pair>{{inf, -inf}, {1, 2}} << 5.0 << 3.0 << 1;
        QTest::newRow("huge") << QVector<Pair>{{1e308, 1e308}, {-1e308, -1e308}} << 0.0 << 0.0 << 2;
        QTest::newRow("huge beside the center")
            << QVector<Pair>{{1.7e308, 1.7e308}, {-1.7e308, -1.7e308}} << 1.7e308 << 1.7e308 << 1;
    }

    void degenerateGroupKeepsAxesAndTexts()
    {
        QFETCH(QVector<Pair>, pairs);
        QFETCH(double, centerX);
        QFETCH(double, centerY);
        const ResultSubWindow window(scoresOf(pairs), 0, 0, centerY, centerX);
        RecordingPaintDevice device;
        draw(&device, window);
        QTEST(int(device.operations(Operation::Ellipse).size()), "dots");
        QVERIFY(pathPoints(device.operations(Operation::Path).first().path)
                    .startsWith("10,200 690,200; 350,10 350,390"));
        const QStringList all = device.summaries();
        QCOMPARE(all.at(0), "text 175 100: B/W");
        QCOMPARE(all.mid(all.size() - 4),
                 QStringList() << endingAt(690, 225, "Convergence")
                               << endingAt(347, 30, "Variability")
                               << "text 5 398: Convergence: Median difference"
                               << "text 5 385: Variability: Standard deviation");
    }

    void svgIsWellFormed_data() { degenerateGroupKeepsAxesAndTexts_data(); }

    void svgIsWellFormed()
    {
        QFETCH(QVector<Pair>, pairs);
        QFETCH(double, centerX);
        QFETCH(double, centerY);
        QVector<PatientScoreRecord> scores = scoresOf(pairs);
        scores[0].id = QString("<&\x01") + QChar(0xDC00);
        const ResultSubWindow window(scores, 0, 0, centerY, centerX);
        const QByteArray svg = SvgDrawing::drawn(
            {575, 411}, [&window](QPainter *painter) { window.drawGraph(painter, 575, 411); });
        QCOMPARE(SvgDrawing::fault(svg), QString());
        QVERIFY(SvgDrawing::texts(svg).endsWith("Variability: Standard deviation"));
    }
};

QTEST_MAIN(TestResultSubWindow)
#include "tst_resultsubwindow.moc"
