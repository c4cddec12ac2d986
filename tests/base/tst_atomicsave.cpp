// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/atomicsave.h"

#include <functional>
#include <memory>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

#include "support/childprocess.h"
#include "support/savedfiles.h"
#include "support/testgroups.h"
#include "support/workingfolder.h"
#include "support/writelimit.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"

namespace
{

using SavedFiles::contentOf;
using SavedFiles::longContent;
using SavedFiles::namesIn;

const QByteArray earlier = "what stood here before";

/// One of the ways to save, so that each failing target is tried with all of them.
using Writer = std::function<void(const QString &)>;

void writeData(const QString &fileName)
{
    const TestGroup group = TestGroup::ofSize(4);
    if (!writeDataWorkbook(fileName, group.patients, group.scores)) {
        qFatal("the result is always true");
    }
}

void writeAnalysis(const QString &fileName)
{
    const TestGroup group = TestGroup::ofSize(4);
    writeAnalysisWorkbook(fileName, group.patients, group.scores, group.averageCenter,
                          group.medianCenter);
}

void writeContent(const QString &fileName)
{
    if (saveAtomically(fileName, longContent())) {
        qFatal("%s was written", qPrintable(fileName));
    }
}

// A separate process that saves over and over.
pid_t startSaving(const QByteArray &content)
{
    constexpr int times = 25;
    const pid_t program = fork();
    if (program == 0) {
        bool saved = true;
        for (int i = 0; i < times; ++i) {
            saved = saveAtomically("file", content) && saved;
        }
        _exit(saved ? 0 : 1);
    }
    return program;
}

// A file in a folder that takes no other file.
void makeLockedFile(const QByteArray &content, mode_t mode)
{
    if (!QDir().mkdir("locked")) {
        qFatal("cannot make the folder");
    }
    SavedFiles::write("locked/file", content);
    if (chmod("locked/file", mode) != 0 || chmod("locked", 0555) != 0) {
        qFatal("cannot lock the folder");
    }
}

} // namespace

Q_DECLARE_METATYPE(Writer)

