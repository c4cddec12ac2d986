// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include "support/workingfolder.h"

namespace
{

void writeFile(const QString &path, const QByteArray &content, bool executable = false)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QFile::WriteOnly)
        || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
    if (executable) {
        file.setPermissions(file.permissions() | QFile::ExeOwner);
    }
}

/// An installation whose program only tells where and how it was started, and a user with a home.
class Installation
{
public:
    Installation()
    {
        copyLauncher("bin/glymark");
        writeFile(path("libexec/glymark/glymark"),
                  "#!/bin/sh\npwd\nfor argument; do printf '%s\\n' \"$argument\"; done\n", true);
        writeFile(catalogue(), "Czech texts");
        environment.insert("PATH", path("tools") + ":/usr/bin:/bin");
        environment.insert("HOME", path("my home"));
    }

    QString path(const QString &name) const
    {
        return QDir(m_folder.path()).canonicalPath() + "/a prefix/" + name;
    }
    QString catalogue() const { return path("share/glymark/translations/czech_cs.qm"); }
    QString userFolder() const { return path("my home/Glymark"); }
    QString oldFolder() const { return path("my home/.local/share/glymark"); }
    QString link() const { return userFolder() + "/czech_cs.qm"; }
    void copyLauncher(const QString &name) const
    {
        QFile launcher(LAUNCHER);
        if (!launcher.open(QFile::ReadOnly)) {
            qFatal("there is no launcher");
        }
        writeFile(path(name), launcher.readAll(), true);
    }

    /// Has the desktop say that documents lie in \p folder.
    void setDocuments(const QString &folder) const
    {
        writeFile(path("tools/xdg-user-dir"),
                  "#!/bin/sh\n[ \"$1\" = DOCUMENTS ] && echo '" + folder.toUtf8() + "'\n", true);
    }

    /// Lines that the program printed; the launcher's exit code and errors stay here.
    QStringList start(const char *locale = "C.UTF-8", const QStringList &arguments = QStringList())
    {
        environment.insert("LANG", locale);
        QProcess launcher;
        launcher.setProcessEnvironment(environment);
        launcher.setWorkingDirectory(m_folder.path());
        launcher.start(path(program), arguments);
        if (!launcher.waitForFinished()) {
            qFatal("the launcher does not end");
        }
        exitCode = launcher.exitCode();
        errors = QString::fromLocal8Bit(launcher.readAllStandardError());
        return QString::fromLocal8Bit(launcher.readAllStandardOutput())
            .split('\n', Qt::SkipEmptyParts);
    }

    QProcessEnvironment environment;
    QString program = "bin/glymark";
    int exitCode = -1;
    QString errors;

private:
    WorkingFolder m_folder;
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// The script that starts the installed program.
class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstStartMakesTheFolder()
    {
        Installation installation;
        QCOMPARE(installation.start(), QStringList(installation.userFolder()));
        QCOMPARE(installation.errors, QString());
        QCOMPARE(installation.exitCode, 0);
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup
            | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        QCOMPARE(QFileInfo(installation.userFolder()).permissions() & others, QFile::Permissions());
    }

    void laterStartKeepsWhatIsInTheFolder()
    {
        Installation installation;
        writeFile(installation.userFolder() + "/config.ini", "[Variable]\nSkip = 7\n");
        QCOMPARE(installation.start(), QStringList(installation.userFolder()));
        QCOMPARE(contentOf(installation.userFolder() + "/config.ini"),
                 QByteArray("[Variable]\nSkip = 7\n"));
    }

    void folderLiesAmongTheDocuments()
    {
        Installation installation;
        const QString documents = installation.path("my home/texts of mine");
        installation.setDocuments(documents);
        QCOMPARE(installation.start("cs_CZ.UTF-8"), QStringList(documents + "/Glymark"));
        QCOMPARE(QFile::symLinkTarget(documents + "/Glymark/czech_cs.qm"),
                 installation.catalogue());
        QVERIFY(!QFile::exists(installation.userFolder()));
    }

    void documentsThatAreNoFullPathAreIgnored()
    {
        Installation installation;
        installation.setDocuments("Documents");
        QCOMPARE(installation.start(), QStringList(installation.userFolder()));
    }

    void oldFolderWithSettingsStaysInUse()
    {
        Installation installation;
        writeFile(installation.oldFolder() + "/config.ini", "[Variable]\nSkip = 7\n");
        QCOMPARE(installation.start(), QStringList(installation.oldFolder()));
        QVERIFY(!QFile::exists(installation.userFolder()));
    }

    void oldFolderWithoutSettingsIsLeftAlone()
    {
        Installation installation;
        writeFile(installation.oldFolder() + "/results.xlsx", "results");
        QCOMPARE(installation.start(), QStringList(installation.userFolder()));
        QCOMPARE(contentOf(installation.oldFolder() + "/results.xlsx"), QByteArray("results"));
    }

