// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>
#include <utility>

#include <QPainter>
#include <QtTest>

#include "graphs/graphpalette.h"
#include "graphs/graphsubwindow.h"
#include "support/recordingpaintdevice.h"
#include "support/svgdrawing.h"

namespace
{

using Operation = RecordingPaintDevice::Operation;

constexpr double inf = std::numeric_limits<double>::infinity();

const QStringList paletteNames =
    QString(
        "#000000 #00FF00 #0000FF #FF0000 #01FFFE #FFA6FE #FFDB66 #006401 #010067 #95003A #007DB5 "
        "#FF00F6 #E85EBE #774D00 #90FB92 #0076FF #D5FF00 #FF937E #6A826C #FF029D #FE8900 #7A4782 "
        "#7E2DD2 #85A900 #FF0056 #A42400 #00AE7E #683D3B #BDC6FF #263400 #BDD393 #00B917 #9E008E "
        "#001544 #C28C9F #FF74A3 #01D0FF #004754 #E56FFE #788231 #0E4CA1 #91D0CB #BE9970 #968AE8 "
        "#BB8800 #43002C #DEFF74 #00FFC6 #FFE502 #620E00 #008F9C #98FF52 #7544B1 #B500FF #00FF78 "
        "#FF6E41 #005F39 #6B6882 #5FAD4E #A75740 #A5FFD2 #FFB167 #009BFF")
        .split(' ');

QVector<PatientRecord> group(const QVector<QVector<double>> &series)
{
    QVector<PatientRecord> patients;
    for (const QVector<double> &values : series) {
        patients.append(
            {QString("patient %1").arg(patients.size()), values, PatientRecord::noIdealKvadrant});
    }
    return patients;
}

void draw(RecordingPaintDevice *device, const GraphSubWindow &window, double width = 700,
          double height = 400)
{
    QPainter painter(device);
    window.drawGraph(&painter, width, height);
}

// In the font in which the legend is measured, though not drawn.
int legendWidth(const QString &text)
{
    QFont font;
    font.setStyleHint(QFont::Times, QFont::PreferAntialias);
    return QFontMetrics(font).horizontalAdvance(text);
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
        const GraphPalette &palette = GraphPalette::instance();
        QCOMPARE(palette.size(), 63);
        QCOMPARE(paletteNames.size(), 63);
        for (int i = 0; i < 3 * 63; ++i) {
            QCOMPARE(palette.color(i).name().toUpper(), paletteNames.at(i % 63));
        }
    }

    void windowHasNameAndSmallestSize()
    {
        const GraphSubWindow window("Graph <1>", group({{10}}));
        QCOMPARE(window.windowTitle(), "Graph <1>");
        QCOMPARE(window.minimumSize(), QSize(700, 400));
        QCOMPARE(window.parent(), nullptr);
    }

    void paintsInOrder()
    {
        const GraphSubWindow window(QString(), group({{50.5, 40, 10}, {0, 10, 20, 30, 40}}));
        RecordingPaintDevice device;
        draw(&device, window);

        const int second = 20 + 25 + legendWidth("patient 0") + 15;
        const QString expected =
            QString("path; path; path; text 57 301: 1; text 182 301: 2; text 307 301: 3; "
                    "text 675 290: x; text 432 301: 4; text 557 301: 5; text 35 242: 10; "
                    "text 35 192: 20; text 35 142: 30; text 35 92: 40; text 35 42: 50; "
                    "text 10 25: mmol/mol; rectangle 20 310 20 20; text 45 325: patient 0; "
                    "rectangle %1 310 20 20; text %2 325: patient 1")
                .arg(second)
                .arg(second + 25);
        QCOMPARE(device.summaries(), expected.split("; "));
    }

    void pathsAreAxesThenPatients()
    {
        const GraphSubWindow window(QString(), group({{50.5, 40, 10}, {0, 10, 20, 30, 40}}));
        RecordingPaintDevice device;
        draw(&device, window);
        QCOMPARE(pathPoints(device.operations().at(0).path),
                 "50,280 675,280; 60,290 60,15; 50,230 675,230; 50,180 675,180; "
                 "50,130 675,130; 50,80 675,80; 50,30 675,30; 185,280 185,290; "
                 "310,280 310,290; 435,280 435,290; 560,280 560,290");
        QCOMPARE(pathPoints(device.operations().at(1).path), "60,27.5 185,80 310,230");
        QCOMPARE(pathPoints(device.operations().at(2).path),
                 "60,280 185,230 310,180 435,130 560,80");
    }

    void pensOfAxesLinesAndTexts()
    {
        const GraphSubWindow window(QString(), group({{10}, {20}}));
        RecordingPaintDevice device;
        draw(&device, window);

        const QPen black(QBrush(Qt::black, Qt::SolidPattern), 1.0, Qt::SolidLine, Qt::SquareCap,
                         Qt::BevelJoin);
        const QPen green(QBrush(QColor(0, 255, 0)), 2.0, Qt::SolidLine, Qt::SquareCap,
                         Qt::BevelJoin);
        const QVector<Operation> paths = device.operations(Operation::Path);
        QCOMPARE(paths.size(), 3);
        QCOMPARE(paths.at(0).pen, black);
        QCOMPARE(paths.at(1).pen.widthF(), 2.0);
        QCOMPARE(paths.at(1).pen.color(), QColor(Qt::black));
        QCOMPARE(paths.at(2).pen, green);
        for (const Operation &text : device.operations(Operation::Text)) {
            QCOMPARE(text.pen, black);
            QCOMPARE(text.font, QFont());
        }
        for (const Operation &operation : device.operations()) {
            QVERIFY(operation.antialiased);
            if (operation.kind != Operation::Rectangle) {
                QCOMPARE(operation.brush.style(), Qt::NoBrush);
            }
        }
    }

