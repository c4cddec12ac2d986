// SPDX-License-Identifier: GPL-3.0-or-later
// The window used by keyboard alone and with a screen reader.

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QInputDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QTabBar>
#include <QTest>
#include <QWindow>

#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"
#include "support/graphtester.h"

namespace
{

class Tester : public GraphTester
{
public:
    void showBothGraphs()
    {
        makeGraph({0, 1});
        trigger("Groups graph");
    }

    void showNoGraph() { }
    void showOneGraph() { makeGraph({0, 1}); }
    void showGroups() { trigger("Groups graph"); }
    /// Three graphs, of which the last one is current.
    void showThreeGraphs()
    {
        showBothGraphs();
        makeGraph({2, 3});
    }

    /// Presses a key where the window gets it from the system.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }

    /// The part of the window that has the focus, a graph by its place in the order of creation.
    QString focusedPart() const
    {
        const QWidget *focused = QApplication::focusWidget();
        for (int i = 0; i < subWindows().size(); ++i) {
            if (subWindows().at(i)->isAncestorOf(focused) || subWindows().at(i) == focused) {
                return QString("graph %1").arg(i + 1);
            }
        }
        return focused == patientTable() ? "patients"
            : focused == scoreTable()    ? "results"
                                         : "elsewhere";
    }

    /// The parts that get the focus when \p key is pressed \p times times.
    QStringList partsAfter(int times, Qt::Key key, Qt::KeyboardModifiers modifiers) const
    {
        QStringList parts;
        for (int i = 0; i < times; ++i) {
            press(key, modifiers);
            parts << focusedPart();
        }
        return parts;
    }

    QList<QMenu *> contextMenus() const
    {
        QList<QMenu *> menus;
        for (QMenu *menu : window->findChildren<QMenu *>()) {
            if (menu->isVisible()) {
                menus << menu;
            }
        }
        return menus;
    }

    void pressMenuKey() const
    {
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QCoreApplication::sendEvent(window->windowHandle(), &menuKey);
    }

    void pressShiftF10() const { press(Qt::Key_F10, Qt::ShiftModifier); }
    void pressShiftF10ThenMenuKey() const
    {
        pressShiftF10();
        pressMenuKey();
    }
    void pressMenuKeyThenShiftF10() const
    {
        pressMenuKey();
        pressShiftF10();
    }

    /// Focuses \p widget in the active window.
    bool focus(QWidget *widget) const
    {
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get())) {
            return false;
        }
        widget->setFocus();
        return widget->hasFocus();
    }
};

using Preparation = void (Tester::*)();
using Gesture = void (Tester::*)() const;

QString accessibleName(QWidget *widget)
{
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

/// Whether a screen reader gets to the widget: those that take the focus, and the graphs.
bool isReached(const QWidget *widget)
{
    // A sub-window is named by its title, and that of a groups graph has none. The toolkit names
    // the buttons of a tab bar.
    return !qobject_cast<const QMdiSubWindow *>(widget)
        && !qobject_cast<const QTabBar *>(widget->parentWidget())
        && (widget->focusPolicy() != Qt::NoFocus || qobject_cast<const QMdiArea *>(widget)
            || qobject_cast<const GraphSubWindow *>(widget)
            || qobject_cast<const ResultSubWindow *>(widget));
}

} // namespace

Q_DECLARE_METATYPE(Preparation)
Q_DECLARE_METATYPE(Gesture)

class TestAccessibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingThatAScreenReaderReachesHasAName()
    {
        Tester tester;
        tester.showBothGraphs();
        QStringList names;
        for (QWidget *widget : tester.window->findChildren<QWidget *>()) {
            if (isReached(widget)) {
                const QString name = accessibleName(widget);
                QVERIFY2(!name.isEmpty(), widget->metaObject()->className());
                names << QString("%1: %2").arg(widget->metaObject()->className(), name);
            }
        }
        names.sort();
        QCOMPARE(names,
                 QStringList({"GraphSubWindow: Glymark value graph", "QMdiArea: Graphs",
                              "QPushButton: Reset selection", "QPushButton: Show graph",
                              "QTabBar: Glymark value graph", "QTabWidget: Graph 1",
                              "QTableView: Patients", "QTableView: Results",
                              "ResultSubWindow: Groups graph",
                              "ResultSubWindow: Patient result graph"}));
    }

    void tabLeavesTheTables()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.scoreTable()));
        QList<QWidget *> visited;
        for (int i = 0; i < 4; ++i) {
            visited << QApplication::focusWidget();
            QTest::keyClick(visited.last(), Qt::Key_Tab);
        }
        QCOMPARE(visited,
                 QList<QWidget *>({tester.scoreTable(), tester.patientTable(),
                                   tester.button("Show graph"), tester.button("Reset selection")}));
        QCOMPARE(QApplication::focusWidget(), tester.scoreTable());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), tester.button("Reset selection"));
    }

    void arrowKeysWalkThroughTheCells()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.scoreTable()));
        tester.scoreTable()->setCurrentIndex(tester.scoreModel()->index(0, 0));
        QTest::keyClick(tester.scoreTable(), Qt::Key_Down);
        QTest::keyClick(tester.scoreTable(), Qt::Key_Right);
        QCOMPARE(tester.scoreTable()->currentIndex(), tester.scoreModel()->index(1, 1));
    }

    void graphIsMadeByKeyboard()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.patientTable()));
        tester.patientTable()->setCurrentIndex(tester.patientsModel()->index(0, 0));
        QTest::keyClick(tester.patientTable(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tester.selectedRows(), 2);
        QTest::keyClick(tester.patientTable(), Qt::Key_Tab);
        tester.answers.expect<QInputDialog>(
            [](QInputDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(tester.subWindows().size(), 1);
    }

    void idealKvadrantIsChosenByKeyboard_data()
    {
        QTest::addColumn<Gesture>("openMenu");
        QTest::newRow("Menu key") << Gesture(&Tester::pressMenuKey);
        QTest::newRow("Shift+F10") << Gesture(&Tester::pressShiftF10);
        // A system may make a Menu key out of Shift+F10, before or after it.
        QTest::newRow("Shift+F10, then as Menu key") << Gesture(&Tester::pressShiftF10ThenMenuKey);
        QTest::newRow("as Menu key, then Shift+F10") << Gesture(&Tester::pressMenuKeyThenShiftF10);
    }

    void idealKvadrantIsChosenByKeyboard()
    {
        QFETCH(const Gesture, openMenu);
        Tester tester;
        QVERIFY(tester.focus(tester.patientTable()));
        tester.patientTable()->setCurrentIndex(tester.patientsModel()->index(1, 0));
        (tester.*openMenu)();
        QCOMPARE(tester.contextMenus().size(), 1);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        // Past the heading to the third kvadrant.
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(menu, Qt::Key_Down);
        }
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(tester.idealKvadrants(), QVector<int>({-1, 3, -1, -1, -1}));
    }

    void shiftF10NeedsThePatients()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.scoreTable()));
        tester.pressShiftF10();
        QVERIFY(tester.contextMenus().isEmpty());
        QVERIFY(tester.focus(tester.patientTable()));
        tester.press(Qt::Key_F10, Qt::ShiftModifier | Qt::ControlModifier);
        QVERIFY(tester.contextMenus().isEmpty());
    }

    void f6GoesRoundThePartsOfTheWindow_data()
    {
        QTest::addColumn<Preparation>("prepare");
        QTest::addColumn<QStringList>("parts");
        const auto row = [](const char *name, Preparation prepare, const QStringList &parts) {
            QTest::newRow(name) << prepare << parts;
        };
        row("no graph", &Tester::showNoGraph, {"patients", "results"});
        row("one graph", &Tester::showOneGraph, {"patients", "results", "graph 1"});
        row("groups graph", &Tester::showGroups, {"patients", "results", "graph 1"});
        row("three graphs", &Tester::showThreeGraphs, {"patients", "results", "graph 3"});
    }

    void f6GoesRoundThePartsOfTheWindow()
    {
        QFETCH(const Preparation, prepare);
        QFETCH(QStringList, parts);
        Tester tester;
        (tester.*prepare)();
        QVERIFY(tester.focus(tester.button("Reset selection")));
        // From a button beside the patients the others come first.
        tester.press(Qt::Key_F6);
        QCOMPARE(tester.focusedPart(), "results");
        QVERIFY(tester.focus(tester.patientTable()));
        const int times = 2 * int(parts.size());
        const QStringList forward = tester.partsAfter(times, Qt::Key_F6, Qt::NoModifier);
        parts.append(parts.takeFirst());
        QCOMPARE(forward, parts + parts);
        const QStringList backward = tester.partsAfter(times, Qt::Key_F6, Qt::ShiftModifier);
        parts.removeLast();
        std::reverse(parts.begin(), parts.end());
        parts.append("patients");
        QCOMPARE(backward, parts + parts);
    }

    void f6ReturnsToWhereTheFocusWas()
    {
        Tester tester;
        tester.showOneGraph();
        QWidget *const tabs = tester.subWindows().first()->findChild<QTabBar *>();
        QVERIFY(tester.focus(tester.patientTable()));
        tester.patientTable()->setCurrentIndex(tester.patientsModel()->index(3, 0));
        tester.press(Qt::Key_F6, Qt::ShiftModifier);
        QCOMPARE(QApplication::focusWidget(), tabs);
        tester.press(Qt::Key_F6);
        QCOMPARE(tester.patientTable()->currentIndex().row(), 3);
        tester.subWindows().first()->showMinimized();
        QVERIFY(tester.focus(tester.patientTable()));
        tester.press(Qt::Key_F6, Qt::ShiftModifier);
        QCOMPARE(QApplication::focusWidget(), tester.subWindows().first());
    }

    void f6ScrollsToTheGraph()
    {
        Tester tester;
        tester.window->resize(700, 500);
        tester.showOneGraph();
        QMdiSubWindow *const graph = tester.subWindows().first();
        graph->move(900, 700);
        QVERIFY(tester.focus(tester.patientTable()));
        QCoreApplication::processEvents();
        QVERIFY(!tester.area()->viewport()->rect().contains(graph->pos()));
        tester.press(Qt::Key_F6, Qt::ShiftModifier);
        QCOMPARE(graph->pos(), QPoint(0, 0));
    }

    void controlTabGoesFromTheTablesToTheGraphs()
    {
        Tester tester;
        tester.showThreeGraphs();
        for (QWidget *from : {static_cast<QWidget *>(tester.patientTable()),
                              static_cast<QWidget *>(tester.scoreTable()),
                              static_cast<QWidget *>(tester.button("Show graph"))}) {
            tester.area()->setActiveSubWindow(tester.subWindows().at(2));
            QVERIFY(tester.focus(from));
            tester.press(Qt::Key_Tab, Qt::ControlModifier);
            QCOMPARE(tester.focusedPart(), "graph 1");
            QVERIFY(tester.focus(from));
            tester.press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
            QCOMPARE(tester.focusedPart(), "graph 3");
        }
    }

    void controlTabFindsAnOnlyGraphAndNone()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.patientTable()));
        tester.press(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(tester.focusedPart(), "patients");
        tester.showGroups();
        QVERIFY(tester.focus(tester.patientTable()));
        tester.press(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(tester.focusedPart(), "graph 1");
    }

    void everyCommandHasAShortcut()
    {
        Tester tester;
        for (const char *command : {"Open File", "Save file", "Export graph", "Settings",
                                    "Groups graph", "Save data analysis", "Close file", "Exit"}) {
            QVERIFY2(!tester.action(command)->shortcut().isEmpty(), command);
        }
    }
};

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
