// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/atomicsave.h"

#include <functional>
#include <limits>
#include <memory>

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

#include "support/testgroups.h"
#include "support/workingfolder.h"
#include "support/writelimit.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"

namespace
{

const QByteArray earlier = "what stood here before";

// Takes a limited number of bytes at a time, and fails once it has taken enough.
class ReluctantFile : public QSaveFile
{
public:
    enum Failure { None, Refusal, NothingTaken };

    using QSaveFile::QSaveFile;

    qint64 atATime = 1 << 20;
    qint64 room = std::numeric_limits<qint64>::max();
    Failure failure = None;

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        const qint64 taken = qMin(qMin(length, atATime), room);
        if (taken == 0 && failure != None) {
            return failure == Refusal ? -1 : 0;
        }
        room -= taken;
        return QSaveFile::writeData(data, taken);
    }
};

void writeFile(const QString &name, const QByteArray &content)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                  | QDir::NoDotAndDotDot);
}

// Some hundred thousand bytes that say where they belong.
QByteArray longContent()
{
    QByteArray content;
    for (int i = 0; i < 40000; ++i) {
        content += QByteArray::number(i) + ' ';
    }
    return content;
}

bool writeLongContent(QIODevice &device)
{
    const QByteArray content = longContent();
    return writeAll(device, content.constData(), content.size());
}

// Refuses one piece, once it has taken enough.
class FailingOnce : public QFile
{
public:
    using QFile::QFile;

    qint64 room = 0;

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        constexpr qint64 atATime = 1000;
        if (!m_failed && room < atATime) {
            m_failed = true;
            return -1;
        }
        const qint64 taken = QFile::writeData(data, qMin(length, atATime));
        room -= taken;
        return taken;
    }

private:
    bool m_failed = false;
};

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

// The exit code of what runs in a process of its own, or -1. It must not use the test's macros.
int inChild(const std::function<int()> &run)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(run());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

enum ChildResult { Done = 0, NoUser = 90, NoNamespace = 91 };