    void dataHomeSaysWhereTheOldFolderIs()
    {
        Installation installation;
        const QString data = installation.path("data of mine");
        installation.environment.insert("XDG_DATA_HOME", data);
        writeFile(data + "/glymark/config.ini", "");
        writeFile(installation.oldFolder() + "/config.ini", "");
        QCOMPARE(installation.start(), QStringList(data + "/glymark"));
    }

    void relativeDataHomeIsIgnored()
    {
        Installation installation;
        installation.environment.insert("XDG_DATA_HOME", "data");
        writeFile(installation.oldFolder() + "/config.ini", "");
        QCOMPARE(installation.start(), QStringList(installation.oldFolder()));
    }

    void argumentsArePassedOn()
    {
        Installation installation;
        QCOMPARE(installation.start("C", {"-platform", "two words"}),
                 QStringList({installation.userFolder(), "-platform", "two words"}));
    }

    void startsThroughALink()
    {
        Installation installation;
        const QString link = installation.path("elsewhere/start");
        QVERIFY(QDir().mkpath(QFileInfo(link).path()));
        QVERIFY(QFile::link(installation.path("bin/glymark"), link));
        installation.program = "elsewhere/start";
        QCOMPARE(installation.start("cs"), QStringList(installation.userFolder()));
        QCOMPARE(QFile::symLinkTarget(installation.link()), installation.catalogue());
    }

    void localeDecidesOnTheLink_data()
    {
        QTest::addColumn<QString>("all");
        QTest::addColumn<QString>("messages");
        QTest::addColumn<QByteArray>("language");
        QTest::addColumn<bool>("czech");
        const QString unset;
        QTest::newRow("LANG") << unset << unset << QByteArray("cs_CZ.UTF-8") << true;
        QTest::newRow("language alone") << unset << unset << QByteArray("cs") << true;
        QTest::newRow("no country") << unset << unset << QByteArray("cs.UTF-8") << true;
        QTest::newRow("English") << unset << unset << QByteArray("en_GB.UTF-8") << false;
        QTest::newRow("Kashubian") << unset << unset << QByteArray("csb_PL.UTF-8") << false;
        QTest::newRow("nothing set") << unset << unset << QByteArray() << false;
        QTest::newRow("messages") << unset << "cs_CZ" << QByteArray("de_DE") << true;
        QTest::newRow("other messages") << unset << "de_DE" << QByteArray("cs_CZ") << false;
        QTest::newRow("all") << "cs_CZ"
                             << "de_DE" << QByteArray("de_DE") << true;
        QTest::newRow("other for all") << "C"
                                       << "cs_CZ" << QByteArray("cs_CZ") << false;
        QTest::newRow("empty") << ""
                               << "" << QByteArray("cs_CZ") << true;
    }

    void localeDecidesOnTheLink()
    {
        QFETCH(const QString, all);
        QFETCH(const QString, messages);
        QFETCH(const QByteArray, language);
        QFETCH(const bool, czech);
        Installation installation;
        if (!all.isNull()) {
            installation.environment.insert("LC_ALL", all);
        }
        if (!messages.isNull()) {
            installation.environment.insert("LC_MESSAGES", messages);
        }
        QCOMPARE(installation.start(language.constData()), QStringList(installation.userFolder()));
        QCOMPARE(QFileInfo(installation.link()).isSymLink(), czech);
        QCOMPARE(contentOf(installation.link()), QByteArray(czech ? "Czech texts" : ""));
    }

    void ownLinkGoesUnderAnotherLocale()
    {
        Installation installation;
        installation.start("cs_CZ.UTF-8");
        QVERIFY(QFileInfo(installation.link()).isSymLink());
        installation.start("cs_CZ.UTF-8");
        QVERIFY(QFileInfo(installation.link()).isSymLink());
        installation.start("C.UTF-8");
        QVERIFY(!QFileInfo(installation.link()).isSymLink());
        QCOMPARE(contentOf(installation.catalogue()), QByteArray("Czech texts"));
    }

    void linkOfAGoneInstallationIsReplaced()
    {
        Installation installation;
        QVERIFY(QDir().mkpath(installation.userFolder()));
        QVERIFY(QFile::link(installation.path("gone/glymark/translations/czech_cs.qm"),
                            installation.link()));
        installation.start("cs_CZ.UTF-8");
        QCOMPARE(QFile::symLinkTarget(installation.link()), installation.catalogue());
    }

