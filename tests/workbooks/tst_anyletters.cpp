// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include <QDir>
#include <QFile>
#include <QtTest>
#ifdef Q_OS_WIN
#include <share.h>
#endif

#include "base/atomicsave.h"
#include "settings/cconfig.h"
#include "support/testgroups.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/dataworkbook.h"
#include "workbooks/patientreader.h"

namespace
{

// Whether the system encodes file names by the locale.
#ifdef Q_OS_WIN
constexpr bool narrowNames = false;
#else
constexpr bool narrowNames = true;
#endif

} // namespace

/// Folders and files may have any letters in their names, on every system.
class TestAnyLetters : public QObject
{
    Q_OBJECT

    QStringList contentOfFolder() const
    {
        return QDir().entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

private Q_SLOTS:
    void init()
    {
        QFETCH(const QString, name);
        if (narrowNames && QFile::decodeName(QFile::encodeName(name)) != name) {
            QSKIP("this locale has no such names");
        }
        m_folder = std::make_unique<WorkingFolder>();
        QVERIFY(QDir().mkdir(name));
        QVERIFY(QDir::setCurrent(name));
        CConfig::resetInstance();
    }

    void cleanup() { m_folder.reset(); }

    void survivesUnpairedSurrogate_data() { names(); }
    void survivesUnpairedSurrogate()
    {
        QFETCH(const QString, name);
        const QString path = QDir::current().filePath(name + QChar(0xd800));
        const bool saved = saveAtomically(path, "text");
        QCOMPARE(contentOfFolder().size(), saved ? 1 : 0);
    }

    void opensAWorkbook_data() { names(); }
    void opensAWorkbook()
    {
        QFETCH(const QString, name);
        const QString path = QDir::current().filePath(name + ".xlsx");
        TestWorkbooks::save(path, {{name, 51, 48}});
        const LoadedPatients loaded = loadPatients(path);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.patients.size(), 1);
        QCOMPARE(loaded.patients.constFirst().id, name);
    }

    void savesAWorkbook_data() { names(); }
    void savesAWorkbook()
    {
        QFETCH(const QString, name);
        const TestGroup group = TestGroup::ofValues({{51, 48, 50}});
        const QString path = QDir::current().filePath(name + ".xlsx");
        writeDataWorkbook(path, group.patients, group.scores);
        QCOMPARE(contentOfFolder(), QStringList(name + ".xlsx"));
        QVERIFY(QFileInfo(path).size() > 0);
    }

    void keepsTheSettings_data() { names(); }
    void keepsTheSettings()
    {
        // First without a file there, then over one.
        for (const int skip : {4, 5}) {
            CConfig::instance().saveConfig(2, 1, 0, skip, 0);
            QCOMPARE(contentOfFolder(), QStringList("config.ini"));
            CConfig::resetInstance();
            QCOMPARE(CConfig::instance().status(), int(CConfig::Ok));
            QCOMPARE(CConfig::instance().skip(), quint64(skip));
        }
    }

    void savesUnderAndOverALongName_data() { names(); }
    void savesUnderAndOverALongName()
    {
        QFETCH(const QString, name);
        const QString longName = name.leftJustified(124, QChar(0x159));
        if (narrowNames && QFile::decodeName(QFile::encodeName(longName)) != longName) {
            QSKIP("this locale has no such names");
        }
        for (const char *content : {"old", "new"}) {
            QVERIFY(saveAtomically(QDir::current().filePath(longName), content));
            QCOMPARE(m_folder->readFile(name + '/' + longName), QByteArray(content));
            QCOMPARE(contentOfFolder(), QStringList(longName));
        }
    }

    void savesToBothNamesOfAFile_data() { names(); }
    void savesToBothNamesOfAFile()
    {
        QFETCH(const QString, name);
        m_folder->writeFile(name + "/first", "old");
        std::error_code error;
        std::filesystem::create_hard_link("first", "second", error);
        if (error) {
            QSKIP("this file system has no second names");
        }
        QVERIFY(saveAtomically(QDir::current().filePath("first"), "new"));
        QCOMPARE(m_folder->readFile(name + "/second"), QByteArray("new"));
        QCOMPARE(contentOfFolder(), QStringList({"first", "second"}));
    }

    void leavesAFolderOfThatNameAlone_data() { names(); }
    void leavesAFolderOfThatNameAlone()
    {
        QFETCH(const QString, name);
        QVERIFY(QDir().mkdir(name));
        QVERIFY(!saveAtomically(QDir::current().filePath(name), "text"));
        QCOMPARE(contentOfFolder(), QStringList(name));
        QVERIFY(QFileInfo(name).isDir());
    }

#ifdef Q_OS_WIN
    // Locked as spreadsheet programs do it.
    void leavesAFileAloneThatIsLocked_data()
    {
        names();
    }
    void leavesAFileAloneThatIsLocked()
    {
        QFETCH(const QString, name);
        m_folder->writeFile(name + '/' + name, "old");
        std::FILE *const holder = _wfsopen(name.toStdWString().c_str(), L"rb", _SH_DENYWR);
        QVERIFY(holder);
        const bool saved = saveAtomically(QDir::current().filePath(name), "new");
        std::fclose(holder);
        QVERIFY(!saved);
        QCOMPARE(m_folder->readFile(name + '/' + name), QByteArray("old"));
        QCOMPARE(contentOfFolder(), QStringList(name));
    }

    void leavesAReadOnlyFileAlone_data()
    {
        names();
    }
    void leavesAReadOnlyFileAlone()
    {
        QFETCH(const QString, name);
        m_folder->writeFile(name + '/' + name, "old");
        QVERIFY(QFile::setPermissions(name, QFile::ReadOwner));
        QVERIFY(!saveAtomically(QDir::current().filePath(name), "new"));
        QCOMPARE(m_folder->readFile(name + '/' + name), QByteArray("old"));
        QCOMPARE(contentOfFolder(), QStringList(name));
        QVERIFY(QFile::setPermissions(name, QFile::ReadOwner | QFile::WriteOwner));
    }
#else
    // A program that has the file open keeps reading the old content.
    void savesOverAFileThatIsOpenElsewhere_data()
    {
        names();
    }
    void savesOverAFileThatIsOpenElsewhere()
    {
        QFETCH(const QString, name);
        m_folder->writeFile(name + '/' + name, "old");
        QFile holder(name);
        QVERIFY(holder.open(QFile::ReadOnly));
        QVERIFY(saveAtomically(QDir::current().filePath(name), "new"));
        QCOMPARE(holder.readAll(), QByteArray("old"));
        QCOMPARE(m_folder->readFile(name + '/' + name), QByteArray("new"));
        QCOMPARE(contentOfFolder(), QStringList(name));
    }
#endif

private:
    void names() const
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"plain", "two words", "Žluťoučký kůň", "患者", "Ω≠ß"}) {
            QTest::newRow(name) << QString::fromUtf8(name);
        }
    }

    std::unique_ptr<WorkingFolder> m_folder;
};

QTEST_MAIN(TestAnyLetters)
#include "tst_anyletters.moc"
