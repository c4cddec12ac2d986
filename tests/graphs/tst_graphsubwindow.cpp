// SPDX-License-Identifier: GPL-3.0-or-later
#include <utility>

#include <QPainter>
#include <QtTest>

#include "graphs/graphpalette.h"
#include "graphs/graphsubwindow.h"
#include "support/graphdrawing.h"
#include "support/numbers.h"
#include "support/svgdrawing.h"

using Numbers::infinity;
using Operation = RecordingPaintDevice::Operation;

namespace
{

// By default patients of unequal length, the first one with a peak above the highest grid line.
GraphSubWindow windowOf(const QVector<QVector<double>> &values = {{50.5, 40, 10},
                                                                  {0, 10, 20, 30, 40}})
{
    return {QString(), patientsOf(values)};
}

const QStringList paletteNames =
    QString(
        "#000000 #00FF00 #0000FF #FF0000 #01FFFE #FFA6FE #FFDB66 #006401 #010067 #95003A #007DB5 "
        "#FF00F6 #E85EBE #774D00 #90FB92 #0076FF #D5FF00 #FF937E #6A826C #FF029D #FE8900 #7A4782 "
        "#7E2DD2 #85A900 #FF0056 #A42400 #00AE7E #683D3B #BDC6FF #263400 #BDD393 #00B917 #9E008E "
        "#001544 #C28C9F #FF74A3 #01D0FF #004754 #E56FFE #788231 #0E4CA1 #91D0CB #BE9970 #968AE8 "
        "#BB8800 #43002C #DEFF74 #00FFC6 #FFE502 #620E00 #008F9C #98FF52 #7544B1 #B500FF #00FF78 "
        "#FF6E41 #005F39 #6B6882 #5FAD4E #A75740 #A5FFD2 #FFB167 #009BFF")
        .split(' ');

// In the font in which the legend is measured, though not drawn.
int legendWidth(const QString &text)
{
    QFont font;
    font.setStyleHint(QFont::Times, QFont::PreferAntialias);
    return QFontMetrics(font).horizontalAdvance(text);
}

QString line(const char *format, double x, double y, const QString &text)
{
    return QString(format).arg(x).arg(y) + text;
}

} // namespace

Q_DECLARE_METATYPE(PatientRecord)

class TestGraphSubWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paletteHasItsColoursInOrder()
    {
        QCOMPARE(paletteNames.size(), 63);
        for (int patient = 0; patient < 3 * 63; ++patient) {
            QCOMPARE(GraphPalette::color(patient).name().toUpper(), paletteNames.at(patient % 63));
        }
    }

    void windowHasNameAndSmallestSize()
    {
        const GraphSubWindow window("Graph <1>", patientsOf({{10}}));
        QCOMPARE(window.windowTitle(), "Graph <1>");
        QCOMPARE(window.minimumSize(), QSize(700, 400));
        QCOMPARE(window.parent(), nullptr);
    }

    void paintsInOrder()
    {
        const GraphDrawing drawing(windowOf());

        const int second = 20 + 25 + legendWidth("p0") + 15;
        const QString expected =
            QString("path; path; path; text 57 301: 1; text 182 301: 2; text 307 301: 3; "
                    "text 675 290: x; text 432 301: 4; text 557 301: 5; text 35 242: 10; "
                    "text 35 192: 20; text 35 142: 30; text 35 92: 40; text 35 42: 50; "
                    "text 10 25: mmol/mol; rectangle 20 310 20 20; text 45 325: p0; "
                    "rectangle %1 310 20 20; text %2 325: p1")
                .arg(second)
                .arg(second + 25);
        QCOMPARE(drawing.summaries(), expected.split("; "));
    }

    void pathsAreAxesThenPatients()
    {
        const GraphDrawing drawing(windowOf());
        QCOMPARE(pathPoints(drawing.operations().at(0).path),
                 "50,280 675,280; 60,290 60,15; 50,230 675,230; 50,180 675,180; "
                 "50,130 675,130; 50,80 675,80; 50,30 675,30; 185,280 185,290; "
                 "310,280 310,290; 435,280 435,290; 560,280 560,290");
        QCOMPARE(pathPoints(drawing.operations().at(1).path), "60,27.5 185,80 310,230");
        QCOMPARE(pathPoints(drawing.operations().at(2).path),
                 "60,280 185,230 310,180 435,130 560,80");
    }

    void pensOfAxesLinesAndTexts()
    {
        const GraphDrawing drawing(windowOf({{10}, {20}}));

        const QPen black(QBrush(Qt::black, Qt::SolidPattern), 1.0, Qt::SolidLine, Qt::SquareCap,
                         Qt::BevelJoin);
        const QPen green(QBrush(QColor(0, 255, 0)), 2.0, Qt::SolidLine, Qt::SquareCap,
                         Qt::BevelJoin);
        const QVector<Operation> paths = drawing.operations(Operation::Path);
        QCOMPARE(paths.size(), 3);
        QCOMPARE(paths.at(0).pen, black);
        QCOMPARE(paths.at(1).pen.widthF(), 2.0);
        QCOMPARE(paths.at(1).pen.color(), QColor(Qt::black));
        QCOMPARE(paths.at(2).pen, green);
        for (const Operation &text : drawing.operations(Operation::Text)) {
            QCOMPARE(text.pen, black);
            QCOMPARE(text.font, QFont());
        }
        for (const Operation &operation : drawing.operations()) {
            QVERIFY(operation.antialiased);
            if (operation.kind != Operation::Rectangle) {
                QCOMPARE(operation.brush.style(), Qt::NoBrush);
            }
        }
    }

    void coloursRepeatAfterSixtyThreePatients()
    {
        const GraphDrawing drawing(windowOf(QVector<QVector<double>>(70, {10, 20})));

        const QVector<Operation> paths = drawing.operations(Operation::Path);
        const QVector<Operation> squares = drawing.operations(Operation::Rectangle);
        QCOMPARE(paths.size(), 71);
        QCOMPARE(squares.size(), 70);
        for (int i = 0; i < 70; ++i) {
            const QColor color(paletteNames.at(i % 63));
            QCOMPARE(paths.at(i + 1).pen.color(), color);
            QCOMPARE(squares.at(i).brush.color(), color);
            QCOMPARE(squares.at(i).brush.style(), Qt::SolidPattern);
            QCOMPARE(squares.at(i).pen.style(), Qt::NoPen);
        }
        QCOMPARE(paths.at(64).pen.color(), QColor(Qt::black));
    }

    void legendFlowsOverSeveralLines()
    {
        QVector<PatientRecord> patients = patientsOf(QVector<QVector<double>>(23, {10}));
        patients[5].id = QString(200, 'w');
        const GraphSubWindow window(QString(), patients);
        const GraphDrawing drawing(window);

        QStringList expected;
        int x = 20;
        int y = 310;
        for (const PatientRecord &patient : std::as_const(patients)) {
            const int width = 25 + legendWidth(patient.id) + 15;
            if (x + width >= 700) {
                x = 20;
                y += 30;
            }
            expected << line("rectangle %1 %2 20 20", x, y, QString())
                     << line("text %1 %2: ", x + 25, y + 15, patient.id);
            x += width;
        }
        QVERIFY(y >= 400);
        QCOMPARE(drawing.summaries().mid(drawing.summaries().size() - expected.size()), expected);
    }

    void legendIsMeasuredAsTimesInAnyFont()
    {
        // The style hint chooses a family in place of one that no system has.
        QFont drawn("no such family", 20);
        QFont measured = drawn;
        measured.setStyleHint(QFont::Times, QFont::PreferAntialias);
        const QString id = "patient 0";
        const int width = QFontMetrics(measured).horizontalAdvance(id);
        if (QFontMetrics(drawn).horizontalAdvance(id) == width) {
            QSKIP("this system has one family for all hints");
        }
        const GraphSubWindow window(QString(), {{id, {10}, -1}, {id, {20}, -1}});
        RecordingPaintDevice device;
        QPainter painter(&device);
        painter.setFont(drawn);
        window.drawGraph(&painter, 700, 400);
        painter.end();
        const QVector<Operation> squares = device.operations(Operation::Rectangle);
        QCOMPARE(squares.size(), 2);
        QCOMPARE(squares.at(1).rect.left(), 20.0 + 25 + width + 15);
        for (const Operation &text : device.operations(Operation::Text)) {
            QCOMPARE(text.font.styleHint(), drawn.styleHint());
        }
    }

    void letterIsDrawnWhenTheFirstPatientIsShorter()
    {
        const GraphDrawing drawing(windowOf({{10, 20}, {10, 20, 30}}), 1200, 800);
        QCOMPARE(drawing.summaries().count("text 1175 690: x"), 1);
        QCOMPARE(drawing.summaries().indexOf("text 1175 690: x"),
                 drawing.summaries().indexOf("text 432 701: 2") + 1);
    }

    void noLetterWhenTheFirstPatientHasNoValues()
    {
        const GraphDrawing drawing(windowOf({{}, {10, 20, 30}}));
        QCOMPARE(drawing.operations(Operation::Path).size(), 3);
        QCOMPARE(drawing.operations(Operation::Path).at(1).path.elementCount(), 0);
        QCOMPARE(drawing.operations(Operation::Path).at(2).pen.color(), QColor(0, 255, 0));
        for (const Operation &text : drawing.operations(Operation::Text)) {
            QVERIFY(text.text != "x");
        }
    }

    void laterDrawingReplacesTheScale()
    {
        const GraphSubWindow window = windowOf();
        const GraphDrawing before(window);
        const GraphDrawing page(window, 575, 411);
        const GraphDrawing after(window);
        QCOMPARE(after.summaries(), before.summaries());
        QCOMPARE(after.operations().at(1).path, before.operations().at(1).path);
        QCOMPARE(pathPoints(page.operations().at(1).path), "60,27.39 160,82.2 260,238.8");
    }

    void keepsItsPatients()
    {
        QVector<PatientRecord> patients = patientsOf({{10, 20}});
        const GraphSubWindow window(QString(), patients);
        const GraphDrawing before(window);
        patients[0] = {"other", {90, 80, 70}, 1};
        const GraphDrawing after(window);
        QCOMPARE(after.summaries(), before.summaries());
    }

    void widgetShowsTheSameDrawing()
    {
        GraphSubWindow window = windowOf();
        window.resize(820, 510);
        const auto [shown, drawn] = shownAndDrawn(window);
        QCOMPARE(shown, drawn);
        // The top grid line: 820 wide, at 30 from the top.
        QVERIFY(shown.pixelColor(700, 30).value() < 255);
        QCOMPARE(shown.pixelColor(800, 30), QColor(Qt::white));
    }

    void distantPointsAreClippedByTheRaster()
    {
        // The second line leaves the picture straight downwards and comes back.
        const GraphSubWindow window = windowOf({{10}, {10, -3e5, 10}});
        QImage image(700, 400, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        window.drawGraph(&painter, image.width(), image.height());
        painter.end();
        QCOMPARE(image.pixelColor(60, 200), QColor(0, 255, 0));
        QCOMPARE(image.pixelColor(150, 390), QColor(Qt::white));
    }

    void svgIsWellFormed_data()
    {
        QTest::addColumn<QVector<PatientRecord>>("patients");
        QTest::addColumn<QString>("text");
        QTest::newRow("ordinary") << patientsOf({{50, 60}, {30, 20, 10}}) << "mmol/mol";
        QTest::newRow("values below one") << patientsOf({{0.5, 0.1, 0}}) << "p0";
        QTest::newRow("no values") << patientsOf({{}, {}}) << "p1";
        QTest::newRow("one value") << patientsOf({{42}}) << "50";
        QTest::newRow("NaN and infinite")
            << patientsOf({{qQNaN(), infinity, -infinity, 1e300, -1e300}}) << "mmol/mol";
        QTest::newRow("very large") << patientsOf({{123456789012.0, 5}}) << "mmol/mol";
        const QString controls = QString("\x01\x0B\x1F") + QChar(0xD800) + QChar(0xFFFE);
        QTest::newRow("control characters") << QVector<PatientRecord>{{controls + "end", {10}, -1}}
                                            << QString(5, QChar::ReplacementCharacter) + "end";
        QTest::newRow("markup") << QVector<PatientRecord>{{"</text><&\"'", {10}, -1}}
                                << "</text><&\"'";
    }

    void svgIsWellFormed()
    {
        QFETCH(QVector<PatientRecord>, patients);
        QFETCH(QString, text);
        const GraphSubWindow window(QString(), patients);
        const QByteArray svg = SvgDrawing::drawn(
            {575, 411}, [&window](QPainter *painter) { window.drawGraph(painter, 575, 411); });
        QCOMPARE(SvgDrawing::fault(svg), QString());
        QVERIFY2(SvgDrawing::texts(svg).contains(text), qPrintable(SvgDrawing::texts(svg)));
    }
};

QTEST_MAIN(TestGraphSubWindow)
#include "tst_graphsubwindow.moc"
