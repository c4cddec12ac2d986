// SPDX-License-Identifier: GPL-3.0-or-later
// What belongs to a file besides its content stays when it is saved over.

#include <array>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <QtTest>

#include "base/atomicsave.h"
#include "support/accesslists.h"
#include "support/childprocess.h"
#include "support/savedfiles.h"
#include "support/workingfolder.h"

namespace
{

// Users and groups that need not exist.
constexpr uid_t owner = 1000;
constexpr gid_t ward = 2000;

constexpr auto attribute = "user.origin";

QByteArray listOfNobody()
{
    return AccessLists::closedToTheGroup(ChildProcess::nobody);
}

/// Everything that has to stay.
QStringList rightsOf(const char *file)
{
    struct stat status = {};
    if (stat(file, &status) != 0) {
        qFatal("there is no %s", file);
    }
    return {QString("owner %1").arg(status.st_uid),
            QString("group %1").arg(status.st_gid),
            QString("mode %1").arg(status.st_mode, 0, 8),
            QString("names %1").arg(status.st_nlink),
            AccessLists::get(file, AccessLists::ofFile).toHex(),
            AccessLists::get(file, attribute)};
}

/// A file to save over, named "saves/file"; false if the file system does not offer that.
struct Kind {
    const char *name;
    bool (*prepare)();
    bool takesAttributes = false;
};

bool giveAway(uid_t user, gid_t group, mode_t mode)
{
    return chown("saves/file", user, group) == 0 && chmod("saves/file", mode) == 0;
}

const std::array kinds = {
    Kind{"own", [] { return giveAway(ChildProcess::nobody, ward, 0640); }},
    Kind{"own, for all", [] { return giveAway(ChildProcess::nobody, ward, 0666); }},
    Kind{"own of another group", [] { return giveAway(ChildProcess::nobody, 2001, 0660); }},
    Kind{"of another owner", [] { return giveAway(owner, ward, 0660); }},
    Kind{"of another owner and group", [] { return giveAway(owner, 2001, 0666); }},
    Kind{"of the superuser", [] { return giveAway(0, 0, 0666); }},
    Kind{"own with a second name",
         [] {
             return giveAway(ChildProcess::nobody, ward, 0600)
                 && link("saves/file", "saves/second") == 0;
         }},
    Kind{"own with an access list",
         [] {
             return giveAway(ChildProcess::nobody, ward, 0600)
                 && AccessLists::set("saves/file", AccessLists::ofFile, listOfNobody());
         },
         true},
    Kind{"of another owner with an access list",
         [] {
             return giveAway(owner, ward, 0600)
                 && AccessLists::set("saves/file", AccessLists::ofFile, listOfNobody());
         },
         true},
    Kind{"own with an attribute",
         [] {
             return giveAway(ChildProcess::nobody, ward, 0600)
                 && AccessLists::set("saves/file", attribute, "a ward");
         },
         true},
};

/// Makes the folder, with the permissions \p mode, and the file.
bool prepare(const Kind &kind, mode_t mode)
{
    if (mkdir("saves", 0700) != 0 || chown("saves", owner, ward) != 0
        || chmod("saves", mode) != 0) {
        qFatal("cannot make the folder");
    }
    SavedFiles::write("saves/file", "what stood here before");
    return kind.prepare();
}

bool saveOver()
{
    return saveAtomically("saves/file", SavedFiles::longContent());
}

} // namespace