class TestAtomicSave : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<WorkingFolder>();
        // An ordinary user must be able to enter it.
        QCOMPARE(chmod(qPrintable(m_folder->path()), 0755), 0);
        useSkip("3");
        QVERIFY(QDir().mkdir("saves"));
        QVERIFY(QDir::setCurrent("saves"));
    }

    void cleanup() { m_folder.reset(); }

    void newFileIsWritten()
    {
        const QString name = "new";
        QVERIFY(saveAtomically(name, longContent()));
        QCOMPARE(contentOf(name), longContent());
        QCOMPARE(namesIn("."), QStringList(name));
    }

    void earlierFileIsReplaced()
    {
        const QString name = "earlier";
        SavedFiles::write(name, longContent());
        QVERIFY(saveAtomically(name, "short"));
        QCOMPARE(contentOf(name), QByteArray("short"));
        QCOMPARE(namesIn("."), QStringList(name));
    }

    void permissionsStay()
    {
        const QString name = "private";
        SavedFiles::write(name, earlier);
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
        QVERIFY(QFile::setPermissions(name, ownerOnly));
        QVERIFY(saveAtomically(name, "new"));
        const auto others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QCOMPARE(QFile::permissions(name) & others, QFile::Permissions());
    }

    void linkIsFollowed()
    {
        SavedFiles::write("target", earlier);
        QVERIFY(QFile::link("target", "near"));
        QVERIFY(QFile::link("near", "far"));
        QVERIFY(saveAtomically("far", "new"));
        QCOMPARE(contentOf("target"), QByteArray("new"));
        QVERIFY(QFileInfo("near").isSymLink());
        QVERIFY(QFileInfo("far").isSymLink());
    }

    void linkToNothingMakesItsTarget()
    {
        QVERIFY(QFile::link("target", "link"));
        QVERIFY(saveAtomically("link", "new"));
        QCOMPARE(contentOf("target"), QByteArray("new"));
        QVERIFY(QFileInfo("link").isSymLink());
    }

    void emptyNameIsNoFile()
    {
        QVERIFY(!saveAtomically(QString(), "new"));
        QCOMPARE(namesIn("."), QStringList());
    }

    // The system would end the name there.
    void nameWithAZeroIsNoFile()
    {
        QVERIFY(!saveAtomically(QString("file") + QChar(0) + "name", "new"));
        QCOMPARE(namesIn("."), QStringList());
    }

    void namesOfAnyLengthAreTaken_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("taken");
        for (const int bytes : {248, 249, 250, 254, 255, 256}) {
            // Two bytes each.
            const QString accented = QString(bytes / 2, QChar(0x159)) + QString(bytes % 2, 'x');
            QTest::addRow("%d bytes, accented", bytes) << accented << (bytes <= 255);
            QTest::addRow("%d bytes", bytes) << QString(bytes, 'x') << (bytes <= 255);
        }
    }

    void namesOfAnyLengthAreTaken()
    {
        QFETCH(QString, name);
        QFETCH(bool, taken);
        if (QFile::decodeName(QFile::encodeName(name)) != name) {
            QSKIP("this locale has no such names");
        }
        for (const char *content : {"first", "second"}) {
            QCOMPARE(saveAtomically(name, content), taken);
            QCOMPARE(namesIn("."), taken ? QStringList(name) : QStringList());
            QCOMPARE(contentOf(name), QByteArray(taken ? content : "cannot be read"));
        }
    }

    void folderWhoseNameNoTextHoldsIsSavedIn()
    {
        constexpr auto folder = "\xff\xfe ward";
        QCOMPARE(mkdir(folder, 0777), 0);
        QCOMPARE(chdir(folder), 0);
        for (const char *content : {"first", "second"}) {
            QVERIFY(saveAtomically("file", content));
            QCOMPARE(contentOf("file"), QByteArray(content));
            QCOMPARE(namesIn("."), QStringList("file"));
        }
        QCOMPARE(unlink("file"), 0);
        QCOMPARE(chdir(".."), 0);
        QCOMPARE(rmdir(folder), 0);
    }

    void twoProgramsLeaveOneContentWhole()
    {
        const QByteArray other = QByteArray("x").repeated(500000);
        SavedFiles::write("file", other);
        QVector<pid_t> programs = {startSaving(longContent()), startSaving(other)};
        while (!programs.isEmpty()) {
            const QByteArray content = contentOf("file");
            QVERIFY(content == longContent() || content == other);
            int status = 0;
            const pid_t ended = waitpid(-1, &status, WNOHANG);
            QVERIFY(ended >= 0);
            QCOMPARE(status, 0);
            programs.removeOne(ended);
        }
        QCOMPARE(namesIn("."), QStringList("file"));
    }

    void directoryIsLeftAlone_data() { writers(); }
    void directoryIsLeftAlone()
    {
        QFETCH(Writer, write);
        const QString name = "directory";
        QVERIFY(QDir().mkdir(name));
        write(name);
        QVERIFY(QFileInfo(name).isDir());
        QCOMPARE(namesIn(name), QStringList());
        QCOMPARE(namesIn("."), QStringList(name));
    }

    void pipeIsLeftAlone_data() { writers(); }
    void pipeIsLeftAlone()
    {
        QFETCH(Writer, write);
        QCOMPARE(mkfifo("pipe", 0600), 0);
        write("pipe");
        struct stat status = {};
        QCOMPARE(lstat("pipe", &status), 0);
        QVERIFY(S_ISFIFO(status.st_mode));
        QCOMPARE(namesIn("."), QStringList("pipe"));
    }

    void contentForWhatIsNoFileIsNotAskedFor()
    {
        bool asked = false;
        const auto write = [&asked](QIODevice & /*device*/) {
            asked = true;
            return true;
        };
        QVERIFY(!saveAtomically("/dev/null", write));
        QVERIFY(!saveAtomically(".", write));
        QVERIFY(!asked);
    }

    void linkToAPipeIsLeftAlone_data() { writers(); }
    void linkToAPipeIsLeftAlone()
    {
        QFETCH(Writer, write);
        QCOMPARE(mkfifo("pipe", 0600), 0);
        QVERIFY(QFile::link("pipe", "link"));
        write("link");
        struct stat status = {};
        QCOMPARE(lstat("pipe", &status), 0);
        QVERIFY(S_ISFIFO(status.st_mode));
        QVERIFY(QFileInfo("link").isSymLink());
    }

    void linkToADeviceIsLeftAlone_data() { writers(); }
    void linkToADeviceIsLeftAlone()
    {
        QFETCH(Writer, write);
        for (const QString &device : {QString("/dev/full"), QString("/dev/null")}) {
            QVERIFY(QFile::link(device, "link"));
            write("link");
            QCOMPARE(QFile::symLinkTarget("link"), device);
            struct stat status = {};
            QCOMPARE(stat(qPrintable(device), &status), 0);
            QVERIFY(S_ISCHR(status.st_mode));
            QVERIFY(QFile::remove("link"));
        }
    }

    void linkLoopIsLeftAlone_data() { writers(); }
    void linkLoopIsLeftAlone()
    {
        QFETCH(Writer, write);
        QCOMPARE(symlink("self", "self"), 0);
        QCOMPARE(symlink("there", "back"), 0);
        QCOMPARE(symlink("back", "there"), 0);
        const QStringList names = {"back", "self", "there"};
        for (const QString &name : names) {
            write(name);
        }
        QCOMPARE(namesIn("."), names);
        for (const QString &name : names) {
            QVERIFY(QFileInfo(name).isSymLink());
        }
    }

    void missingFolderIsNotMade_data() { writers(); }
    void missingFolderIsNotMade()
    {
        QFETCH(Writer, write);
        write("nowhere/file");
        QCOMPARE(namesIn("."), QStringList());
    }

    void fileInAReadOnlyFolderIsOverwritten_data()
    {
        QTest::addColumn<Writer>("write");
        QTest::addColumn<QByteArray>("before");
        const Writer content = [](const QString &name) {
            if (!saveAtomically(name, longContent())) {
                qFatal("%s was not written", qPrintable(name));
            }
        };
        const QByteArray longer = longContent() + longContent();
        QTest::newRow("shorter file") << content << earlier;
        QTest::newRow("longer file") << content << longer;
        QTest::newRow("empty file") << content << QByteArray();
        QTest::newRow("data workbook") << Writer(writeData) << earlier;
        QTest::newRow("analysis workbook") << Writer(writeAnalysis) << longer;
    }

    void fileInAReadOnlyFolderIsOverwritten()
    {
        QFETCH(Writer, write);
        QFETCH(QByteArray, before);
        makeLockedFile(before, 0666);
        QVERIFY(QFile::link("locked/file", "link"));
        write("free");
        for (const char *name : {"locked/file", "link"}) {
            const int result = ChildProcess::runAsOrdinaryUser([&write, name] {
                write(name);
                return int(ChildProcess::Done);
            });
            if (result == ChildProcess::NoUser) {
                QSKIP("this machine does not let root become an ordinary user");
            }
            QCOMPARE(result, int(ChildProcess::Done));
            QCOMPARE(contentOf("locked/file"), contentOf("free"));
            QCOMPARE(namesIn("locked"), QStringList("file"));
            SavedFiles::write("locked/file", before);
        }
        QVERIFY(QFileInfo("link").isSymLink());
        QCOMPARE(chmod("locked", 0755), 0);
    }

    void readOnlyFolderTakesNothingElse_data() { writers(); }
    void readOnlyFolderTakesNothingElse()
    {
        QFETCH(Writer, write);
        makeLockedFile(earlier, 0444);
        const int result = ChildProcess::runAsOrdinaryUser([&write] {
            write("locked/file");
            write("locked/other");
            return int(ChildProcess::Done);
        });
        if (result == ChildProcess::NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(contentOf("locked/file"), earlier);
        QCOMPARE(namesIn("locked"), QStringList("file"));
        QCOMPARE(chmod("locked", 0755), 0);
    }

    // A file can be made there, but it cannot replace one of another owner.
    void fileOfOthersInASharedFolderIsOverwritten()
    {
        if (geteuid() != 0) {
            QSKIP("only root can make a file of another user");
        }
        QVERIFY(QDir().mkdir("shared"));
        SavedFiles::write("shared/file", earlier);
        QCOMPARE(chmod("shared/file", 0666), 0);
        QCOMPARE(chmod("shared", 01777), 0);
        const int result = ChildProcess::runAsOrdinaryUser([] {
            return saveAtomically("shared/file", longContent()) ? int(ChildProcess::Done) : 1;
        });
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(contentOf("shared/file"), longContent());
        QCOMPARE(namesIn("shared"), QStringList("file"));
    }

    // Nobody can write to a running program, whatever the permissions say.
    void runningProgramInAReadOnlyFolderIsRefused()
    {
        const QByteArray shell = contentOf("/bin/sh");
        makeLockedFile(shell, 0777);
        QProcess program;
        program.start(QDir().absoluteFilePath("locked/file"), QStringList());
        QVERIFY(program.waitForStarted());
        const int result = ChildProcess::runAsOrdinaryUser([] {
            return saveAtomically("locked/file", longContent()) ? 1 : int(ChildProcess::Done);
        });
        program.kill();
        program.waitForFinished();
        if (result == ChildProcess::NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(contentOf("locked/file"), shell);
        QCOMPARE(chmod("locked", 0755), 0);
    }

    void writeLimitKeepsTheEarlierFile_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::newRow("shorter file") << earlier;
        QTest::newRow("longer file") << longContent() + longContent();
    }

    void writeLimitKeepsTheEarlierFile()
    {
        QFETCH(QByteArray, before);
        SavedFiles::write("file", before);
        makeLockedFile(before, 0666);
        QVERIFY(chmod(".", 0777) == 0 && chmod("file", 0666) == 0);
        const int result = ChildProcess::runAsOrdinaryUser([] {
            const WriteLimit limit(100000);
            const bool saved = saveAtomically("locked/file", longContent())
                || saveAtomically("file", longContent()) || saveAtomically("new", longContent());
            return saved ? 1 : int(ChildProcess::Done);
        });
        if (result == ChildProcess::NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(contentOf("locked/file"), before);
        QCOMPARE(contentOf("file"), before);
        QCOMPARE(chmod("locked", 0755), 0);
        QCOMPARE(namesIn("."), QStringList({"file", "locked"}));
    }

    void fullDiskKeepsTheEarlierFile_data() { writers(); }
    // A small file system that only the child sees.
    void fullDiskKeepsTheEarlierFile()
    {
        QFETCH(Writer, write);
        QVERIFY(QDir().mkdir("disk"));
        const int result = ChildProcess::run([&write] {
            if (!ChildProcess::mountOwn("tmpfs", "disk", "size=16k")) {
                return int(ChildProcess::NoNamespace);
            }
            SavedFiles::write("disk/file", earlier);
            SavedFiles::write("disk/locked file", earlier);
            QFile filler("disk/filler");
            if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
                return 1;
            }
            while (filler.write("x") == 1) { }
            // Room for a part of the file, so that it starts well.
            filler.resize(filler.size() - 4096);
            const QStringList before = namesIn("disk");
            write("disk/file");
            write("disk/other");
            // In a folder that takes no file, what is there has to grow.
            if (chmod("disk/locked file", 0666) != 0 || chmod("disk", 0555) != 0
                || !ChildProcess::becomeOrdinaryUser()) {
                return int(ChildProcess::NoNamespace);
            }
            write("disk/locked file");
            const bool untouched = contentOf("disk/file") == earlier
                && contentOf("disk/locked file") == earlier && namesIn("disk") == before;
            return untouched ? int(ChildProcess::Done) : 2;
        });
        if (result == ChildProcess::NoNamespace) {
            QSKIP("this machine does not let the test mount a file system of its own");
        }
        QCOMPARE(result, int(ChildProcess::Done));
    }

private:
    static void writers()
    {
        QTest::addColumn<Writer>("write");
        QTest::newRow("plain content") << Writer(writeContent);
        QTest::newRow("data workbook") << Writer(writeData);
        QTest::newRow("analysis workbook") << Writer(writeAnalysis);
    }

    std::unique_ptr<WorkingFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestAtomicSave)
#include "tst_atomicsave.moc"
