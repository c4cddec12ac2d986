// SPDX-License-Identifier: GPL-3.0-or-later
// Saves as on a system without a source of its own.
#include "base/filereplacement.h"

#include <memory>

#include <QtTest>

#include "support/savedfiles.h"
#include "support/workingfolder.h"

using SavedFiles::contentOf;
using SavedFiles::longContent;
using SavedFiles::namesIn;

namespace
{

bool save(const QString &name, const QByteArray &content)
{
    return replaceFile(name, [&content](QIODevice &device) {
        return writeAll(device, content.constData(), content.size());
    });
}

} // namespace

class TestPlainReplacement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<WorkingFolder>(); }
    void cleanup() { m_folder.reset(); }

    void newFileIsWritten()
    {
        QVERIFY(save("file", longContent()));
        QCOMPARE(contentOf("file"), longContent());
        QCOMPARE(namesIn("."), QStringList("file"));
    }

    void oldFileIsReplacedAndKeepsItsPermissions()
    {
        SavedFiles::write("file", longContent());
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
        QVERIFY(QFile::setPermissions("file", ownerOnly));
        QVERIFY(save("file", "short"));
        QCOMPARE(contentOf("file"), QByteArray("short"));
        QCOMPARE(QFile::permissions("file") & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
        QCOMPARE(namesIn("."), QStringList("file"));
    }

    void failureLeavesTheOldFile()
    {
        SavedFiles::write("file", "old");
        const auto fail = [](QIODevice &device) { return device.write("new") == 0; };
        QVERIFY(!replaceFile("file", fail));
        QCOMPARE(contentOf("file"), QByteArray("old"));
        QCOMPARE(namesIn("."), QStringList("file"));
    }

    void folderIsLeftAlone()
    {
        QVERIFY(QDir().mkdir("folder"));
        QVERIFY(!save("folder", "new"));
        QCOMPARE(namesIn("."), QStringList("folder"));
        QCOMPARE(namesIn("folder"), QStringList());
    }

    void missingFolderIsNotMade()
    {
        QVERIFY(!save("nowhere/file", "new"));
        QCOMPARE(namesIn("."), QStringList());
    }

private:
    std::unique_ptr<WorkingFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestPlainReplacement)
#include "tst_plainreplacement.moc"
