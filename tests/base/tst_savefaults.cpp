// SPDX-License-Identifier: GPL-3.0-or-later
// Saves with a fault at every call of the system in turn, and with a kill there.

#include <algorithm>
#include <csignal>
#include <cstring>
#include <optional>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

#include "base/atomicsave.h"
#include "base/systemfaults.h"
#include "support/accesslists.h"
#include "support/ordinaryuser.h"
#include "support/savedfiles.h"
#include "support/workingfolder.h"

namespace
{

using SystemFaults::Kind;
using SystemFaults::Plan;

const QByteArray shortContent = QByteArray("old ").repeated(5'000);
const QByteArray newContent = QByteArray("content").repeated(6'000);
const QByteArray longContent = QByteArray("what stood here ").repeated(4'000);

constexpr auto attribute = "user.origin";

/// What is saved over, in the folder "saves", under the name "file".
struct Scene {
    const char *name;
    /// What the file holds before; null if there is no file.
    QByteArray before;
    /// Prepares the file, once it is written.
    void (*prepare)() = [] {};
    bool isWrittenInPlace = false;
    bool folderTakesFiles = true;
    bool hasUnnamedFiles = true;
    bool asOrdinaryUser = false;
};

void require(bool done)
{
    if (!done) {
        qFatal("cannot prepare the file: %s", std::strerror(errno));
    }
}

void giveSecondName()
{
    require(link("saves/file", "second") == 0);
}

void giveAttribute()
{
    require(AccessLists::set("saves/file", attribute, "ward"));
}

// The folder gives new files another access list than the file has.
void giveAccessList()
{
    using AccessLists::closedToTheGroup;
    require(AccessLists::set("saves/file", AccessLists::ofFile, closedToTheGroup(1))
            && AccessLists::set("saves", AccessLists::ofNewFiles, closedToTheGroup(2)));
}

// Not every file system has attributes and access lists.
bool keepsAttributes()
{
    return AccessLists::set(".", attribute, "x")
        && AccessLists::set(".", AccessLists::ofNewFiles, AccessLists::closedToTheGroup(1))
        && removexattr(".", AccessLists::ofNewFiles) == 0;
}

void lockFolder()
{
    require(chmod("saves/file", 0666) == 0 && chmod("saves", 0555) == 0);
}

void share()
{
    require(chmod("saves/file", 0666) == 0 && chmod("saves", 01777) == 0);
}

QVector<Scene> scenes()
{
    QVector<Scene> all = {
        {"new file", {}},
        {"shorter file", shortContent},
        {"longer file", longContent},
        {"new file, no unnamed ones", {}, [] {}, false, true, false},
        {"old file, no unnamed ones", shortContent, [] {}, false, true, false},
        {"shorter file with a second name", shortContent, giveSecondName, true},
        {"longer file with a second name", longContent, giveSecondName, true},
        {"second name, no unnamed files", longContent, giveSecondName, true, true, false},
        {"shorter file in a locked folder", shortContent, lockFolder, true, false, true, true},
        {"longer file in a locked folder", longContent, lockFolder, true, false, true, true},
    };
    if (keepsAttributes()) {
        all.append({"file with an attribute", longContent, giveAttribute, true});
        all.append({"attribute, no unnamed files", longContent, giveAttribute, true, true, false});
        all.append({"file with an access list", longContent, giveAccessList, true});
    }
    if (geteuid() == 0) {
        all.append({"file of another user in a sticky folder", longContent, share, true, true, true,
                    true});
    }
    return all;
}

/// What belongs to a file besides its content.
QString rightsOf(const char *path)
{
    struct stat status = {};
    if (stat(path, &status) != 0) {
        return "nothing";
    }
    return QString("%1:%2 %3, %4 names, %5 %6")
        .arg(status.st_uid)
        .arg(status.st_gid)
        .arg(status.st_mode, 0, 8)
        .arg(status.st_nlink)
        .arg(QString(AccessLists::get(path, attribute)),
             QString(AccessLists::get(path, AccessLists::ofFile).toHex()));
}

/// A scene, saved once.
class Attempt
{
public:
    Attempt(const Scene &scene, const Plan &plan) : m_scene(scene), m_plan(plan)
    {
        m_plan.hasUnnamedFiles = scene.hasUnnamedFiles;
        require(chmod(".", 0755) == 0 && (mkdir("saves", 0755) == 0 || errno == EEXIST));
        if (!scene.before.isNull()) {
            SavedFiles::write("saves/file", scene.before);
            scene.prepare();
        }
        m_rights = rightsOf("saves/file");
    }
    ~Attempt()
    {
        chmod("saves", 0755);
        removexattr("saves", AccessLists::ofNewFiles);
        for (const QString &name : SavedFiles::namesIn("saves")) {
            QFile::remove("saves/" + name);
        }
        unlink("second");
    }
    Q_DISABLE_COPY_MOVE(Attempt)

    void run()
    {
        std::optional<OrdinaryUser> user;
        if (m_scene.asOrdinaryUser) {
            user.emplace();
        }
        SystemFaults::start(m_plan);
        m_saved = saveAtomically("saves/file", &writeInPieces);
        m_calls = SystemFaults::stop();
        m_hasEnded = m_plan.kind == Kind::End || m_plan.kind == Kind::EndHalfway;
    }

    void runAndBeKilled()
    {
        const pid_t child = fork();
        if (child == 0) {
            run();
            _exit(0);
        }
        int status = 0;
        require(child > 0 && waitpid(child, &status, 0) == child);
        m_hasEnded = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

    bool isSaved() const { return m_saved; }
    bool hasEnded() const { return m_hasEnded; }
    const std::vector<const char *> &calls() const { return m_calls; }

    /// What is wrong now; empty if nothing is.
    QString fault() const
    {
        const QByteArray content = contentNow();
        const bool isNew = content == newContent;
        const bool isMixture = !isNew && content != m_scene.before;
        if (isMixture && !mayBeMixed()) {
            return "a mixture";
        }
        if (!m_hasEnded && m_saved != isNew) {
            return m_saved ? "the old content, and true" : "the new content, and false";
        }
        if (!m_scene.before.isNull() && rightsOf("saves/file") != m_rights) {
            return rightsOf("saves/file") + " instead of " + m_rights;
        }
        return faultBeside(isMixture);
    }

private:
    // Long enough for several calls.
    static bool writeInPieces(QIODevice &device)
    {
        constexpr int pieceSize = 9'000;
        for (int at = 0; at < newContent.size(); at += pieceSize) {
            const QByteArray piece = newContent.mid(at, pieceSize);
            if (!writeAll(device, piece.constData(), piece.size())) {
                return false;
            }
        }
        return true;
    }

    static QByteArray contentNow()
    {
        return QFile::exists("saves/file") ? SavedFiles::contentOf("saves/file") : QByteArray();
    }

    // What keeps failing cannot be undone.
    bool mayBeMixed() const
    {
        return m_scene.isWrittenInPlace && (m_hasEnded || m_plan.kind == Kind::FromThenOn);
    }

    QString faultBeside(bool isMixture) const
    {
        QStringList beside = SavedFiles::namesIn("saves");
        beside.removeOne("file");
        if (beside.isEmpty()) {
            return isMixture && m_scene.folderTakesFiles ? "a mixture and nothing else" : "";
        }
        const bool cannotBeRemoved =
            !m_calls.empty() && std::strcmp(failingCall(), "unlinkat") == 0;
        if (beside.size() > 1 || !(m_hasEnded || mayBeMixed() || cannotBeRemoved)) {
            return "left over: " + beside.join(' ');
        }
        struct stat status = {};
        require(stat(qPrintable("saves/" + beside.constFirst()), &status) == 0);
        if (m_scene.isWrittenInPlace && (status.st_mode & 077) != 0) {
            return "others can read what lies beside";
        }
        // A file that has a name from the start can be killed while it is written.
        const QByteArray content = SavedFiles::contentOf("saves/" + beside.constFirst());
        const bool mayBeHalf = m_hasEnded && !m_scene.hasUnnamedFiles && !isMixture;
        return content == newContent || (mayBeHalf && newContent.startsWith(content))
            ? ""
            : "beside it lies something else";
    }

    const char *failingCall() const
    {
        const auto index = size_t(m_plan.call);
        return index > 0 && index <= m_calls.size() ? m_calls.at(index - 1) : "";
    }

    const Scene &m_scene;
    Plan m_plan;
    QString m_rights;
    bool m_saved = false;
    bool m_hasEnded = false;
    std::vector<const char *> m_calls;
};

/// The calls of a scene in which nothing fails.
std::vector<const char *> callsOf(const Scene &scene)
{
    Attempt attempt(scene, {});
    attempt.run();
    if (!attempt.isSaved() || !attempt.fault().isEmpty()) {
        qFatal("%s: not saved, %s", scene.name, qPrintable(attempt.fault()));
    }
    return attempt.calls();
}

bool isOneOf(const char *name, std::initializer_list<const char *> names)
{
    return std::any_of(names.begin(), names.end(),
                       [name](const char *other) { return std::strcmp(name, other) == 0; });
}

} // namespace

class TestSaveFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("root cannot become an ordinary user here");
        }
    }

    void everyCallThatCanFailIsTried()
    {
        QSet<QByteArray> names;
        for (const Scene &scene : scenes()) {
            for (const char *name : callsOf(scene)) {
                names.insert(name);
            }
        }
        for (const char *name : {"openat", "readlinkat", "fstatat", "fstat", "faccessat", "write",
                                 "read", "fsync", "dup", "close", "fchmod", "flistxattr",
                                 "memfd_create", "linkat", "renameat", "unlinkat"}) {
            QVERIFY2(names.contains(name), name);
        }
        QVERIFY(names.contains("ftruncate") || names.contains("ftruncate64"));
    }

    void failingCallLeavesOneContentWhole_data() { rows(); }
    void failingCallLeavesOneContentWhole()
    {
        for (const int error : {ENOSPC, EDQUOT, EIO, EACCES}) {
            tryEveryCall(Kind::Once, error);
        }
    }

    void callThatGoesOnFailingLeavesOneContentWhole_data() { rows(); }
    void callThatGoesOnFailingLeavesOneContentWhole()
    {
        for (const int error : {ENOSPC, EIO}) {
            tryEveryCall(Kind::FromThenOn, error);
        }
    }

    void endLeavesOneContentWhole_data() { rows(); }
    void endLeavesOneContentWhole()
    {
        tryEveryCall(Kind::End, EIO);
        tryEveryCall(Kind::EndHalfway, EIO, {"write"});
    }

    // The same with a real kill, on each of the three ways of saving.
    void killLeavesOneContentWhole_data()
    {
        rows({"shorter file", "longer file with a second name", "longer file in a locked folder"});
    }

    void killLeavesOneContentWhole()
    {
        QFETCH(int, index);
        const Scene scene = scenes().at(index);
        const int calls = int(callsOf(scene).size());
        for (int call = 1; call <= calls; ++call) {
            Attempt attempt(scene, {Kind::Kill, call});
            attempt.runAndBeKilled();
            QVERIFY(attempt.hasEnded());
            QVERIFY2(attempt.fault().isEmpty(), report(call, "kill", 0, attempt.fault()));
        }
    }

    void interruptedCallIsMadeAgain_data() { rows(); }
    void interruptedCallIsMadeAgain()
    {
        tryEveryCall(Kind::Once, EINTR, {"openat", "write", "read", "fsync"}, MustBeSaved);
    }

    void shortWriteIsContinued_data() { rows(); }
    void shortWriteIsContinued() { tryEveryCall(Kind::Half, 0, {"write"}, MustBeSaved); }

    void syncThatIsNotOfferedIsNoFailure_data() { rows(); }
    void syncThatIsNotOfferedIsNoFailure()
    {
        QFETCH(int, index);
        const Scene scene = scenes().at(index);
        const std::vector<const char *> calls = callsOf(scene);
        const auto first = std::find_if(calls.begin(), calls.end(),
                                        [](const char *name) { return isOneOf(name, {"fsync"}); });
        for (const int error : {EINVAL, ENOTSUP}) {
            Attempt attempt(scene, {Kind::FromThenOn, int(first - calls.begin()) + 1, error});
            attempt.run();
            QVERIFY(attempt.isSaved());
            QCOMPARE(attempt.fault(), QString());
        }
    }

    void contentThatDoesNotReachTheDiskIsNotSaved_data() { rows(); }
    void contentThatDoesNotReachTheDiskIsNotSaved()
    {
        QFETCH(int, index);
        const Scene scene = scenes().at(index);
        const std::vector<const char *> calls = callsOf(scene);
        int tries = 0;
        for (size_t i = 1; i < calls.size(); ++i) {
            // After the first sync, a folder is opened for its own; the copy of a file is closed
            // once it is made.
            const bool isOfFile = isOneOf(calls.at(i), {"fsync"})
                && (tries == 0 || !isOneOf(calls.at(i - 1), {"openat"}));
            if (!isOfFile && !isOneOf(calls.at(i), {"dup"}) && !isOneOf(calls.at(i - 1), {"dup"})) {
                continue;
            }
            ++tries;
            Attempt attempt(scene, {Kind::Once, int(i) + 1, EIO});
            attempt.run();
            QVERIFY2(!attempt.isSaved() && attempt.fault().isEmpty(),
                     report(int(i) + 1, calls.at(i), EIO, attempt.fault()));
        }
        QVERIFY(tries >= 3);
    }

    // A full disk or too many open files do not mean that the folder refuses.
    void onlyARefusalIsAReasonToWriteInPlace_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("saved");
        QTest::newRow("EACCES") << EACCES << true;
        QTest::newRow("EPERM") << EPERM << true;
        QTest::newRow("EROFS") << EROFS << true;
        for (const int error : {ENOSPC, EDQUOT, EIO, EMFILE, ENFILE, ENOENT, ENOMEM}) {
            QTest::newRow(std::strerror(error)) << error << false;
        }
    }

