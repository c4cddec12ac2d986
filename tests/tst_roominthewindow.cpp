// SPDX-License-Identifier: GPL-3.0-or-later
// How the window shares its room: where graphs open, how to get back to those that lie outside, and
// when all rows of the results show.

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>

#include "graphs/graphsubwindow.h"
#include "subwindowplacement.h"
#include "support/graphtester.h"

namespace
{

constexpr QSize firstSize;

/// A window with five patients, resized unless \p size is the one at which it opens.
class Tester : public GraphTester
{
public:
    explicit Tester(const QSize &size = firstSize)
    {
        if (size.isValid()) {
            resize(size);
        }
    }

    void resize(const QSize &size) const
    {
        window->resize(size);
        settle();
    }

    /// Two graphs of either form, one after the other.
    void makeFourGraphs()
    {
        for (int i = 0; i < 2; ++i) {
            makeGraph({0, 1});
            trigger("Groups graph");
        }
        settle();
    }

    QRect room() const { return area()->viewport()->rect(); }
    int stripHeight() const { return scoreTable()->parentWidget()->height(); }
    int wholeRows() const
    {
        int rows = 0;
        while (rows < 6
               && scoreTable()->rowViewportPosition(rows) + scoreTable()->rowHeight(rows)
                   <= scoreTable()->viewport()->height()) {
            ++rows;
        }
        return rows;
    }

    static void settle()
    {
        for (int i = 0; i < 5; ++i) {
            QCoreApplication::processEvents();
        }
    }
};

void sizeColumn()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("first size") << firstSize;
    QTest::newRow("640 x 480") << QSize(640, 480);
    QTest::newRow("1366 x 768") << QSize(1366, 768);
    QTest::newRow("1600 x 1000") << QSize(1600, 1000);
}

/// Whether one of the values of \p bar brings \p position between 0 and \p end.
bool isReached(const QScrollBar *bar, int position, int end)
{
    const int nearest = qBound(bar->minimum(), bar->value() + position, bar->maximum());
    const int there = position - (nearest - bar->value());
    return there >= 0 && there < end;
}

QStringList unreachable(const Tester &tester)
{
    QStringList lost;
    for (const QMdiSubWindow *graph : tester.subWindows()) {
        if (!isReached(tester.area()->horizontalScrollBar(), graph->x(), tester.room().width())
            || !isReached(tester.area()->verticalScrollBar(), graph->y(), tester.room().height())) {
            lost << QString("%1, %2").arg(graph->x()).arg(graph->y());
        }
    }
    return lost;
}

QVector<QRect> placesOf(const Tester &tester)
{
    QVector<QRect> all;
    for (const QMdiSubWindow *graph : tester.subWindows()) {
        all << graph->geometry();
    }
    return all;
}

} // namespace

class TestRoomInTheWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowsMoveInsideNoFartherThanNeeded_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QPoint>("position");
        QTest::newRow("inside") << QRect(10, 20, 300, 200) << QPoint(10, 20);
        QTest::newRow("touches both edges") << QRect(300, 200, 300, 200) << QPoint(300, 200);
        QTest::newRow("too far to the right") << QRect(301, 20, 300, 200) << QPoint(300, 20);
        QTest::newRow("too far down") << QRect(10, 350, 300, 200) << QPoint(10, 200);
        QTest::newRow("too far to the left") << QRect(-1, 20, 300, 200) << QPoint(0, 20);
        QTest::newRow("above") << QRect(10, -500, 300, 200) << QPoint(10, 0);
        QTest::newRow("as large") << QRect(7, 7, 600, 400) << QPoint(0, 0);
        QTest::newRow("too wide") << QRect(7, 20, 601, 200) << QPoint(0, 20);
        QTest::newRow("too high") << QRect(10, -20, 300, 401) << QPoint(10, 0);
    }

    void windowsMoveInsideNoFartherThanNeeded()
    {
        QFETCH(const QRect, window);
        QTEST(SubWindowPlacement::inside(window, QSize(600, 400)), "position");
    }

    void windowsOpenAsHighAsTheyAsk_data()
    {
        QTest::addColumn<int>("asked");
        QTest::addColumn<int>("room");
        QTest::addColumn<int>("height");
        QTest::newRow("there is room") << 462 << 500 << 462;
        QTest::newRow("just enough") << 462 << 462 << 462;
        QTest::newRow("less room") << 462 << 440 << 440;
        QTest::newRow("hardly any room") << 462 << 100 << 415;
        QTest::newRow("asks for less than the least") << 29 << 500 << 415;
    }

    void windowsOpenAsHighAsTheyAsk()
    {
        QFETCH(const int, asked);
        QFETCH(const int, room);
        QTEST(SubWindowPlacement::openingHeight(asked, 415, room), "height");
    }

    void newGraphsLieInTheMiddle_data() { sizeColumn(); }
    void newGraphsLieInTheMiddle()
    {
        QFETCH(const QSize, size);
        Tester tester(size);
        tester.makeFourGraphs();
        const QRect room = tester.room();
        for (const QRect &place : placesOf(tester)) {
            QVERIFY(room.contains(place.topLeft()));
            QVERIFY(place.width() > room.width() ? place.x() == 0 : place.right() <= room.right());
            QVERIFY(place.height() > room.height() ? place.y() == 0
                                                   : place.bottom() <= room.bottom());
        }
        // Scroll bars are there where something lies outside, and only there.
        QCOMPARE(tester.area()->horizontalScrollBar()->isVisible(), room.width() < 715);
        QCOMPARE(tester.area()->verticalScrollBar()->isVisible(), room.height() < 415);
    }

    void graphsStayWithinReach_data() { sizeColumn(); }
    void graphsStayWithinReach()
    {
        QFETCH(const QSize, size);
        Tester tester(size);
        tester.makeFourGraphs();
        const QSize usual = tester.window->size();
        const QVector<QRect> places = placesOf(tester);
        for (const QSize &other : {QSize(600, 450), QSize(1900, 1100), QSize(700, 1000)}) {
            tester.resize(other);
            QCOMPARE(unreachable(tester), QStringList());
            tester.area()->horizontalScrollBar()->setValue(200);
            tester.area()->verticalScrollBar()->setValue(100);
            tester.resize(usual);
            QCOMPARE(unreachable(tester), QStringList());
        }
        tester.area()->horizontalScrollBar()->setValue(0);
        tester.area()->verticalScrollBar()->setValue(0);
        QCOMPARE(placesOf(tester), places);
    }

    void scrollBarsGoWhenThereIsRoomAgain()
    {
        Tester tester(QSize(1366, 768));
        tester.makeFourGraphs();
        QMdiSubWindow *const corner = tester.subWindows().first();
        const QPoint end = tester.room().bottomRight() - corner->rect().bottomRight();
        corner->move(end);
        const QVector<QRect> places = placesOf(tester);
        tester.resize(QSize(700, 500));
        tester.area()->horizontalScrollBar()->setValue(300);
        tester.area()->verticalScrollBar()->setValue(200);
        tester.resize(QSize(1366, 768));
        QVERIFY(!tester.area()->horizontalScrollBar()->isVisible());
        QVERIFY(!tester.area()->verticalScrollBar()->isVisible());
        QCOMPARE(placesOf(tester), places);
    }

    void graphMovedOutsideCanBeScrolledTo()
    {
        Tester tester(QSize(1366, 768));
        tester.makeGraph({0, 1});
        for (const QPoint &far : {QPoint(-700, -300), QPoint(3000, 2000)}) {
            tester.subWindows().first()->move(far);
            Tester::settle();
            QCOMPARE(unreachable(tester), QStringList());
            SubWindowPlacement::scrollTo(*tester.area(), *tester.subWindows().first());
            QVERIFY(tester.room().contains(tester.subWindows().first()->pos()));
        }
    }

    void graphOpensAsHighAsItsContent_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("whole");
        QTest::newRow("1600 x 1000") << QSize(1600, 1000) << true;
        QTest::newRow("1920 x 1080") << QSize(1920, 1080) << true;
        QTest::newRow("no room for all") << QSize(1366, 710) << false;
        QTest::newRow("no room for the least") << QSize(1366, 600) << false;
    }

    // The third line of the legend ends 10 pixels above the lower edge of the graph.
    void graphOpensAsHighAsItsContent()
    {
        QFETCH(const QSize, size);
        QFETCH(const bool, whole);
        Tester tester(size);
        tester.makeGraph({0, 1});
        Tester::settle();
        const QMdiSubWindow *subWindow = tester.subWindows().first();
        const auto *graph = subWindow->findChild<GraphSubWindow *>();
        QCOMPARE(graph->visibleRegion().boundingRect().height() > graph->height() - 10, whole);
        QCOMPARE(subWindow->width(), 715);
        QCOMPARE(subWindow->height(),
                 whole ? subWindow->sizeHint().height() : qMax(415, tester.room().height()));
    }

    void groupGraphOpensAtItsLeastSize()
    {
        Tester tester(QSize(1600, 1000));
        tester.trigger("Groups graph");
        QCOMPARE(tester.subWindows().first()->size(), QSize(700, 400));
    }

    void graphBesideAMaximizedOneIsRestoredInside()
    {
        Tester tester(QSize(1366, 768));
        tester.makeGraph({0, 1});
        tester.subWindows().first()->showMaximized();
        tester.makeGraph({0, 1});
        Tester::settle();
        QMdiSubWindow *second = tester.subWindows().last();
        QVERIFY(second->isMaximized());
        QVERIFY(tester.room().contains(second->geometry()));
        second->showNormal();
        Tester::settle();
        QVERIFY(tester.room().contains(second->geometry()));
        QCOMPARE(second->size(), QSize(715, second->sizeHint().height()));
    }

    void allRowsOfTheResultsShow_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("1366 x 768, maximized") << QSize(1366, 744);
        QTest::newRow("2560 x 1440 at 200 %, maximized") << QSize(1280, 700);
        QTest::newRow("1600 x 1000") << QSize(1600, 1000);
        QTest::newRow("2560 x 1440") << QSize(2560, 1440);
    }

    void allRowsOfTheResultsShow()
    {
        QFETCH(const QSize, size);
        Tester tester(size);
        QCOMPARE(tester.wholeRows(), 6);
        QVERIFY(tester.area()->height() >= 400);
        // More patients than fit beside each other need a scroll bar.
        tester.openPatients("many.xlsx",
                            QVector<TestWorkbooks::Row>(60, {"patient", 50.0, 60.0, 55.0}));
        Tester::settle();
        QVERIFY(tester.scoreTable()->horizontalScrollBar()->isVisible());
        QCOMPARE(tester.wholeRows(), 6);
        QCOMPARE(tester.window->size(), size);
    }

    void withoutRoomForAGraphTheResultsGetNoMore()
    {
        Tester tester(QSize(1366, 660));
        QVERIFY(tester.wholeRows() < 6);
        const int withFile = tester.stripHeight();
        tester.trigger("Close file");
        Tester::settle();
        QCOMPARE(tester.stripHeight(), withFile);
    }

    void openFileLeavesTheWindowAsItIs()
    {
        StartedTester tester;
        Tester::settle();
        const QSize first = tester.window->size();
        const QSize least = tester.window->minimumSizeHint();
        tester.openThreePatients();
        Tester::settle();
        QCOMPARE(tester.window->size(), first);
        QCOMPARE(tester.window->minimumSizeHint(), least);
    }

    void closedFileGivesTheRoomBack()
    {
        Tester tester(QSize(1366, 700));
        const int withFile = tester.stripHeight();
        tester.trigger("Close file");
        Tester::settle();
        QVERIFY(tester.stripHeight() < withFile);
        tester.open("five.xlsx");
        Tester::settle();
        QCOMPARE(tester.stripHeight(), withFile);
    }
};

// The window shares its room by the size of the screen, which is 800 x 600 without one. At half the
// scale that makes 1600 x 1200.
int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "0.5");
    QApplication application(argc, argv);
    TestRoomInTheWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_roominthewindow.moc"