class TestSaveRights : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (geteuid() != 0) {
            QSKIP("only root can make files of other users");
        }
    }

    void init()
    {
        m_folder = std::make_unique<WorkingFolder>();
        QCOMPARE(chmod(qPrintable(m_folder->path()), 0755), 0);
    }

    void cleanup() { m_folder.reset(); }

    void ordinaryUserKeepsThem_data() { rows(); }
    void ordinaryUserKeepsThem()
    {
        keepsRights([] {
            if (!ChildProcess::becomeOrdinaryUser(ward)) {
                return int(ChildProcess::NoUser);
            }
            return saveOver() ? int(ChildProcess::Done) : 1;
        });
    }

    void superuserKeepsThem_data() { rows(); }
    void superuserKeepsThem()
    {
        keepsRights([] { return saveOver() ? int(ChildProcess::Done) : 1; });
    }

    // There is nothing to compare there but owner, group, mode and names.
    void fileSystemWithoutAccessLists_data() { rows(); }
    void fileSystemWithoutAccessLists()
    {
        QFETCH(int, index);
        QFETCH(int, mode);
        const int result = ChildProcess::run([&] {
            if (!ChildProcess::mountOwn("ramfs", ".", "mode=755")
                || !QDir::setCurrent(m_folder->path())) {
                return int(ChildProcess::NoNamespace);
            }
            if (!prepare(kinds.at(size_t(index)), mode_t(mode))) {
                return int(NoSuchFile);
            }
            const QStringList rights = rightsOf("saves/file");
            if (!ChildProcess::becomeOrdinaryUser(ward) || !saveOver()) {
                return 1;
            }
            return rightsOf("saves/file") == rights ? int(ChildProcess::Done) : 2;
        });
        if (result == ChildProcess::NoNamespace) {
            QSKIP("this machine does not let the test mount a file system of its own");
        }
        const bool isOffered = !kinds.at(size_t(index)).takesAttributes;
        QCOMPARE(result, isOffered ? int(ChildProcess::Done) : int(NoSuchFile));
    }

    void newFileTakesWhatTheFolderGives()
    {
        QCOMPARE(mkdir("saves", 0700), 0);
        QCOMPARE(chown("saves", owner, ward), 0);
        QCOMPARE(chmod("saves", 02777), 0);
        const bool hasLists = AccessLists::set("saves", AccessLists::ofNewFiles, listOfNobody());
        const int result = ChildProcess::runAsOrdinaryUser([] {
            SavedFiles::write("saves/plain", "x");
            return saveOver() ? int(ChildProcess::Done) : 1;
        });
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(rightsOf("saves/file"), rightsOf("saves/plain"));
        QVERIFY(rightsOf("saves/file").contains("group 2000"));
        if (!hasLists) {
            QSKIP("this file system has no access lists");
        }
        QVERIFY(AccessLists::get("saves/file", AccessLists::ofFile) != "none");
    }

    // If the folder has an access list for its files, the new one has it from the start.
    void fileOfSuchAFolderIsRenamed()
    {
        QCOMPARE(mkdir("saves", 0755), 0);
        if (!AccessLists::set("saves", AccessLists::ofNewFiles, listOfNobody())) {
            QSKIP("this file system has no access lists");
        }
        SavedFiles::write("saves/file", "old");
        const QStringList rights = rightsOf("saves/file");
        QFile holder("saves/file");
        QVERIFY(holder.open(QIODevice::ReadOnly));
        QVERIFY(saveOver());
        QCOMPARE(rightsOf("saves/file"), rights);
        QCOMPARE(holder.readAll(), QByteArray("old"));
    }

    void listOtherThanTheFoldersStays()
    {
        QCOMPARE(mkdir("saves", 0755), 0);
        if (!AccessLists::set("saves", AccessLists::ofNewFiles, listOfNobody())) {
            QSKIP("this file system has no access lists");
        }
        SavedFiles::write("saves/file", "old");
        QVERIFY(AccessLists::set("saves/file", AccessLists::ofFile,
                                 AccessLists::closedToTheGroup(owner)));
        const QStringList rights = rightsOf("saves/file");
        QVERIFY(saveOver());
        QCOMPARE(rightsOf("saves/file"), rights);
        QCOMPARE(SavedFiles::contentOf("saves/file"), SavedFiles::longContent());
    }

private:
    static constexpr int NoSuchFile = 80;

    static void rows()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("mode");
        for (size_t i = 0; i < kinds.size(); ++i) {
            for (const int mode : {0777, 01777, 02777, 03777, 0555, 01555}) {
                QTest::addRow("%s, folder %o", kinds.at(i).name, unsigned(mode)) << int(i) << mode;
            }
        }
    }

    static void keepsRights(const std::function<int()> &save)
    {
        QFETCH(int, index);
        QFETCH(int, mode);
        if (!prepare(kinds.at(size_t(index)), mode_t(mode))) {
            QSKIP("this file system has no such files");
        }
        const QStringList rights = rightsOf("saves/file");
        const QStringList names = SavedFiles::namesIn("saves");
        const int result = ChildProcess::run(save);
        if (result == ChildProcess::NoUser) {
            QSKIP("this machine does not let root become an ordinary user");
        }
        QCOMPARE(result, int(ChildProcess::Done));
        QCOMPARE(rightsOf("saves/file"), rights);
        QCOMPARE(SavedFiles::namesIn("saves"), names);
        for (const QString &name : names) {
            QCOMPARE(SavedFiles::contentOf("saves/" + name), SavedFiles::longContent());
        }
    }

    std::unique_ptr<WorkingFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestSaveRights)
#include "tst_saverights.moc"
