#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include <QComboBox>
#include <QDomDocument>
#include <QInputDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QXmlStreamReader>

#include "graphexport.h"
#include "graphsubwindow.h"
#include "resultsubwindow.h"
#include "settingsdialog.h"
#include "support/mainwindowtester.h"
#include "support/recordingpaintdevice.h"
#include "support/testworkbooks.h"

namespace
{

/// A window with a workbook of five patients open, and the gestures of a user on it.
class Tester : public MainWindowTester
{
public:
    explicit Tester(const QByteArray &config = defaultConfig) : MainWindowTester(config)
    {
        TestWorkbooks::save(path("five.xlsx"),
                            {{"a", 50.0, 60.0, 55.0, 70.0, 62.0, 61.0, 48.0},
                             {"b", 70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0},
                             {"c", 48.0, 52.0, 50.0, 55.0, 53.0, 58.0, 57.0, 60.0},
                             {"d", 90.0, 70.0, 60.0, 55.0, 50.0, 50.0},
                             {"e", 61.0, 60.5, 61.5, 59.0, 60.0, 64.0, 63.0}});
        start();
        open("five.xlsx");
    }

    QMdiArea *area() const { return window->findChild<QMdiArea *>(); }
    QList<QMdiSubWindow *> subWindows() const { return area()->subWindowList(); }

    void select(const QVector<int> &rows) const
    {
        patientTable()->clearSelection();
        for (const int row : rows) {
            patientTable()->selectionModel()->select(patientTable()->model()->index(row, 0),
                                                     QItemSelectionModel::Select
                                                         | QItemSelectionModel::Rows);
        }
    }
    int selectedRows() const { return patientTable()->selectionModel()->selectedRows().size(); }
    void press(const char *buttonText) const
    {
        QTest::mouseClick(button(buttonText), Qt::LeftButton);
    }
    /// Accepts the next name dialog after typing \p name; a null name leaves the offered one, which
    /// is noted in offeredNames.
    void expectName(const QString &name = QString())
    {
        answers.expect<QInputDialog>([this, name](QInputDialog &dialog) {
            offeredNames << dialog.textValue();
            if (!name.isNull()) {
                dialog.setTextValue(name);
            }
            dialog.accept();
        });
    }
    void makeGraph(const QVector<int> &rows, const QString &name = QString())
    {
        select(rows);
        expectName(name);
        press("Show graph");
    }
    /// Right-clicks the row and gives the menu that opens.
    QMenu *openMenu(int row) const
    {
        const QModelIndex index = patientTable()->model()->index(row, 0);
        const QPoint pos = patientTable()->visualRect(index).center();
        Q_EMIT patientTable()->customContextMenuRequested(pos);
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    }
    void mark(int row, int entry) const
    {
        QMenu *menu = openMenu(row);
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                          menu->actionGeometry(entriesOf(*menu).at(entry)).center());
    }
    static QList<QAction *> entriesOf(const QMenu &menu)
    {
        QList<QAction *> entries;
        for (QAction *action : menu.actions()) {
            if (!action->isSeparator()) {
                entries << action;
            }
        }
        return entries;
    }
    /// "text" of each entry, "*" in front of a checked one, "-" for a separator.
    static QStringList lines(const QMenu &menu)
    {
        QStringList all;
        for (const QAction *action : menu.actions()) {
            all << (action->isSeparator()
                        ? "-"
                        : QString(action->isChecked() ? "*" : "") + action->text());
        }
        return all;
    }
    QVector<int> marks() const
    {
        QVector<int> all;
        for (const PatientRecord &patient : patientsModel()->patients) {
            all << patient.idealKvadrant;
        }
        return all;
    }

    QStringList offeredNames;
};

/// The default settings with other methods and, for a center, the median or the average.
QByteArray configOf(int convergence, int variance, bool median)
{
    return QString("[Method]\nConvergence=%1\nVariance=%2\n[Result]\nMedian=%3\n"
                   "[Variable]\nSkip=3\n[Info]\nShow=1\n")
        .arg(convergence)
        .arg(variance)
        .arg(median ? 1 : 0)
        .toLatin1();
}