    void seventyPatientsRepeatTheColours()
    {
        const GraphSubWindow window(QString(), group(QVector<QVector<double>>(70, {10, 20})));
        RecordingPaintDevice device;
        draw(&device, window);

        const QVector<Operation> paths = device.operations(Operation::Path);
        const QVector<Operation> squares = device.operations(Operation::Rectangle);
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
        QVector<PatientRecord> patients = group(QVector<QVector<double>>(23, {10}));
        patients[5].id = QString(200, 'w');
        const GraphSubWindow window(QString(), patients);
        RecordingPaintDevice device;
        draw(&device, window);

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
        QCOMPARE(device.summaries().mid(device.summaries().size() - expected.size()), expected);
    }

    void legendIsMeasuredAsTimesWhateverItIsDrawnIn()
    {
        // A family that no system has is replaced by what the hint says.
        QFont drawn("no such family", 20);
        QFont measured = drawn;
        measured.setStyleHint(QFont::Times, QFont::PreferAntialias);
        const int width = QFontMetrics(measured).horizontalAdvance("patient 0");
        if (QFontMetrics(drawn).horizontalAdvance("patient 0") == width) {
            QSKIP("this system has one family for all hints");
        }
        const GraphSubWindow window(QString(), group({{10}, {20}}));
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

    void letterStandsWhenTheFirstPatientIsShorter()
    {
        const GraphSubWindow window(QString(), group({{10, 20}, {10, 20, 30}}));
        RecordingPaintDevice device;
        draw(&device, window, 1200, 800);
        QCOMPARE(device.summaries().count("text 1175 690: x"), 1);
        QCOMPARE(device.summaries().indexOf("text 1175 690: x"),
                 device.summaries().indexOf("text 432 701: 2") + 1);
    }

    void noLetterWhenTheFirstPatientHasNoValues()
    {
        const GraphSubWindow window(QString(), group({{}, {10, 20, 30}}));
        RecordingPaintDevice device;
        draw(&device, window);
        QCOMPARE(device.operations(Operation::Path).size(), 3);
        QCOMPARE(device.operations(Operation::Path).at(1).path.elementCount(), 0);
        QCOMPARE(device.operations(Operation::Path).at(2).pen.color(), QColor(0, 255, 0));
        for (const Operation &text : device.operations(Operation::Text)) {
            QVERIFY(text.text != "x");
        }
    }

    void laterDrawingReplacesTheScale()
    {
        const GraphSubWindow window(QString(), group({{50.5, 40, 10}, {0, 10, 20, 30, 40}}));
        RecordingPaintDevice before;
        RecordingPaintDevice page;
        RecordingPaintDevice after;
        draw(&before, window);
        draw(&page, window, 575, 411);
        draw(&after, window);
        QCOMPARE(after.summaries(), before.summaries());
        QCOMPARE(after.operations().at(1).path, before.operations().at(1).path);
        QCOMPARE(pathPoints(page.operations().at(1).path), "60,27.39 160,82.2 260,238.8");
    }

    void keepsItsPatients()
    {
        QVector<PatientRecord> patients = group({{10, 20}});
        const GraphSubWindow window(QString(), patients);
        RecordingPaintDevice before;
        draw(&before, window);
        patients[0] = {"other", {90, 80, 70}, 1};
        RecordingPaintDevice after;
        draw(&after, window);
        QCOMPARE(after.summaries(), before.summaries());
    }

    void widgetShowsTheSameDrawing()
    {
        GraphSubWindow window(QString(), group({{50.5, 40, 10}, {0, 10, 20, 30, 40}}));
        window.resize(820, 510);
        QImage shown = imageLike(window);
        QImage drawn = shown;
        window.render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
        QPainter painter(&drawn);
        window.drawGraph(&painter, 820, 510);
        painter.end();
        QCOMPARE(shown, drawn);
        // The top grid line: 820 wide, at 30 from the top.
        QVERIFY(shown.pixelColor(700, 30).value() < 255);
        QCOMPARE(shown.pixelColor(800, 30), QColor(Qt::white));
    }

    void distantPointsAreClippedByTheRaster()
    {
        // The second line leaves the picture straight downwards and comes back.
        const GraphSubWindow window(QString(), group({{10}, {10, -3e5, 10}}));
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
        QTest::newRow("ordinary") << group({{50, 60}, {30, 20, 10}}) << "mmol/mol";
        QTest::newRow("values below one") << group({{0.5, 0.1, 0}}) << "patient 0";
        QTest::newRow("no values") << group({{}, {}}) << "patient 1";
        QTest::newRow("one value") << group({{42}}) << "50";
        QTest::newRow("not numbers") << group({{qQNaN(), inf, -inf, 1e300, -1e300}}) << "mmol/mol";
        QTest::newRow("very large") << group({{123456789012.0, 5}}) << "mmol/mol";
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
