// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDomDocument>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

#include "analysis/patientanalysis.h"
#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"
#include "support/graphtester.h"
#include "support/recordingpaintdevice.h"

namespace
{

/// One line per thing that the graph draws: what, where, and its colours.
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

constexpr int convergence = 1;
constexpr int variability = 2;

/// What a plot of \p shown draws around the center of all five patients.
QStringList plotAroundTheCenterOfFive(const QVector<PatientScoreRecord> &shown, bool median)
{
    QVector<double> xs;
    QVector<double> ys;
    for (const PatientScoreRecord &score : scoresOf(fivePatients())) {
        xs << score.convergence.at(convergence);
        ys << score.variability.at(variability);
    }
    return drawingOf(ResultSubWindow(shown, variability, convergence, centerOfFive(ys, median),
                                     centerOfFive(xs, median)));
}

void moveInside(const QMdiArea &area, QMdiSubWindow *subWindow)
{
    const QSize space = area.viewport()->size() - subWindow->size();
    subWindow->move(qBound(0, subWindow->x(), space.width()),
                    qBound(0, subWindow->y(), space.height()));
}

// A group graph has its size before the area places it, a tabbed one only afterwards.
void addLikeAGroupGraph(QMdiArea &area)
{
    auto *subWindow = new QMdiSubWindow;
    subWindow->setMinimumSize(700, 400);
    area.addSubWindow(subWindow);
    subWindow->setWidget(new QWidget);
    subWindow->show();
    moveInside(area, subWindow);
}

void addLikeATabbedGraph(QMdiArea &area)
{
    auto *subWindow = new QMdiSubWindow;
    auto *tabs = new QTabWidget;
    tabs->addTab(new GraphSubWindow(QString(), {}), "Glymark value graph");
    tabs->addTab(new QWidget, "Patient result graph");
    area.addSubWindow(subWindow);
    subWindow->setMinimumSize(715, 415);
    subWindow->setWidget(tabs);
    subWindow->show();
    subWindow->resize(715, subWindow->sizeHint().height());
    moveInside(area, subWindow);
}

QVector<QRect> places(const QMdiArea &area)
{
    QVector<QRect> all;
    for (const QMdiSubWindow *subWindow : area.subWindowList()) {
        all << subWindow->geometry();
    }
    return all;
}

/// The next dialog is an information box of the window with one button.
void expectInformation(GraphTester &tester, const QString &title, const QString &text)
{
    tester.answers.expect<QMessageBox>([&tester, title, text](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), title);
        QCOMPARE(box.text(), text);
        QCOMPARE(box.icon(), QMessageBox::Information);
        QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.parentWidget(), tester.window.get());
        box.button(QMessageBox::Ok)->click();
    });
}

} // namespace

class TestGraphCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectedPatientsComeInTwoTabs()
    {
        GraphTester tester;
        tester.makeGraph({1, 3}, "My graph");
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
        GraphTester tester;
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
            const char *center = median ? "median" : "average";
            QTest::addRow("one patient, %s", center) << median << QVector<int>{3};
            QTest::addRow("three patients, %s", center) << median << QVector<int>{1, 2, 4};
        }
    }

    void graphsShowTheirPatientsAndTheCenterOfAll()
    {
        QFETCH(bool, median);
        QFETCH(QVector<int>, rows);
        GraphTester tester(settingsText(convergence, variability, median));
        tester.select(rows);
        QVector<PatientRecord> patients;
        for (const QModelIndex &row : tester.patientTable()->selectionModel()->selectedRows(0)) {
            patients << fivePatients().at(row.row());
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
        QCOMPARE(drawingOf(*plot), plotAroundTheCenterOfFive(scoresOf(patients), median));
    }

    void groupGraphShowsTheGroupAndItsCenter_data()
    {
        QTest::addColumn<bool>("median");
        QTest::newRow("median") << true;
        QTest::newRow("average") << false;
    }

    void groupGraphShowsTheGroupAndItsCenter()
    {
        QFETCH(bool, median);
        GraphTester tester(settingsText(convergence, variability, median));
        tester.trigger("Groups graph");
        const auto *plot = qobject_cast<ResultSubWindow *>(tester.subWindows().first()->widget());
        QVERIFY(plot);
        const QVector<PatientScoreRecord> scores = scoresOf(fivePatients());
        QCOMPARE(drawingOf(*plot), plotAroundTheCenterOfFive(scores, median));
        // The two centers differ.
        QVERIFY(drawingOf(*plot) != plotAroundTheCenterOfFive(scores, !median));
    }

    void graphWithoutSelectionIsRefused()
    {
        GraphTester tester;
        expectInformation(tester, "0 selected",
                          "Please select rows from table above to display as graph");
        tester.press("Show graph");
        QCOMPARE(tester.subWindows().size(), 0);
    }

    void cancelledNameKeepsTheSelection()
    {
        GraphTester tester;
        tester.select({0, 2});
        tester.answers.expect<QInputDialog>([](QInputDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Graph name");
            QCOMPARE(dialog.labelText(), "Name");
            QCOMPARE(dialog.textValue(), "Graph 1");
            QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
            dialog.reject();
        });
        tester.press("Show graph");
        QCOMPARE(tester.subWindows().size(), 0);
        QCOMPARE(tester.selectedRows(), 2);
    }

    void emptyNameGivesTheDefaultName()
    {
        GraphTester tester;
        tester.makeGraph({0}, "");
        QCOMPARE(tester.subWindows().first()->windowTitle(), "Graph 1");
    }

    void blankNameIsKept()
    {
        GraphTester tester;
        tester.makeGraph({0}, "  ");
        QCOMPARE(tester.subWindows().first()->windowTitle(), "  ");
    }

    void defaultNameCountsOpenSubWindowsOfBothForms()
    {
        GraphTester tester;
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
        GraphTester tester;
        tester.makeGraph({0});
        const QPointer<QMdiSubWindow> subWindow = tester.subWindows().first();
        const QPointer<QWidget> graph = qobject_cast<QTabWidget *>(subWindow->widget())->widget(0);
        subWindow->close();
        QCOMPARE(tester.subWindows().size(), 0);
        QVERIFY(tester.area()->currentSubWindow() == nullptr);
        QVERIFY(QTest::qWaitFor([&] { return subWindow.isNull(); }));
        QVERIFY(graph.isNull());
    }

    void resetSelectionClearsIt()
    {
        GraphTester tester;
        tester.select({0, 1, 2});
        tester.press("Reset selection");
        QCOMPARE(tester.selectedRows(), 0);
    }

    void groupGraphShowsAllPatients()
    {
        GraphTester tester;
        tester.select({1});
        tester.trigger("Groups graph");
        const QMdiSubWindow *subWindow = tester.subWindows().first();
        QVERIFY(qobject_cast<ResultSubWindow *>(subWindow->widget()));
        QCOMPARE(subWindow->minimumSize(), QSize(700, 400));
        QCOMPARE(subWindow->windowTitle(), QString());
        QCOMPARE(tester.selectedRows(), 1);
    }

    void graphsArePlacedBySizeAndOrder()
    {
        GraphTester tester;
        tester.window->resize(2000, 1600);
        QCoreApplication::processEvents();
        QCOMPARE(tester.window->size(), QSize(2000, 1600));
        QMdiArea area;
        area.resize(tester.area()->size());
        area.show();
        QCoreApplication::processEvents();
        QCOMPARE(area.viewport()->size(), tester.area()->viewport()->size());

        for (int i = 0; i < 2; ++i) {
            tester.trigger("Groups graph");
            addLikeAGroupGraph(area);
        }
        for (int i = 0; i < 2; ++i) {
            tester.makeGraph({0, 1});
            addLikeATabbedGraph(area);
        }
        QCoreApplication::processEvents();
        QCOMPARE(places(*tester.area()).size(), 4);
        QCOMPARE(places(*tester.area()), places(area));
    }

    void groupGraphNeedsAFile()
    {
        GraphTester tester;
        tester.trigger("Close file");
        expectInformation(tester, "No data", "No data to visualize");
        tester.trigger("Groups graph");
        QVERIFY(!tester.button("Show graph")->isEnabled());
    }

    void subWindowsSurviveASecondOpenAndCloseWithTheFile()
    {
        GraphTester tester;
        tester.makeGraph({0, 1});
        tester.trigger("Groups graph");
        QWidget *graph = tester.subWindows().first()->widget();
        const QImage before = graph->grab().toImage();
        tester.openPatients("one.xlsx", {{"x", 40.0, 50.0}});
        QCOMPARE(tester.subWindows().size(), 2);
        QCOMPARE(graph->grab().toImage(), before);
        tester.trigger("Close file");
        QCOMPARE(tester.subWindows().size(), 0);
    }
};

QTEST_MAIN(TestGraphCommands)
#include "tst_graphcommands.moc"
