// SPDX-License-Identifier: GPL-3.0-or-later
#include <functional>

#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <QTest>

#include "support/graphtester.h"

Q_DECLARE_METATYPE(std::function<void(QMenu &)>)

/// The context menu in which the user marks the ideal kvadrant of a patient.
class TestKvadrantMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menuShowsTheStoredMark()
    {
        GraphTester tester;
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
        QCOMPARE(GraphTester::lines(*menu), expected);
        for (const QAction *action : GraphTester::entriesOf(*menu)) {
            QVERIFY(action->isEnabled());
            QVERIFY(action->actionGroup() == nullptr);
        }
        menu->close();

        tester.mark(1, 2);
        expected[3] = "*Kvadrant 2 (B/W)";
        expected[7] = "No ideal";
        menu = tester.openMenu(1);
        QCOMPARE(GraphTester::lines(*menu), expected);
        menu->close();
    }

    void menuIsFreedWhenItCloses_data()
    {
        using Gesture = std::function<void(QMenu &)>;
        QTest::addColumn<Gesture>("gesture");
        QTest::newRow("entry chosen") << Gesture([](QMenu &menu) {
            QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier,
                              menu.actionGeometry(GraphTester::entriesOf(menu).at(2)).center());
        });
        QTest::newRow("Escape") << Gesture(
            [](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_Escape); });
        QTest::newRow("closed") << Gesture([](QMenu &menu) { menu.close(); });
    }

    void menuIsFreedWhenItCloses()
    {
        QFETCH(std::function<void(QMenu &)>, gesture);
        GraphTester tester;
        const QPointer<QMenu> menu = tester.openMenu(0);
        const QPointer<QAction> entry = GraphTester::entriesOf(*menu).at(2);
        gesture(*menu);
        QVERIFY(QTest::qWaitFor([&] { return menu.isNull(); }));
        QVERIFY(entry.isNull());
    }

    void headingOfTheMenuOnlyClosesIt()
    {
        GraphTester tester;
        tester.mark(0, 3);
        tester.mark(0, 0);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        QCOMPARE(tester.idealKvadrants(), QVector<int>({3, -1, -1, -1, -1}));
    }

    void marksAreStoredAndCleared()
    {
        GraphTester tester;
        const QStringList table = tester.patientTexts();
        for (int row = 0; row < 4; ++row) {
            tester.mark(row, row + 1);
        }
        QCOMPARE(tester.idealKvadrants(), QVector<int>({1, 2, 3, 4, -1}));
        tester.mark(2, 5);
        QCOMPARE(tester.idealKvadrants(), QVector<int>({1, 2, -1, 4, -1}));
        QCOMPARE(tester.patientTexts(), table);
    }

    void rightClickBesideTheRowsOpensNothing()
    {
        GraphTester tester;
        tester.window->resize(900, 900);
        QCoreApplication::processEvents();
        const QPoint below(5, tester.patientTable()->viewport()->height() - 2);
        QCOMPARE(tester.patientTable()->indexAt(below).row(), -1);
        Q_EMIT tester.patientTable()->customContextMenuRequested(below);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
    }

    void newOpenClearsEveryMark()
    {
        GraphTester tester;
        tester.mark(0, 1);
        tester.open("five.xlsx");
        QCOMPARE(tester.idealKvadrants(), QVector<int>(5, -1));
    }
};

QTEST_MAIN(TestKvadrantMenu)
#include "tst_kvadrantmenu.moc"