/// Median or mean of five values.
double centerOfFive(QVector<double> values, bool median)
{
    if (values.size() != 5) {
        qFatal("no five values");
    }
    std::sort(values.begin(), values.end());
    return median ? values.at(2) : std::accumulate(values.cbegin(), values.cend(), 0.0) / 5;
}

/// One line for each thing that the graph draws: what and where, and its colours.
template<typename Graph>
QStringList drawingOf(const Graph &graph)
{
    RecordingPaintDevice device;
    QPainter painter(&device);
    graph.drawGraph(&painter, 700, 400);
    painter.end();
    QStringList lines;
    for (const RecordingPaintDevice::Operation &operation : device.operations()) {
        lines << operation.summary() + ' ' + pathPoints(operation.path) + ' '
                + operation.pen.color().name() + operation.brush.color().name();
    }
    return lines;
}

/// "x y: text" for each text of an SVG page that stands under this translation.
QStringList textsUnder(const QDomDocument &page, QPointF translation)
{
    QStringList lines;
    const QDomNodeList texts = page.elementsByTagName("text");
    for (int i = 0; i < texts.size(); ++i) {
        const QDomElement element = texts.at(i).toElement();
        // Every group of the painter carries the whole matrix.
        const QStringList matrix = element.parentNode()
                                       .toElement()
                                       .attribute("transform")
                                       .section('(', 1)
                                       .remove(')')
                                       .split(',');
        if (matrix.size() == 6 && qAbs(matrix.at(4).toDouble() - translation.x()) < 0.01
            && qAbs(matrix.at(5).toDouble() - translation.y()) < 0.01) {
            lines << QString("%1 %2: ").arg(element.attribute("x"), element.attribute("y"))
                    + element.text().trimmed();
        }
    }
    return lines;
}

/// Counts the paint events of the widget that it watches.
class PaintCounter : public QObject
{
    Q_OBJECT

public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    int count = 0;
};

QByteArray bits(const QVector<double> &values)
{
    return {reinterpret_cast<const char *>(values.constData()),
            values.size() * int(sizeof(double))};
}

QStringList attributeValues(const QDomElement &element)
{
    QStringList values;
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        values << attributes.item(i).nodeValue();
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        values << attributeValues(child);
    }
    return values;
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(QMenu &)>)

namespace
{

/// Sets the widgets of the next settings dialog and presses "Ok".
void expectSettings(Tester &tester, int convergence, int variance, bool median, int offset)
{
    tester.answers.expect<SettingsDialog>([=](SettingsDialog &dialog) {
        const auto combo = [&dialog](const char *name) {
            return dialog.findChild<QComboBox *>(name);
        };
        combo("convergenceCombo")->setCurrentIndex(convergence);
        combo("varianceCombo")->setCurrentIndex(variance);
        dialog.findChild<QAbstractButton *>(median ? "medianCheck" : "averageCheck")->click();
        dialog.findChild<QSpinBox *>("offsetSpin")->setValue(offset);
        QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);
    });
}

} // namespace

class TestGraphCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectedPatientsComeInTwoTabs()
    {
        Tester tester;
        tester.makeGraph({1, 3}, "My graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.subWindows().size(), 1);
        const QMdiSubWindow *subWindow = tester.subWindows().first();
        QCOMPARE(subWindow->windowTitle(), "My graph");
        QCOMPARE(subWindow->minimumSize(), QSize(715, 415));
        QVERIFY(subWindow->isVisible());
        const auto *tabs = qobject_cast<QTabWidget *>(subWindow->widget());
        QVERIFY(tabs);
        QCOMPARE(tabs->count(), 2);
        QCOMPARE(tabs->tabText(0), "Glymark value graph");
        QCOMPARE(tabs->tabText(1), "Patient result graph");
        const auto *graph = qobject_cast<GraphSubWindow *>(tabs->widget(0));
        QVERIFY(graph);
        QCOMPARE(graph->windowTitle(), "My graph");
        QVERIFY(qobject_cast<ResultSubWindow *>(tabs->widget(1)));

        // The selection is used up.
        QCOMPARE(tester.selectedRows(), 0);
        tester.answers.expectMessage();
        tester.press("Show graph");
        QCOMPARE(tester.answers.messages(),
                 QStringList("0 selected|Please select rows from table above to display as "
                             "graph"));
    }

    void selectionKeepsTheOrderOfTheSelectionModel()
    {
        Tester tester;
        tester.select({4, 0, 2});
        QStringList expected;
        for (const QModelIndex &row : tester.patientTable()->selectionModel()->selectedRows(0)) {
            expected << row.data().toString();
        }
        tester.expectName();
        tester.press("Show graph");
        tester.answers.expectFile(tester.path("order.svg"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QDomDocument page;
        QVERIFY(page.setContent(tester.readFile("order.svg")));
        QStringList legend;
        const QDomNodeList shown = page.elementsByTagName("text");
        for (int i = 0; i < shown.size(); ++i) {
            const QString label = shown.at(i).toElement().text().trimmed();
            if (expected.contains(label)) {
                legend << label;
            }
        }
        // Once beside the dots, once in the legend.
        QCOMPARE(legend, expected + expected);
    }

    void graphsShowTheirPatientsAndTheCenterOfAll_data()
    {
        QTest::addColumn<bool>("median");
        QTest::addColumn<QVector<int>>("rows");

        for (const bool median : {true, false}) {
            const auto row = [median](const char *patients) -> QTestData & {
                return QTest::addRow("%s, %s", patients, median ? "median" : "average") << median;
            };
            row("one patient") << QVector<int>{3};
            row("three patients") << QVector<int>{1, 2, 4};
            row("the group") << QVector<int>();
        }
    }

    void graphsShowTheirPatientsAndTheCenterOfAll()
    {
        QFETCH(bool, median);
        QFETCH(QVector<int>, rows);
        constexpr int convergence = 1;
        constexpr int variability = 2;
        Tester tester(configOf(convergence, variability, median));
        QVector<double> xs;
        QVector<double> ys;
        for (const PatientScoreRecord &score : tester.patientsModel()->scores) {
            xs << score.convergence.at(convergence);
            ys << score.variability.at(variability);
        }
        const double centerX = centerOfFive(xs, median);
        const double centerY = centerOfFive(ys, median);
        // The two centers are told apart, and the one patient is on neither.
        QVERIFY(centerOfFive(xs, !median) != centerX);
        QVERIFY(centerOfFive(ys, !median) != centerY);
        QVERIFY(xs.at(3) != centerX);
        QVERIFY(ys.at(3) != centerY);

        if (rows.isEmpty()) {
            tester.trigger("Groups graph");
            const auto *plot =
                qobject_cast<ResultSubWindow *>(tester.subWindows().first()->widget());
            QVERIFY(plot);
            const ResultSubWindow expected(tester.patientsModel()->scores, variability, convergence,
                                           centerY, centerX);
            QCOMPARE(drawingOf(*plot), drawingOf(expected));
            return;
        }
        tester.select(rows);
        QVector<PatientRecord> patients;
        QVector<PatientScoreRecord> scores;
        for (const QModelIndex &row : tester.patientTable()->selectionModel()->selectedRows(0)) {
            patients << tester.patientsModel()->patients.at(row.row());
            scores << tester.patientsModel()->scores.at(row.row());
        }
        QCOMPARE(patients.size(), rows.size());
        tester.expectName();
        tester.press("Show graph");
        const auto *tabs = qobject_cast<QTabWidget *>(tester.subWindows().first()->widget());
        QVERIFY(tabs);
        const auto *graph = qobject_cast<GraphSubWindow *>(tabs->widget(0));
        const auto *plot = qobject_cast<ResultSubWindow *>(tabs->widget(1));
        QVERIFY(graph && plot);
        QCOMPARE(drawingOf(*graph), drawingOf(GraphSubWindow(QString(), patients)));
        QCOMPARE(drawingOf(*plot),
                 drawingOf(ResultSubWindow(scores, variability, convergence, centerY, centerX)));
    }

    void graphWithoutSelectionIsRefused()
    {
        Tester tester;
        tester.answers.expectMessage();
        tester.press("Show graph");
        QCOMPARE(tester.answers.messages().size(), 1);
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.subWindows().size(), 0);
    }

    void cancelledNameKeepsTheSelection()
    {
        Tester tester;
        tester.select({0, 2});
        tester.answers.expect<QInputDialog>([](QInputDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Graph name");
            QCOMPARE(dialog.labelText(), "Name");
            QCOMPARE(dialog.textValue(), "Graph 1");
            QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
            dialog.reject();
        });
        tester.press("Show graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.subWindows().size(), 0);
        QCOMPARE(tester.selectedRows(), 2);
    }

    void emptyNameGivesTheDefaultName()
    {
        Tester tester;
        tester.makeGraph({0}, "");
        QCOMPARE(tester.subWindows().first()->windowTitle(), "Graph 1");
    }

    void blankNameIsKept()
    {
        Tester tester;
        tester.makeGraph({0}, "  ");
        QCOMPARE(tester.subWindows().first()->windowTitle(), "  ");
    }

    void defaultNameCountsOpenSubWindowsOfBothForms()
    {
        Tester tester;
        tester.makeGraph({0});
        tester.trigger("Groups graph");
        tester.makeGraph({1});
        tester.makeGraph({2});
        tester.subWindows().first()->close();
        tester.makeGraph({3});
        QCOMPARE(tester.offeredNames, QStringList({"Graph 1", "Graph 3", "Graph 4", "Graph 4"}));
    }

    void closedSubWindowIsGone()
    {
        Tester tester;
        tester.makeGraph({0});
        const QPointer<QMdiSubWindow> subWindow = tester.subWindows().first();
        const QPointer<QWidget> graph = qobject_cast<QTabWidget *>(subWindow->widget())->widget(0);
        subWindow->close();
        QCOMPARE(tester.subWindows().size(), 0);
        QVERIFY(tester.area()->currentSubWindow() == nullptr);
        QTRY_VERIFY(subWindow.isNull());
        QVERIFY(graph.isNull());
    }

    void resetSelectionClearsIt()
    {
        Tester tester;
        tester.select({0, 1, 2});
        tester.press("Reset selection");
        QCOMPARE(tester.selectedRows(), 0);
    }

    void groupGraphShowsAllPatients()
    {
        Tester tester;
        tester.select({1});
        tester.trigger("Groups graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        const QMdiSubWindow *subWindow = tester.subWindows().first();
        QVERIFY(qobject_cast<ResultSubWindow *>(subWindow->widget()));
        QCOMPARE(subWindow->minimumSize(), QSize(700, 400));
        QCOMPARE(subWindow->windowTitle(), QString());
        QCOMPARE(tester.selectedRows(), 1);
    }

    void graphsArePlacedBySizeAndOrder()
    {
        Tester tester;
        tester.window->resize(900, 600);
        QCoreApplication::processEvents();
        QCOMPARE(tester.window->size(), QSize(900, 600));
        QMdiArea area;
        area.resize(tester.area()->size());
        area.show();
        QCoreApplication::processEvents();
        QCOMPARE(area.viewport()->size(), tester.area()->viewport()->size());

        // A group graph has its size before the area places it, a tabbed one only afterwards.
        for (int i = 0; i < 2; ++i) {
            tester.trigger("Groups graph");
            auto *subWindow = new QMdiSubWindow;
            subWindow->setMinimumSize(700, 400);
            area.addSubWindow(subWindow);
            subWindow->setWidget(new QWidget);
            subWindow->show();
        }
        for (int i = 0; i < 2; ++i) {
            tester.makeGraph({0, 1});
            auto *subWindow = new QMdiSubWindow;
            auto *tabs = new QTabWidget;
            tabs->addTab(new GraphSubWindow(QString(), {}), "Glymark value graph");
            tabs->addTab(new QWidget, "Patient result graph");
            area.addSubWindow(subWindow);
            subWindow->setMinimumSize(715, 415);
            subWindow->setWidget(tabs);
            subWindow->show();
        }
        QCoreApplication::processEvents();
        const auto places = [](const QMdiArea &shown) {
            QVector<QRect> all;
            for (const QMdiSubWindow *subWindow : shown.subWindowList()) {
                all << subWindow->geometry();
            }
            return all;
        };
        QCOMPARE(places(*tester.area()).size(), 4);
        QCOMPARE(places(*tester.area()), places(area));
    }

    void groupGraphNeedsAFile()
    {
        Tester tester;
        tester.trigger("Close file");
        tester.answers.expectMessage();
        tester.trigger("Groups graph");
        QCOMPARE(tester.answers.messages(), QStringList("No data|No data to visualize"));
        QVERIFY(!tester.button("Show graph")->isEnabled());
    }

    void menuShowsTheStoredMark()
    {
        Tester tester;
        QStringList expected = {"Select ideal kvadrant",
                                "-",
                                "Kvadrant 1 (W/W)",
                                "Kvadrant 2 (B/W)",
                                "Kvadrant 3 (B/B)",
                                "Kvadrant 4 (W/B)",
                                "-",
                                "*No ideal"};
        QMenu *menu = tester.openMenu(1);
        QVERIFY(menu);
        QCOMPARE(Tester::lines(*menu), expected);
        for (const QAction *action : Tester::entriesOf(*menu)) {
            QVERIFY(action->isEnabled());
            QVERIFY(action->actionGroup() == nullptr);
        }
        menu->close();

        tester.mark(1, 2);
        expected[3] = "*Kvadrant 2 (B/W)";
        expected[7] = "No ideal";
        menu = tester.openMenu(1);
        QCOMPARE(Tester::lines(*menu), expected);
        menu->close();
    }

    void menuIsFreedWhenItCloses_data()
    {
        using Gesture = std::function<void(QMenu &)>;
        QTest::addColumn<Gesture>("gesture");
        QTest::newRow("entry chosen") << Gesture([](QMenu &menu) {
            QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier,
                              menu.actionGeometry(Tester::entriesOf(menu).at(2)).center());
        });
        QTest::newRow("Escape") << Gesture(
            [](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_Escape); });
        QTest::newRow("closed") << Gesture([](QMenu &menu) { menu.close(); });
    }

    void menuIsFreedWhenItCloses()
    {
        QFETCH(std::function<void(QMenu &)>, gesture);
        Tester tester;
        const QPointer<QMenu> menu = tester.openMenu(0);
        const QPointer<QAction> entry = Tester::entriesOf(*menu).at(2);
        gesture(*menu);
        QTRY_VERIFY(menu.isNull());
        QVERIFY(entry.isNull());
    }

    void headingOfTheMenuOnlyClosesIt()
    {
        Tester tester;
        tester.mark(0, 3);
        tester.mark(0, 0);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        QCOMPARE(tester.marks(), QVector<int>({3, -1, -1, -1, -1}));
    }

    void marksAreStoredAndCleared()
    {
        Tester tester;
        const QStringList table = MainWindowTester::tableTexts(*tester.patientTable());
        for (int row = 0; row < 4; ++row) {
            tester.mark(row, row + 1);
        }
        QCOMPARE(tester.marks(), QVector<int>({1, 2, 3, 4, -1}));
        tester.mark(2, 5);
        QCOMPARE(tester.marks(), QVector<int>({1, 2, -1, 4, -1}));
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), table);
    }

    void rightClickBesideTheRowsOpensNothing()
    {
        Tester tester;
        tester.window->resize(900, 900);
        QCoreApplication::processEvents();
        const QPoint below(5, tester.patientTable()->viewport()->height() - 2);
        QCOMPARE(tester.patientTable()->indexAt(below).row(), -1);
        Q_EMIT tester.patientTable()->customContextMenuRequested(below);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
    }

    void newOpenClearsEveryMark()
    {
        Tester tester;
        tester.mark(0, 1);
        tester.open("five.xlsx");
        QCOMPARE(tester.marks(), QVector<int>(5, -1));
    }

    void cancelledSettingsChangeNothing()
    {
        Tester tester;
        const QStringList labels = tester.labelTexts();
        const QStringList scores = MainWindowTester::tableTexts(*tester.scoreTable());
        for (const bool byWindow : {false, true}) {
            tester.answers.expect<SettingsDialog>([byWindow](SettingsDialog &dialog) {
                dialog.findChild<QSpinBox *>()->setValue(0);
                dialog.findChildren<QComboBox *>().first()->setCurrentIndex(2);
                if (byWindow) {
                    dialog.close();
                } else {
                    dialog.reject();
                }
            });
            tester.trigger("Settings");
        }
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.readFile("config.ini"), MainWindowTester::defaultConfig);
        QCOMPARE(tester.labelTexts(), labels);
        QCOMPARE(MainWindowTester::tableTexts(*tester.scoreTable()), scores);
    }

    void acceptedSettingsFollowInTheTables()
    {
        Tester tester;
        expectSettings(tester, 1, 2, false, 3);
        tester.trigger("Settings");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        const QStringList labels = tester.labelTexts();
        for (const char *value : {"Linear least squares", "Interquartile range", "Average", "3"}) {
            QCOMPARE(labels.count(value), 1);
        }
        QCOMPARE(
            tester.readFile("config.ini"),
            QByteArray("[Method]\nConvergence = 1\nVariance = 2\n\n\n[Result]\nMedian = 0\n\n\n"
                       "[Variable]\nSkip = 3\n\n\n[Info]\nShow = 1\n"));
        // Each mark by the average of its column.
        QStringList expected;
        const auto &scores = tester.patientsModel()->scores;
        double x = 0;
        double y = 0;
        for (const PatientScoreRecord &score : scores) {
            x += score.convergence.at(1);
            y += score.variability.at(2);
        }
        for (const PatientScoreRecord &score : scores) {
            expected << score.id + QString(score.convergence.at(1) < x / 5 ? " B/" : " W/")
                    + QString(score.variability.at(2) < y / 5 ? "B" : "W");
        }
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), expected);
    }

    void offsetChangesOneColumnAndItsCenters_data()
    {
        QTest::addColumn<bool>("median");
        QTest::newRow("median") << true;
        QTest::newRow("average") << false;
    }

    void offsetChangesOneColumnAndItsCenters()
    {
        QFETCH(bool, median);
        Tester tester(configOf(0, 1, median));
        const auto color = [&tester](int row, int column) {
            return tester.scoreModel()
                ->index(row, column)
                .data(Qt::BackgroundRole)
                .value<QColor>()
                .name();
        };
        const auto otherColors = [&color] {
            QStringList colors;
            for (const int row : {0, 1, 2, 3, 5}) {
                for (int column = 0; column < 5; ++column) {
                    colors << color(row, column);
                }
            }
            return colors;
        };
        const QStringList colorsBefore = otherColors();
        const QVector<PatientScoreRecord> before = tester.patientsModel()->scores;
        const QVector<PatientRecord> patients = tester.patientsModel()->patients;
        expectSettings(tester, 0, 1, median, 0);
        tester.trigger("Settings");
        const QVector<PatientScoreRecord> after = tester.patientsModel()->scores;
        QVector<double> column;
        for (int i = 0; i < before.size(); ++i) {
            QCOMPARE(after.at(i).id, before.at(i).id);
            QCOMPARE(bits(after.at(i).convergence), bits(before.at(i).convergence));
            for (const int same : {0, 2}) {
                QCOMPARE(bits({after.at(i).variability.at(same)}),
                         bits({before.at(i).variability.at(same)}));
            }
            QVERIFY(after.at(i).variability.at(1) != before.at(i).variability.at(1));
            // Population deviation of all steps.
            const QVector<double> &values = patients.at(i).values;
            const double count = values.size() - 1;
            const double mean = (values.first() - values.last()) / count;
            double squares = 0;
            for (int step = 0; step < count; ++step) {
                const double d = values.at(step) - values.at(step + 1) - mean;
                squares += d * d;
            }
            QVERIFY(qAbs(after.at(i).variability.at(1) - std::sqrt(squares / count)) < 1e-12);
            column << after.at(i).variability.at(1);
        }
        QCOMPARE(otherColors(), colorsBefore);
        // The colours of row 4 and the second letters follow the new center.
        const double center = centerOfFive(column, median);
        for (int i = 0; i < column.size(); ++i) {
            const double value = column.at(i);
            QCOMPARE(color(4, i),
                     QString(value < center       ? "#aad083"
                                 : value > center ? "#e79292"
                                                  : "#647b98"));
            QCOMPARE(tester.patientsModel()->index(i, 1).data().toString().right(1),
                     QString(value < center ? "B" : "W"));
        }
    }

    void unchangedSettingsGiveTheSameNumbers()
    {
        Tester tester;
        tester.writeFile("config.ini", "gone");
        const QVector<PatientScoreRecord> before = tester.patientsModel()->scores;
        const QStringList marks = MainWindowTester::tableTexts(*tester.patientTable());
        expectSettings(tester, 0, 0, true, 3);
        tester.trigger("Settings");
        for (int i = 0; i < before.size(); ++i) {
            QCOMPARE(bits(tester.patientsModel()->scores.at(i).variability),
                     bits(before.at(i).variability));
        }
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), marks);
        QCOMPARE(tester.readFile("config.ini"), MainWindowTester::defaultConfig);
    }

    void settingsWithoutAFileChangeOnlyTheLabels()
    {
        Tester tester;
        tester.trigger("Close file");
        expectSettings(tester, 2, 1, false, 12);
        tester.trigger("Settings");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        const QStringList labels = tester.labelTexts();
        for (const char *value :
             {"C*e^(k*x)", "Difference standard deviation offset", "Average", "12"}) {
            QCOMPARE(labels.count(value), 1);
        }
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(!tester.action("Close file")->isEnabled());
    }

    void settingsLeaveOpenGraphsAlone()
    {
        Tester tester;
        tester.trigger("Groups graph");
        QWidget *graph = tester.subWindows().first()->widget();
        const QImage before = graph->grab().toImage();
        expectSettings(tester, 1, 2, false, 0);
        tester.trigger("Settings");
        QCOMPARE(graph->grab().toImage(), before);
        // A graph made now uses the new settings.
        tester.trigger("Groups graph");
        QWidget *second = tester.subWindows().last()->widget();
        second->resize(graph->size());
        QVERIFY(second->grab().toImage() != before);
    }

    void marksSurviveTheSettings()
    {
        Tester tester;
        tester.mark(3, 4);
        expectSettings(tester, 1, 1, true, 1);
        tester.trigger("Settings");
        QCOMPARE(tester.marks(), QVector<int>({-1, -1, -1, 4, -1}));
    }

    void subWindowsSurviveASecondOpenAndCloseWithTheFile()
    {
        Tester tester;
        tester.makeGraph({0, 1});
        tester.trigger("Groups graph");
        QWidget *graph = tester.subWindows().first()->widget();
        const QImage before = graph->grab().toImage();
        TestWorkbooks::save(tester.path("one.xlsx"), {{"x", 40.0, 50.0}});
        tester.open("one.xlsx");
        QCOMPARE(tester.subWindows().size(), 2);
        QCOMPARE(graph->grab().toImage(), before);
        tester.trigger("Close file");
        QCOMPARE(tester.subWindows().size(), 0);
    }

    void exportNeedsACurrentTabbedGraph()
    {
        Tester tester;
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        tester.trigger("Groups graph");
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        const QString refusal = "Svg export|No graphs selected for export";
        QCOMPARE(tester.answers.messages(), QStringList({refusal, refusal}));
        QCOMPARE(tester.answers.unexpected(), QStringList());
    }

    void cancelledExportSaysNothing()
    {
        Tester tester;
        tester.makeGraph({0});
        tester.answers.expect<QFileDialog>([](QFileDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Save SVG");
            QCOMPARE(dialog.nameFilters(), QStringList("SVG files (*.svg)"));
            dialog.reject();
        });
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.answers.messages(), QStringList());
    }

    void exportWritesTheCurrentGraphAsOnePage()
    {
        Tester tester;
        tester.makeGraph({0}, "first");
        tester.makeGraph({1, 2}, "second");
        tester.makeGraph({3}, "third");
        tester.area()->setActiveSubWindow(tester.subWindows().at(1));
        tester.answers.expectFile(tester.path("page"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Graphs export|Graph successfully exported"));

        // The name is taken as typed, without an extension.
        QDomDocument page;
        QVERIFY(page.setContent(tester.readFile("page")));
        const QDomElement root = page.documentElement();
        QCOMPARE(root.firstChildElement("title").text(), "second");
        const ExportPage expected = ExportPage::a4();
        const QRect box = expected.printable.toRect();
        QCOMPARE(
            root.attribute("viewBox"),
            QString("%1 %2 %3 %4").arg(box.x()).arg(box.y()).arg(box.width()).arg(box.height()));
        // Points at the 72 dots per inch of the generator, given in millimetres.
        const double millimetres = root.attribute("width").remove("mm").toDouble();
        QVERIFY(qAbs(millimetres - 210) < 1);
        QVERIFY(qAbs(root.attribute("height").remove("mm").toDouble() - 297) < 1);

        // Either graph has its half of the page: both count some of their texts from the lower
        // edge.
        const double height = expected.graph().height();
        const QStringList plot = textsUnder(page, expected.resultPlot());
        const QString method =
            QString("5 %1: Convergence: Median difference").arg(static_cast<int>(height - 2));
        QVERIFY2(plot.contains(method), qPrintable(plot.join(", ")));
        const QStringList graph = textsUnder(page, expected.patientGraph());
        const QString one = QString("57 %1: 1").arg(static_cast<int>(height - 120 + 21));
        for (const QString &label : {QString("10 25: mmol/mol"), one}) {
            QVERIFY2(graph.contains(label), qPrintable(label + " in " + graph.join(", ")));
        }
    }

    void exportOfOddNamesIsWellFormed_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("markup") << "a<b>&\"c'</title>";
        QTest::newRow("no latin") << "Křivka č. 1 \xF0\x9F\x93\x88";
        QTest::newRow("control characters")
            << QString(QChar(1)) + "x" + QChar(0x1b) + QChar(0xFFFF);
        QTest::newRow("half a surrogate pair") << QString(QChar(0xD800)) + "x";
    }

    void exportOfOddNamesIsWellFormed()
    {
        QFETCH(QString, name);
        Tester tester;
        tester.patientsModel()->patients[0].id = name;
        tester.patientsModel()->scores[0].id = name;
        tester.makeGraph({0, 1}, name);
        tester.answers.expectFile(tester.path("odd.svg"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QXmlStreamReader reader(tester.readFile("odd.svg"));
        QString title;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == "title") {
                title = reader.readElementText();
            }
        }
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
        QVERIFY(!title.isEmpty());
    }

    void exportToNowhereStillSaysItSucceeded()
    {
        Tester tester;
        tester.makeGraph({0});
        tester.answers.expectFile(tester.path("nowhere/page.svg"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.answers.messages(),
                 QStringList("Graphs export|Graph successfully exported"));
        QVERIFY(!QFile::exists(tester.path("nowhere")));
    }

    void exportPageDoublesTheMarginOfTheLowerGraph()
    {
        const ExportPage page{QSize(600, 840), QRectF(10, 20, 580, 800)};
        QCOMPARE(page.margin(), QPointF(10, 20));
        QCOMPARE(page.graph(), QSizeF(580, 400));
        QCOMPARE(page.resultPlot(), QPointF(10, 20));
        QCOMPARE(page.patientGraph(), QPointF(20, 440));
    }

    void exportLeavesTheScreenAsItWas()
    {
        Tester tester;
        tester.makeGraph({0, 1, 2});
        auto *tabs = qobject_cast<QTabWidget *>(tester.subWindows().first()->widget());
        const QImage before = tabs->widget(0)->grab().toImage();
        const QImage plotBefore = tabs->widget(1)->grab().toImage();
        tester.answers.expectFile(tester.path("page.svg"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QCOMPARE(tabs->widget(0)->grab().toImage(), before);
        QCOMPARE(tabs->widget(1)->grab().toImage(), plotBefore);
        const QByteArray file = tester.readFile("page.svg");
        QDomDocument page;
        QVERIFY(page.setContent(file));
        for (const QString &value : attributeValues(page.documentElement())) {
            QVERIFY2(!value.contains("nan") && !value.contains("inf"), qPrintable(value));
        }
    }

    void exportRepaintsBothGraphs()
    {
        Tester tester;
        tester.makeGraph({0, 1, 2});
        auto *tabs = qobject_cast<QTabWidget *>(tester.subWindows().first()->widget());
        // Only the tab in front is ever painted.
        for (int tab = 0; tab < tabs->count(); ++tab) {
            tabs->setCurrentIndex(tab);
            PaintCounter counter;
            tabs->widget(tab)->installEventFilter(&counter);
            QTRY_VERIFY(counter.count > 0);
            QCoreApplication::processEvents();
            counter.count = 0;
            exportGraphs(*tabs, tester.path("page.svg"));
            QTRY_COMPARE(counter.count, 1);
        }
    }
};

QTEST_MAIN(TestGraphCommands)
#include "tst_graphcommands.moc"
