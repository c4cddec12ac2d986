// SPDX-License-Identifier: GPL-3.0-or-later
// The window used by keyboard alone and with a screen reader.

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

    void idealKvadrantIsChosenByKeyboard()
    {
        Tester tester;
        QVERIFY(tester.focus(tester.patientTable()));
        tester.patientTable()->setCurrentIndex(tester.patientsModel()->index(1, 0));
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QCoreApplication::sendEvent(tester.window->windowHandle(), &menuKey);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        // Past the heading to the third kvadrant.
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(menu, Qt::Key_Down);
        }
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(tester.idealKvadrants(), QVector<int>({-1, 3, -1, -1, -1}));
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