    void onlyARefusalIsAReasonToWriteInPlace()
    {
        QFETCH(int, error);
        QFETCH(bool, saved);
        const Scene unnamed = {"shorter file", shortContent};
        Scene named = unnamed;
        named.hasUnnamedFiles = false;
        QCOMPARE(savesThoughItFails(unnamed, "linkat", 1, error), saved);
        QCOMPARE(savesThoughItFails(unnamed, "renameat", 1, error), saved);
        // The folder is opened, a file without a name is asked for, and one with a name.
        QCOMPARE(savesThoughItFails(named, "openat", 3, error), saved);
        QCOMPARE(savesThoughItFails(named, "renameat", 1, error), saved);
    }

private:
    enum Demand { MayFail, MustBeSaved };

    static void rows(std::initializer_list<const char *> names = {})
    {
        QTest::addColumn<int>("index");
        const QVector<Scene> all = scenes();
        for (int i = 0; i < all.size(); ++i) {
            if (names.size() == 0 || isOneOf(all.at(i).name, names)) {
                QTest::newRow(all.at(i).name) << i;
            }
        }
    }

    static const char *report(int call, const char *name, int error, const QString &fault)
    {
        static QByteArray text;
        text = QByteArray("call ") + QByteArray::number(call) + ", " + name + ", "
            + (error == 0 ? "" : std::strerror(error)) + ": " + fault.toUtf8();
        return text.constData();
    }

