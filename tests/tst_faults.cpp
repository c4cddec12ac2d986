// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/stat.h>
#include <unistd.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include "settings/cconfig.h"
#include "settingsdialog.h"
#include "support/mainwindowtester.h"
#include "support/ordinaryuser.h"
#include "support/writelimit.h"

namespace
{

void expectOffset(MainWindowTester &tester, int offset)
{
    tester.answers.expect<SettingsDialog>([offset](SettingsDialog &dialog) {
        dialog.findChild<QSpinBox *>()->setValue(offset);
        dialog.findChild<QPushButton *>("okButton")->click();
    });
}

/// The window starts with the message about the settings file, and works with the defaults.
void startsWithDefaults(MainWindowTester &tester)
{
    tester.answers.expectMessage();
    tester.start();
    QCOMPARE(tester.answers.messages().size(), 1);
    QVERIFY(tester.answers.messages().constFirst().startsWith("Wrong Config|"));
    const QStringList labels = tester.labelTexts();
    for (const char *value : {"Median difference", "Standard deviation", "Median", "3"}) {
        QCOMPARE(labels.count(value), 1);
    }
    expectOffset(tester, 7);
    tester.trigger("Settings");
    QCOMPARE(tester.labelTexts().count("7"), 1);
}

void saveOnePatient(const MainWindowTester &tester, const char *name, const char *id)
{
    TestWorkbooks::save(tester.path(name), {{id, 50.0, 60.0, 55.0, 70.0}});
}

void startWithOnePatient(MainWindowTester &tester)
{
    saveOnePatient(tester, "first.xlsx", "first");
    tester.start();
    tester.open("first.xlsx");
}

/// Answers the next file dialog with \p name and calls \p then before the command continues.
void expectFileAnd(MainWindowTester &tester, const QString &name, const std::function<void()> &then)
{
    tester.answers.expect<QFileDialog>([path = tester.path(name), then](QFileDialog &dialog) {
        dialog.findChild<QLineEdit *>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(&dialog, "accept");
        then();
    });
}

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsFileIsADirectory()
    {
        MainWindowTester tester{QByteArray()};
        QVERIFY(QDir(tester.folder.path()).mkdir("config.ini"));
        startsWithDefaults(tester);
        QVERIFY(QFileInfo(tester.path("config.ini")).isDir());
    }

    void settingsFileIsAPipe()
    {
        MainWindowTester tester{QByteArray()};
        QCOMPARE(mkfifo(qPrintable(tester.path("config.ini")), 0600), 0);
        startsWithDefaults(tester);
        QVERIFY(QFile::remove(tester.path("config.ini")));
    }

    void settingsFileCannotBeRead()
    {
        MainWindowTester tester("[Variable]\nSkip = 5\n");
        const QString file = tester.path("config.ini");
        QVERIFY(QFile::setPermissions(file, QFile::Permissions()));
        {
            const OrdinaryUser user;
            if (user.failed) {
                QSKIP("root cannot become an ordinary user here");
            }
            startsWithDefaults(tester);
        }
        QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
        QCOMPARE(tester.readFile("config.ini"), QByteArray("[Variable]\nSkip = 5\n"));
    }