// Where the tests run as root, becomes somebody whom the permissions of files hold for.
bool becomeOrdinaryUser()
{
    constexpr uid_t nobody = 65534;
    return geteuid() != 0
        || (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
}

// Runs as an ordinary user in a process of its own.
int asOrdinaryUser(const std::function<int()> &run)
{
    return inChild([&run] { return becomeOrdinaryUser() ? run() : int(NoUser); });
}

// A file in a folder that takes no other one.
void makeLockedFile(const QByteArray &content, mode_t mode)
{
    if (!QDir().mkdir("locked")) {
        qFatal("cannot make the folder");
    }
    writeFile("locked/file", content);
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
        // An ordinary user has to get here.
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
        writeFile(name, longContent());
        QVERIFY(saveAtomically(name, "short"));
        QCOMPARE(contentOf(name), QByteArray("short"));
        QCOMPARE(namesIn("."), QStringList(name));
    }

    void permissionsStay()
    {
        const QString name = "private";
        writeFile(name, earlier);
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
        QVERIFY(QFile::setPermissions(name, ownerOnly));
        QVERIFY(saveAtomically(name, "new"));
        const auto others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QCOMPARE(QFile::permissions(name) & others, QFile::Permissions());
    }

    void linkIsFollowed()
    {
        writeFile("target", earlier);
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

    void shortCountsAreWrittenOn()
    {
        for (const qint64 atATime : {1, 1000}) {
            const QString name = "slow";
            writeFile(name, earlier);
            ReluctantFile file(name);
            file.atATime = atATime;
            QVERIFY(commitContent(file, writeLongContent));
            QCOMPARE(contentOf(name), longContent());
        }
    }

    void failingDeviceCommitsNothing_data()
    {
        QTest::addColumn<qint64>("room");
        QTest::addColumn<qint64>("atATime");
        QTest::addColumn<int>("failure");
        const qint64 all = longContent().size();
        for (const qint64 room : {qint64(0), qint64(1), qint64(1000), qint64(20000), all - 1}) {
            for (const qint64 atATime : {qint64(777), all}) {
                QTest::addRow("error after %lld, %lld at a time", room, atATime)
                    << room << atATime << int(ReluctantFile::Refusal);
                QTest::addRow("nothing taken after %lld, %lld at a time", room, atATime)
                    << room << atATime << int(ReluctantFile::NothingTaken);
            }
        }
    }

    void failingDeviceCommitsNothing()
    {
        QFETCH(qint64, room);
        QFETCH(qint64, atATime);
        QFETCH(int, failure);
        const QString name = "file";
        const QString other = "other";
        writeFile(name, earlier);
        for (const QString &target : {name, other}) {
            ReluctantFile file(target);
            file.room = room;
            file.atATime = atATime;
            file.failure = static_cast<ReluctantFile::Failure>(failure);
            QVERIFY(!commitContent(file, writeLongContent));
        }
        QCOMPARE(contentOf(name), earlier);
        QCOMPARE(namesIn("."), QStringList(name));
    }

    void emptyNameIsNoFile()
    {
        QVERIFY(!saveAtomically(QString(), "new"));
        QCOMPARE(namesIn("."), QStringList());
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
            const int result = asOrdinaryUser([&write, name] {
                write(name);
                return int(Done);
            });
            if (result == NoUser) {
                QSKIP("this machine does not let root become an ordinary user");
            }
            QCOMPARE(result, int(Done));
            QCOMPARE(contentOf("locked/file"), contentOf("free"));
            QCOMPARE(namesIn("locked"), QStringList("file"));
            writeFile("locked/file", before);
        }
        QVERIFY(QFileInfo("link").isSymLink());
        QCOMPARE(chmod("locked", 0755), 0);
    }

    void readOnlyFolderTakesNothingElse_data() { writers(); }
    void readOnlyFolderTakesNothingElse()
    {
        QFETCH(Writer, write);
        makeLockedFile(earlier, 0444);
        const int result = asOrdinaryUser([&write] {
            write("locked/file");
            write("locked/other");
            return int(Done);
        });
        if (result == NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(Done));
        QCOMPARE(contentOf("locked/file"), earlier);
        QCOMPARE(namesIn("locked"), QStringList("file"));
        QCOMPARE(chmod("locked", 0755), 0);
    }

    // There, a file can be made, but it cannot take the place of one that belongs to others.
    void fileOfOthersInASharedFolderIsOverwritten()
    {
        if (geteuid() != 0) {
            QSKIP("only root can make a file of another user");
        }
        QVERIFY(QDir().mkdir("shared"));
        writeFile("shared/file", earlier);
        QCOMPARE(chmod("shared/file", 0666), 0);
        QCOMPARE(chmod("shared", 01777), 0);
        const int result = asOrdinaryUser(
            [] { return saveAtomically("shared/file", longContent()) ? int(Done) : 1; });
        QCOMPARE(result, int(Done));
        QCOMPARE(contentOf("shared/file"), longContent());
        QCOMPARE(namesIn("shared"), QStringList("file"));
    }

    // Nobody can write to a program that runs, not even who may.
    void runningProgramInAReadOnlyFolderIsRefused()
    {
        const QByteArray shell = contentOf("/bin/sh");
        makeLockedFile(shell, 0777);
        QProcess program;
        program.start(QDir().absoluteFilePath("locked/file"), QStringList());
        QVERIFY(program.waitForStarted());
        const int result = asOrdinaryUser(
            [] { return saveAtomically("locked/file", longContent()) ? 1 : int(Done); });
        program.kill();
        program.waitForFinished();
        if (result == NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(Done));
        QCOMPARE(contentOf("locked/file"), shell);
        QCOMPARE(chmod("locked", 0755), 0);
    }

    void failureInPlacePutsTheOldContentBack_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("room");
        const QByteArray longer = longContent() + longContent();
        for (const int room : {0, 1000, 100000, 200000}) {
            QTest::addRow("shorter file, %d bytes", room) << longContent().mid(150000) << room;
            QTest::addRow("longer file, %d bytes", room) << longer << room;
        }
    }

    void failureInPlacePutsTheOldContentBack()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, room);
        writeFile("file", before);
        FailingOnce file("file");
        file.room = room;
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        QVERIFY(!replaceContent(file, longContent()));
        QCOMPARE(contentOf("file"), before);
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
        writeFile("file", before);
        makeLockedFile(before, 0666);
        QVERIFY(chmod(".", 0777) == 0 && chmod("file", 0666) == 0);
        const int result = asOrdinaryUser([] {
            const WriteLimit limit(100000);
            const bool saved = saveAtomically("locked/file", longContent())
                || saveAtomically("file", longContent()) || saveAtomically("new", longContent());
            return saved ? 1 : int(Done);
        });
        if (result == NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(Done));
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
        const int result = inChild([&write] {
            if (unshare(CLONE_NEWNS) != 0
                || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
                || mount("tmpfs", "disk", "tmpfs", 0, "size=16k") != 0) {
                return int(NoNamespace);
            }
            writeFile("disk/file", earlier);
            writeFile("disk/locked file", earlier);
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
                || !becomeOrdinaryUser()) {
                return int(NoNamespace);
            }
            write("disk/locked file");
            const bool untouched = contentOf("disk/file") == earlier
                && contentOf("disk/locked file") == earlier && namesIn("disk") == before;
            return untouched ? int(Done) : 2;
        });
        if (result == NoNamespace) {
            QSKIP("this machine does not let the test mount a file system of its own");
        }
        QCOMPARE(result, int(Done));
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