    void filesOfTheUserStay_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<bool>("isLink");
        QTest::newRow("file, Czech") << QByteArray("cs_CZ.UTF-8") << false;
        QTest::newRow("file, English") << QByteArray("C.UTF-8") << false;
        QTest::newRow("link, Czech") << QByteArray("cs_CZ.UTF-8") << true;
        QTest::newRow("link, English") << QByteArray("C.UTF-8") << true;
    }

    void filesOfTheUserStay()
    {
        QFETCH(const QByteArray, locale);
        QFETCH(const bool, isLink);
        Installation installation;
        const QString own = isLink ? installation.path("my home/texts.qm") : installation.link();
        writeFile(own, "texts of mine");
        if (isLink) {
            QVERIFY(QDir().mkpath(installation.userFolder()));
            QVERIFY(QFile::link(own, installation.link()));
        }
        QCOMPARE(installation.start(locale.constData()), QStringList(installation.userFolder()));
        QCOMPARE(QFileInfo(installation.link()).isSymLink(), isLink);
        QCOMPARE(contentOf(installation.link()), QByteArray("texts of mine"));
    }

    void samplesCanBeOpenedFromTheFolder()
    {
        Installation installation;
        const QString sample = installation.path("share/glymark/samples/sample.xlsx");
        writeFile(sample, "values");
        installation.start();
        installation.start();
        QCOMPARE(contentOf(installation.userFolder() + "/samples/sample.xlsx"),
                 QByteArray("values"));
    }

    void samplesOfAGoneInstallationAreReplaced()
    {
        Installation installation;
        const QString samples = installation.path("share/glymark/samples");
        const QString link = installation.userFolder() + "/samples";
        QVERIFY(QDir().mkpath(samples));
        QVERIFY(QDir().mkpath(installation.userFolder()));
        QVERIFY(QFile::link(installation.path("gone/glymark/samples"), link));
        installation.start();
        QCOMPARE(QFile::symLinkTarget(link), samples);
    }

    void samplesOfTheUserStay()
    {
        Installation installation;
        QVERIFY(QDir().mkpath(installation.path("share/glymark/samples")));
        writeFile(installation.userFolder() + "/samples", "samples of mine");
        QCOMPARE(installation.start(), QStringList(installation.userFolder()));
        QCOMPARE(contentOf(installation.userFolder() + "/samples"), QByteArray("samples of mine"));
    }

    void withoutTheCatalogueTheProgramStarts()
    {
        Installation installation;
        QVERIFY(QFile::remove(installation.catalogue()));
        QCOMPARE(installation.start("cs_CZ.UTF-8"), QStringList(installation.userFolder()));
        QCOMPARE(installation.errors, QString());
        QVERIFY(!QFileInfo(installation.link()).isSymLink());
    }

    void folderThatCannotBeMadeIsReported()
    {
        Installation installation;
        installation.setDocuments(installation.path("my home/documents"));
        writeFile(installation.path("my home/documents"), "no folder");
        QCOMPARE(installation.start(), QStringList());
        QCOMPARE(installation.exitCode, 1);
        QVERIFY2(installation.errors.contains("glymark: cannot make the folder"),
                 qPrintable(installation.errors));
    }

    void aProgramThatIsGoneIsReported()
    {
        Installation installation;
        QVERIFY(QFile::remove(installation.path("libexec/glymark/glymark")));
        QCOMPARE(installation.start(), QStringList());
        QCOMPARE(installation.exitCode, 1);
        QVERIFY2(installation.errors.contains("glymark: the program is not at"),
                 qPrintable(installation.errors));
    }

    void failuresAreShownInAWindowOfTheDesktop_data()
    {
        QTest::addColumn<QString>("means");
        QTest::addColumn<QString>("display");
        QTest::addColumn<bool>("shown");
        for (const char *means : {"zenity", "kdialog", "xmessage", "notify-send"}) {
            QTest::newRow(means) << QString(means) << "DISPLAY" << true;
        }
        QTest::newRow("Wayland") << "zenity"
                                 << "WAYLAND_DISPLAY" << true;
        QTest::newRow("no display") << "zenity" << QString() << false;
        QTest::newRow("no means") << "unknown"
                                  << "DISPLAY" << false;
    }

    void failuresAreShownInAWindowOfTheDesktop()
    {
        QFETCH(const QString, means);
        QFETCH(const QString, display);
        QFETCH(const bool, shown);
        Installation installation;
        QVERIFY(QFile::remove(installation.path("libexec/glymark/glymark")));
        const QString tools = installation.path("tools");
        writeFile(tools + '/' + means, "#!/bin/sh\nprintf '%s\\n' \"$@\" >\"$HOME/shown\"\n", true);
        // Nothing of this system's desktop is found.
        for (const char *tool : {"sh", "dirname", "readlink", "mkdir"}) {
            QVERIFY(QFile::link(QStandardPaths::findExecutable(tool), tools + '/' + tool));
        }
        installation.environment.insert("PATH", tools);
        if (!display.isNull()) {
            installation.environment.insert(display, ":7");
        }
        installation.start();
        QCOMPARE(installation.exitCode, 1);
        QCOMPARE(contentOf(installation.path("my home/shown"))
                     .contains("Glymark cannot start: the program is not at"),
                 shown);
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"