    void readOnlyLocationBringsTheMessageAtEveryStart()
    {
        MainWindowTester tester{QByteArray()};
        QVERIFY(QFile::setPermissions(tester.folder.path(),
                                      QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                          | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("cannot become an ordinary user here");
        }
        for (int start = 1; start <= 2; ++start) {
            tester.answers.expectMessage();
            tester.start();
            QCOMPARE(tester.answers.messages().size(), start);
            QVERIFY(tester.answers.messages().constLast().startsWith("Wrong Config|"));
            QVERIFY(tester.labelTexts().contains("Median difference"));
            QVERIFY(!QFile::exists(tester.path("config.ini")));
            tester.window.reset();
            CConfig::resetInstance();
        }
    }

    void settingsFileIsALinkToADevice_data()
    {
        QTest::addColumn<QString>("device");
        for (const char *device : {"/dev/zero", "/dev/null", "/dev/full"}) {
            QTest::newRow(device) << device;
        }
    }

    void settingsFileIsALinkToADevice()
    {
        QFETCH(QString, device);
        MainWindowTester tester{QByteArray()};
        QVERIFY(QFile::link(device, tester.path("config.ini")));
        QCOMPARE(CConfig::instance().status(), int(CConfig::LoadFailed));
        CConfig::resetInstance();
        startsWithDefaults(tester);
        QCOMPARE(QFile::symLinkTarget(tester.path("config.ini")), device);
    }

    void settingsFileOnAFullDisk()
    {
        MainWindowTester tester{QByteArray()};
        const WriteLimit fullDisk(0);
        startsWithDefaults(tester);
        QCOMPARE(QFileInfo(tester.path("config.ini")).size(), qint64(0));
    }

    void workingDirectoryIsGone()
    {
        MainWindowTester tester;
        const QTemporaryDir elsewhere;
        const QString workbook = elsewhere.filePath("one.xlsx");
        TestWorkbooks::save(workbook, {{"a", 50.0, 60.0, 55.0, 70.0}});
        tester.start();
        QVERIFY(tester.folder.remove());

        expectOffset(tester, 0);
        tester.trigger("Settings");
        QCOMPARE(tester.labelTexts().count("0"), 1);
        tester.answers.expectFile(workbook);
        tester.trigger("Open File");
        QCOMPARE(tester.patientIds().size(), 1);
        tester.answers.expectFile(elsewhere.filePath("out.xlsx"));
        tester.trigger("Save file");
        QVERIFY(QFile::exists(elsewhere.filePath("out.xlsx")));
    }

    void workbookIsDeletedBeforeItIsRead()
    {
        MainWindowTester tester;
        saveOnePatient(tester, "second.xlsx", "second");
        startWithOnePatient(tester);
        expectFileAnd(tester, "second.xlsx",
                      [&tester] { QFile::remove(tester.path("second.xlsx")); });
        tester.answers.expectMessage();
        tester.trigger("Open File");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Open file|This file cannot be read. Nothing was opened.\n\n"
                             "second.xlsx"));
        QCOMPARE(tester.patientIds(), QStringList("first"));
    }

    void workbookIsReplacedBeforeItIsRead()
    {
        MainWindowTester tester;
        saveOnePatient(tester, "second.xlsx", "second");
        saveOnePatient(tester, "third.xlsx", "third");
        startWithOnePatient(tester);
        expectFileAnd(tester, "second.xlsx",
                      [&tester] { tester.writeFile("second.xlsx", "not a workbook"); });
        tester.answers.expectMessage();
        tester.trigger("Open File");
        QCOMPARE(tester.patientIds(), QStringList("first"));

        expectFileAnd(tester, "second.xlsx", [&tester] {
            QFile::remove(tester.path("second.xlsx"));
            QFile::rename(tester.path("third.xlsx"), tester.path("second.xlsx"));
        });
        tester.trigger("Open File");
        QCOMPARE(tester.patientIds(), QStringList("third"));
    }

    void pipeOrDeviceAsWorkbook_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("pipe") << QString();
        QTest::newRow("endless device") << "/dev/zero";
        QTest::newRow("empty device") << "/dev/null";
    }

    void pipeOrDeviceAsWorkbook()
    {
        QFETCH(QString, target);
        MainWindowTester tester;
        const QString chosen = tester.path("chosen.xlsx");
        if (target.isEmpty()) {
            QCOMPARE(mkfifo(qPrintable(chosen), 0600), 0);
        } else {
            QVERIFY(QFile::link(target, chosen));
        }
        startWithOnePatient(tester);
        tester.openRefused("chosen.xlsx");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Open file|This file cannot be read. Nothing was opened.\n\n"
                             "chosen.xlsx"));
        QCOMPARE(tester.patientIds(), QStringList("first"));
    }

    void saveOnAFullDiskKeepsTheOldFile()
    {
        MainWindowTester tester;
        startWithOnePatient(tester);
        const QByteArray old = tester.readFile("first.xlsx");
        const QStringList files = QDir(tester.folder.path()).entryList(QDir::Files | QDir::Hidden);
        for (const char *command : {"Save file", "Save data analysis"}) {
            const WriteLimit fullDisk(0);
            tester.answers.expectFile(tester.path("first.xlsx"));
            // The dialog asks whether to replace the file.
            tester.answers.expect<QMessageBox>(
                [](QMessageBox &box) { box.button(QMessageBox::Yes)->click(); });
            tester.trigger(command);
        }
        QCOMPARE(tester.readFile("first.xlsx"), old);
        QCOMPARE(QDir(tester.folder.path()).entryList(QDir::Files | QDir::Hidden), files);
        QCOMPARE(tester.patientIds().size(), 1);
    }
};

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
