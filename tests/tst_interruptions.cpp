// SPDX-License-Identifier: GPL-3.0-or-later
// Commands that run while another one waits for its dialog, as a global menu bar, an automation or
// a session manager can make them.

#include <array>

#include <QApplication>
#include <QInputDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <xlsxdocument.h>

#include "settingsdialog.h"
#include "support/mainwindowtester.h"
#include "support/testworkbooks.h"

namespace
{

/// A window with the two patients of "two.xlsx" and a graph of both.
class Tester : public MainWindowTester
{
public:
    Tester()
    {
        TestWorkbooks::save(path("two.xlsx"),
                            {{"a", 50.0, 60.0, 55.0, 70.0}, {"b", 70.0, 68.0, 65.0, 66.0}});
        TestWorkbooks::save(path("other.xlsx"), {{"c", 40.0, 45.0}});
        TestWorkbooks::save(path("nobody.xlsx"), {});
        start();
        open("two.xlsx");
        patientTable()->selectAll();
        answers.expect<QInputDialog>([](QInputDialog &dialog) { dialog.accept(); });
        button("Show graph")->click();
    }

    QMdiArea *area() const { return window->findChild<QMdiArea *>(); }
    int graphs() const { return int(area()->subWindowList().size()); }
    QStringList patients() const
    {
        QStringList ids;
        if (const CPatientsModel *model = patientsModel()) {
            for (const PatientRecord &patient : model->patients) {
                ids << patient.id;
            }
        }
        return ids;
    }

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

/// Something that happens under a dialog, and what is gone after it.
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.graphs(), meanwhile.losesFile ? before : before + 1);
    }
    // The default name follows the sub-windows that are open when it is needed.
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
        QCOMPARE(tester.area()->subWindowList().last()->windowTitle(), "Graph 3");
    }
    void showGraphUnderItsOwnNameDialog()
    {
        Tester tester;
        tester.patientTable()->selectRow(1);
        const auto again = [&] {
            tester.answers.expect<QInputDialog>([](QInputDialog &dialog) { dialog.accept(); });
            tester.button("Show graph")->click();
        };
        tester.answers.expectInterrupted<QInputDialog>(
            again, [](QInputDialog &dialog) { dialog.accept(); });
        tester.button("Show graph")->click();
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(QFile::exists(page), !meanwhile.losesGraphs);
        QCOMPARE(tester.answers.messages(),
                 meanwhile.losesGraphs ? QStringList()
                                       : QStringList("Graphs export|Graph successfully exported"));
    }
    // The event that deletes a closed sub-window has come before the dialog is answered.
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QVERIFY(!QFile::exists(page));
    }
    void messageAfterTheExportStandsAnything_data() { meanwhileColumns(); }
    void messageAfterTheExportStandsAnything()
    {
        QFETCH(const int, index);
        Tester tester;
        tester.answers.expectFile(tester.path("page.svg"));
        tester.expectInterruptedMessage([&] { (tester.*meanwhiles.at(size_t(index)).run)(); });
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QVERIFY(QFile::exists(tester.path("page.svg")));
    }

    void openGoesOnWithTheFileThatWasChosen_data() { meanwhileColumns(); }
    void openGoesOnWithTheFileThatWasChosen()
    {
        QFETCH(const int, index);
        Tester tester;
        tester.answers.expectInterruptedFile([&] { (tester.*meanwhiles.at(size_t(index)).run)(); },
                                             tester.path("two.xlsx"));
        tester.trigger("Open File");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patients(), QStringList({"a", "b"}));
        QVERIFY(tester.action("Close file")->isEnabled());
    }
    void refusalLeavesWhatWasOpenedUnderIt()
    {
        Tester tester;
        tester.answers.expectFile(tester.path("nobody.xlsx"));
        tester.expectInterruptedMessage([&] { tester.openOther(); });
        tester.trigger("Open File");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patients(), QStringList("c"));
    }

    void settingsBringUpToDateWhatIsOpenAfterThem_data() { meanwhileColumns(); }
    void settingsBringUpToDateWhatIsOpenAfterThem()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        QStringList after;
        const auto run = [&] {
            (tester.*meanwhile.run)();
            after = tester.patients();
        };
        tester.answers.expectInterrupted<SettingsDialog>(run, [](SettingsDialog &dialog) {
            dialog.findChild<QSpinBox *>("offsetSpin")->setValue(2);
            dialog.findChild<QPushButton *>("okButton")->click();
        });
        tester.trigger("Settings");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patients(), after);
        QVERIFY(tester.labelTexts().contains("2"));
        // The steps behind the first two values of "a" are the one step from 55 to 70.
        if (after.contains("a")) {
            QCOMPARE(tester.patientsModel()->scores.first().variability.at(1), 0.0);
        }
    }

    void messagesWithoutAFileStandOpeningOne_data()
    {
        QTest::addColumn<QString>("action");
        for (const char *action :
             {"Save file", "Save data analysis", "Groups graph", "Export graph"}) {
            QTest::newRow(action) << QString(action);
        }
    }
    void messagesWithoutAFileStandOpeningOne()
    {
        QFETCH(const QString, action);
        Tester tester;
        tester.closeFile();
        tester.expectInterruptedMessage([&] { tester.openOther(); });
        tester.trigger(action);
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patients(), QStringList("c"));
        QCOMPARE(tester.graphs(), 0);
    }
    void nothingSelectedStandsClosing()
    {
        Tester tester;
        tester.expectInterruptedMessage([&] { tester.closeFile(); });
        tester.button("Show graph")->click();
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QVERIFY(!tester.action("Close file")->isEnabled());
    }

    // The menu does not wait: it may be chosen from when its file is gone.
    void contextMenuOfAFileThatIsGoneMarksNobody_data() { meanwhileColumns(); }
    void contextMenuOfAFileThatIsGoneMarksNobody()
    {
        QFETCH(const int, index);
        const Meanwhile &meanwhile = meanwhiles.at(size_t(index));
        Tester tester;
        const QModelIndex first = tester.patientTable()->model()->index(0, 0);
        Q_EMIT tester.patientTable()->customContextMenuRequested(
            tester.patientTable()->visualRect(first).center());
        const QPointer<QWidget> menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        (tester.*meanwhile.run)();
        QVERIFY(QMetaObject::invokeMethod(tester.window.get(), "setKvad2"));
        if (menu) {
            menu->close();
        }
        QCOMPARE(tester.answers.unexpected(), QStringList());
        if (!tester.patients().isEmpty()) {
            QCOMPARE(tester.patientsModel()->patients.first().idealKvadrant,
                     meanwhile.losesFile ? PatientRecord::noIdealKvadrant : 2);
        }
    }

    // "Exit" ends every loop: the dialog is gone without an answer, and the command with it.
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patients(), QStringList({"a", "b"}));
    }
};

QTEST_MAIN(TestInterruptions)
#include "tst_interruptions.moc"