    // Whether the scene is saved though the call of that name and number fails.
    static bool savesThoughItFails(const Scene &scene, const char *name, int number, int error)
    {
        const std::vector<const char *> calls = callsOf(scene);
        size_t call = 0;
        while (number > 0 && call < calls.size()) {
            number -= isOneOf(calls.at(call), {name}) ? 1 : 0;
            ++call;
        }
        Attempt attempt(scene, {Kind::Once, int(call), error});
        attempt.run();
        if (number > 0 || !attempt.fault().isEmpty()) {
            qFatal("%s: %s", name, qPrintable(attempt.fault()));
        }
        return attempt.isSaved();
    }

    // Tries the calls of some functions, or all, one after the other.
    static void tryEveryCall(Kind kind, int error, std::initializer_list<const char *> names = {},
                             Demand demand = MayFail)
    {
        QFETCH(int, index);
        const Scene scene = scenes().at(index);
        const std::vector<const char *> calls = callsOf(scene);
        int tries = 0;
        for (size_t i = 0; i < calls.size(); ++i) {
            if (names.size() > 0 && !isOneOf(calls.at(i), names)) {
                continue;
            }
            ++tries;
            Attempt attempt(scene, {kind, int(i) + 1, error});
            attempt.run();
            QVERIFY2(attempt.fault().isEmpty() && (demand == MayFail || attempt.isSaved()),
                     report(int(i) + 1, calls.at(i), error, attempt.fault()));
        }
        QVERIFY(tries > 0);
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestSaveFaults)
#include "tst_savefaults.moc"
