// SPDX-License-Identifier: GPL-3.0-or-later
// Commands that run while another one waits for its dialog: a global menu bar, an automation tool
// or a session manager can start them.

#include <array>

#include <QApplication>
#include <QInputDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <xlsxdocument.h>

#include "settingsdialog.h"
#include "support/mainwindowtester.h"

namespace
{

/// A window with two patients and a graph of both.
class Tester : public StartedTester
{
public:
    Tester()
    {
        TestWorkbooks::save(path("other.xlsx"), {{"c", 40.0, 45.0}});
        TestWorkbooks::save(path("nobody.xlsx"), {});
        openTwoPatients();
        patientTable()->selectAll();
        answers.expectAndAccept<QInputDialog>();
        button("Show graph")->click();
    }

    int graphs() const { return int(subWindows().size()); }

    void expectInterruptedMessage(std::function<void()> meanwhile)
    {
        answers.expectInterrupted<QMessageBox>(
            std::move(meanwhile), [](QMessageBox &box) { box.button(QMessageBox::Ok)->click(); });
    }

    void closeFile() { trigger("Close file"); }
    void openOther() { open("other.xlsx"); }
    void reopen() { open("two.xlsx"); }
    void closeAndOpenOther()
    {
        closeFile();
        openOther();
    }
    void closeGraphs() { area()->closeAllSubWindows(); }
    void showGroups() { trigger("Groups graph"); }
    void resetSelection() { button("Reset selection")->click(); }
    void acceptSettings()
    {
        answers.expect<SettingsDialog>(
            [](SettingsDialog &dialog) { dialog.findChild<QPushButton *>("okButton")->click(); });
        trigger("Settings");
    }
    void saveElsewhere()
    {
        answers.expectFile(path("elsewhere.xlsx"));
        trigger("Save file");
    }
};

/// Something that happens under a dialog, and what it closes.
struct Meanwhile {
    const char *name;
    void (Tester::*run)();
    bool losesFile;
    bool losesGraphs;
};

constexpr std::array meanwhiles = {
    Meanwhile{"nothing lost: groups graph", &Tester::showGroups, false, false},
    Meanwhile{"nothing lost: settings", &Tester::acceptSettings, false, false},
    Meanwhile{"nothing lost: selection reset", &Tester::resetSelection, false, false},
    Meanwhile{"nothing lost: saved elsewhere", &Tester::saveElsewhere, false, false},
    Meanwhile{"graphs closed", &Tester::closeGraphs, false, true},
    Meanwhile{"file closed", &Tester::closeFile, true, true},
    Meanwhile{"other file opened", &Tester::openOther, true, false},
    Meanwhile{"same file opened again", &Tester::reopen, true, false},
    Meanwhile{"file closed, other opened", &Tester::closeAndOpenOther, true, true},
};

void meanwhileColumns()
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < meanwhiles.size(); ++i) {
        QTest::newRow(meanwhiles.at(i).name) << int(i);
    }
}

} // namespace

class TestInterruptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savingWritesTheFileThatWasOpenOrNothing_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("index");
        for (const char *action : {"Save file", "Save data analysis"}) {
            for (size_t i = 0; i < meanwhiles.size(); ++i) {
                QTest::addRow("%s, %s", action, meanwhiles.at(i).name) << QString(action) << int(i);
            }
        }
    }
    void savingWritesTheFileThatWasOpenOrNothing()
    {
        QFETCH(const QString, action);
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        const QString saved = tester.path("saved.xlsx");
        tester.answers.expectInterruptedFile([&] { (tester.*meanwhile.run)(); }, saved);
        tester.trigger(action);
        QCOMPARE(QFile::exists(saved), !meanwhile.losesFile);
        if (!meanwhile.losesFile) {
            const QXlsx::Document book(saved);
            QCOMPARE(book.read(2, 1).toString() + book.read(3, 1).toString(), "ab");
        }
    }

    void showGraphShowsTheSelectedRowsOrNothing_data() { meanwhileColumns(); }
    void showGraphShowsTheSelectedRowsOrNothing()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        tester.patientTable()->selectRow(1);
        int before = 0;
        const auto run = [&] {
            (tester.*meanwhile.run)();
            before = tester.graphs();
        };
        tester.answers.expectInterrupted<QInputDialog>(
            run, [](QInputDialog &dialog) { dialog.accept(); });
        tester.button("Show graph")->click();
        QCOMPARE(tester.graphs(), meanwhile.losesFile ? before : before + 1);
    }
    // The default name counts the sub-windows that are open when it is needed.
    void emptyNameCountsTheGraphsAfterTheDialog()
    {
        Tester tester;
        tester.patientTable()->selectRow(1);
        tester.answers.expectInterrupted<QInputDialog>([&] { tester.showGroups(); },
                                                       [](QInputDialog &dialog) {
                                                           dialog.setTextValue(QString());
                                                           dialog.accept();
                                                       });
        tester.button("Show graph")->click();
        QCOMPARE(tester.subWindows().last()->windowTitle(), "Graph 3");
    }
    void showGraphUnderItsOwnNameDialog()
    {
        Tester tester;
        tester.patientTable()->selectRow(1);
        const auto again = [&] {
            tester.answers.expectAndAccept<QInputDialog>();
            tester.button("Show graph")->click();
        };
        tester.answers.expectInterrupted<QInputDialog>(
            again, [](QInputDialog &dialog) { dialog.accept(); });
        tester.button("Show graph")->click();
        QCOMPARE(tester.graphs(), 3);
    }

    void exportWritesTheGraphThatWasCurrentOrNothing_data() { meanwhileColumns(); }
    void exportWritesTheGraphThatWasCurrentOrNothing()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        const QString page = tester.path("page.svg");
        const auto run = [&] {
            (tester.*meanwhile.run)();
            if (!meanwhile.losesGraphs) {
                tester.answers.expectMessage();
            }
        };
        tester.answers.expectInterruptedFile(run, page);
        tester.trigger("Export graph");
        QCOMPARE(QFile::exists(page), !meanwhile.losesGraphs);
        QCOMPARE(tester.answers.messages(),
                 meanwhile.losesGraphs ? QStringList()
                                       : QStringList("Graphs export|Graph successfully exported"));
    }
    // The closed sub-window is deleted before the dialog is answered.
    void exportOfADeletedGraphWritesNothing()
    {
        Tester tester;
        const QString page = tester.path("page.svg");
        const auto run = [&] {
            tester.closeGraphs();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        tester.answers.expectInterruptedFile(run, page);
        tester.trigger("Export graph");
        QVERIFY(!QFile::exists(page));
    }
    void anyCommandUnderTheExportMessageIsSafe_data() { meanwhileColumns(); }
    void anyCommandUnderTheExportMessageIsSafe()
    {
        QFETCH(const int, index);
        Tester tester;
        tester.answers.expectFile(tester.path("page.svg"));
        tester.expectInterruptedMessage([&] { (tester.*meanwhiles.at(size_t(index)).run)(); });
        tester.trigger("Export graph");
        QVERIFY(QFile::exists(tester.path("page.svg")));
    }

    void openContinuesWithTheChosenFile_data() { meanwhileColumns(); }
    void openContinuesWithTheChosenFile()
    {
        QFETCH(const int, index);
        Tester tester;
        tester.answers.expectInterruptedFile([&] { (tester.*meanwhiles.at(size_t(index)).run)(); },
                                             tester.path("two.xlsx"));
        tester.trigger("Open File");
        QCOMPARE(tester.patientIds(), QStringList({"a", "b"}));
        QVERIFY(tester.isFileOpen());
    }
    void refusalLeavesWhatWasOpenedUnderIt()
    {
        Tester tester;
        tester.answers.expectFile(tester.path("nobody.xlsx"));
        tester.expectInterruptedMessage([&] { tester.openOther(); });
        tester.trigger("Open File");
        QCOMPARE(tester.patientIds(), QStringList("c"));
    }

    void settingsUpdateTheFileThatIsOpenAfterwards_data() { meanwhileColumns(); }
    void settingsUpdateTheFileThatIsOpenAfterwards()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        QStringList after;
        const auto run = [&] {
            (tester.*meanwhile.run)();
            after = tester.patientIds();
        };
        tester.answers.expectInterrupted<SettingsDialog>(run, [](SettingsDialog &dialog) {
            dialog.findChild<QSpinBox *>("offsetSpin")->setValue(2);
            dialog.findChild<QPushButton *>("okButton")->click();
        });
        tester.trigger("Settings");
        QCOMPARE(tester.patientIds(), after);
        QVERIFY(tester.labelTexts().contains("2"));
        // After its first two values "a" has one step, from 55 to 70.
        if (after.contains("a")) {
            QCOMPARE(tester.scoreModel()->index(4, 0).data().toString(), "0");
        }
    }

    void openingUnderAMessageIsSafe_data()
    {
        QTest::addColumn<QString>("action");
        for (const char *action :
             {"Save file", "Save data analysis", "Groups graph", "Export graph"}) {
            QTest::newRow(action) << QString(action);
        }
    }
    void openingUnderAMessageIsSafe()
    {
        QFETCH(const QString, action);
        Tester tester;
        tester.closeFile();
        tester.expectInterruptedMessage([&] { tester.openOther(); });
        tester.trigger(action);
        QCOMPARE(tester.patientIds(), QStringList("c"));
        QCOMPARE(tester.graphs(), 0);
    }
    void closingUnderTheMessageIsSafe()
    {
        Tester tester;
        tester.expectInterruptedMessage([&] { tester.closeFile(); });
        tester.button("Show graph")->click();
        QVERIFY(!tester.isFileOpen());
    }

    // The menu does not wait: its slots may be called when its file is gone.
    void contextMenuOfAFileThatIsGoneMarksNobody_data() { meanwhileColumns(); }
    void contextMenuOfAFileThatIsGoneMarksNobody()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        const QPointer<QMenu> menu = tester.openMenu(0);
        QVERIFY(menu);
        (tester.*meanwhile.run)();
        QVERIFY(QMetaObject::invokeMethod(tester.window.get(), "setKvad2"));
        if (menu) {
            menu->close();
        }
        if (tester.isFileOpen()) {
            QCOMPARE(tester.idealKvadrants().constFirst(), meanwhile.losesFile ? -1 : 2);
        }
    }

    // "Exit" ends every event loop: the dialog closes unanswered, and the command ends.
    void exitEndsEveryDialog_data()
    {
        QTest::addColumn<QString>("action");
        for (const char *action :
             {"Open File", "Save file", "Save data analysis", "Export graph", "Settings"}) {
            QTest::newRow(action) << QString(action);
        }
    }
    void exitEndsEveryDialog()
    {
        QFETCH(const QString, action);
        Tester tester;
        bool came = false;
        tester.answers.expect<QDialog>([&](QDialog &) {
            came = true;
            tester.trigger("Exit");
        });
        QTimer::singleShot(0, tester.window.get(), [&] { tester.trigger(action); });
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(came);
        QCOMPARE(tester.patientIds(), QStringList({"a", "b"}));
    }
};

QTEST_MAIN(TestInterruptions)
#include "tst_interruptions.moc"
