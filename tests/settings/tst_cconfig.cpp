// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>
#include <memory>

#include <QDir>
#include <QFile>
#include <QtTest>

#include "settings/cconfig.h"
#include "support/numbers.h"
#include "support/workingfolder.h"
#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>

#include "support/ordinaryuser.h"
#include "support/writelimit.h"
#endif

namespace
{

constexpr quint64 largest = std::numeric_limits<quint64>::max();
const QByteArray defaults =
    "[Method]\nConvergence = 0\nVariance = 0\n\n\n[Result]\nMedian = 1\n\n\n"
    "[Variable]\nSkip = 3\n\n\n[Info]\nShow = 1\n";

QString configFile()
{
    return "config.ini";
}

#ifdef Q_OS_WIN
const QByteArray lineEnd = "\r\n";
#else
const QByteArray lineEnd = "\n";
#endif

// With the system's line ends.
void writeConfig(QByteArray content)
{
    content.replace("\n", lineEnd);
    QFile file(configFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray fileContent()
{
    QFile file(configFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace(lineEnd, "\n")
                                          : QByteArray("no file");
}

QVector<quint64> settings(const CConfig &config)
{
    return {config.convergenceMethod(), config.varianceMethod(), config.resultMethod(),
            config.skip(), config.showInfo()};
}

using Settings = QVector<quint64>;

#ifdef Q_OS_UNIX
constexpr auto readOnlyFolder = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadUser
    | QFile::ExeUser | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
constexpr auto readOnlyFile =
    QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther;
#endif

/// A setting in the file, and its position among settings().
struct Key {
    const char *section;
    const char *name;
    int position;
};
constexpr Key convergenceKey = {"Method", "Convergence", 0};
constexpr Key varianceKey = {"Method", "Variance", 1};
constexpr Key medianKey = {"Result", "Median", 2};
constexpr Key skipKey = {"Variable", "Skip", 3};
constexpr Key showKey = {"Info", "Show", 4};
constexpr std::array keys = {convergenceKey, varianceKey, medianKey, skipKey, showKey};

void addText(const Key &key, const QByteArray &text, quint64 expected,
             const QByteArray &corrected = {})
{
    QTest::addRow("%s %s", key.name, text.constData())
        << QByteArray(key.section) << QByteArray(key.name) << key.position << text << expected
        << corrected;
}

// What reads the same for every setting, and stays as it is.
void addTextsThatReadAlike(const Key &key)
{
    for (const char *zero :
         {"0", "0.999", "-0.5", "-0", "1x", "5x", "1 1", "0,5", "abc", "", "0x57p+-0"}) {
        addText(key, zero, 0);
    }
    for (const char *one : {"1", "1.9", "1e0", "10e-1"}) {
        addText(key, one, 1);
    }
    const QByteArray longest = "1." + QByteArray(61, '0');
    addText(key, longest, 1);
    addText(key, longest + "0", 0);
    addText(key, "9" + longest + "0", 0);
}

// The offset takes any number.
void addNumbersOfAnySize()
{
    const QVector<QPair<QByteArray, quint64>> texts = {
        {"3", 3},
        {"2.9", 2},
        {"5000", 5000},
        {"-1", largest},
        {"-2", largest - 1},
        {"1e300", largest},
        {"nan", largest},
        {"inf", largest},
        {"-Infinity", largest},
        {"-1e999", largest},
        {"1e-999", 0},
        {"\v7", 7},
        {"+7", 7},
        {"+-7", 0},
        {"--7", 0},
        {"0x1F", 31},
        {"-0X1p0", largest},
        {"0x1.8p1", 3},
        {"0x", 0},
        {"0x-7", 0},
        {"0xinf", 0},
    };
    for (const auto &[text, expected] : texts) {
        addText(skipKey, text, expected);
    }
}

} // namespace

class TestCConfig : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<WorkingFolder>(); }

    void cleanup() { m_folder.reset(); }

    void aMissingFileFailsTheLoadAndLeavesNoFile()
    {
        const CConfig config;
        QCOMPARE(config.status(), int(CConfig::LoadFailed));
        QCOMPARE(config.status(), -1);
        QVERIFY(!QFile::exists(configFile()));
        QCOMPARE(settings(config), Settings({0, 0, 0, 0, 0}));
    }

    void defaultsAreWrittenByteForByte()
    {
        CConfig config;
        QCOMPARE(config.createDefaultConfig(), 0);
        QCOMPARE(fileContent(), defaults);
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        const CConfig next;
        QCOMPARE(next.status(), 0);
        QCOMPARE(settings(next), Settings({0, 0, 1, 3, 1}));
    }

    void defaultsKeepTheFailedStatus()
    {
        CConfig config;
        config.createDefaultConfig();
        QCOMPARE(config.status(), -1);
    }

    void defaultsReplaceWhatWasRead()
    {
        writeConfig("[Variable]\nSkip = 8\n\n\n[Method]\nVariance = 2\n");
        CConfig config;
        QCOMPARE(config.createDefaultConfig(), 0);
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        QCOMPARE(fileContent(),
                 QByteArray("[Variable]\nSkip = 3\n\n\n[Method]\nVariance = 0\n"
                            "Convergence = 0\n\n\n[Result]\nMedian = 1\n\n\n"
                            "[Info]\nShow = 1\n"));
    }

    void anEmptyFileReadsAsZerosAndStaysEmpty()
    {
        writeConfig("");
        const CConfig config;
        QCOMPARE(config.status(), 0);
        QCOMPARE(settings(config), Settings({0, 0, 0, 0, 0}));
        QCOMPARE(fileContent(), QByteArray());
    }

    void anyContentLoads_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("prose") << QByteArray("nothing that looks like settings\n");
        QTest::newRow("no line end") << QByteArray("x");
        QTest::newRow("only a byte order mark") << QByteArray("\xEF\xBB\xBF");
        QTest::newRow("open section") << QByteArray("[Method\nConvergence");
        QTest::newRow("brackets and signs") << QByteArray("]]]][[[[=====;;;;####\n[]\n=\n");
        QTest::newRow("open multi-line value") << QByteArray("[Method]\nConvergence = <<<END\n2\n");
        QTest::newRow("null bytes") << QByteArray(4096, '\0');
        QByteArray bytes;
        for (int i = 0; i < 4096; ++i) {
            bytes.append(char((i * 37 + i / 256) % 256));
        }
        QTest::newRow("every byte") << bytes;
        QTest::newRow("a packed file")
            << QByteArray("PK\3\4\24\0\0\0\10\0\xFF\xFE\x80\n\n\0\1", 17);
    }

    void anyContentLoads()
    {
        QFETCH(const QByteArray, content);
        writeConfig(content);
        const CConfig config;
        QCOMPARE(config.status(), 0);
        QCOMPARE(settings(config), Settings({0, 0, 0, 0, 0}));
        QCOMPARE(fileContent(), content);
    }

    void aFolderInPlaceOfTheFileFailsLoadAndWrite()
    {
        QVERIFY(QDir().mkdir(configFile()));
        CConfig config;
        QCOMPARE(config.status(), -1);
        QCOMPARE(config.writeFile(), -3);
        QCOMPARE(config.createDefaultConfig(), -3);
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        QVERIFY(QFileInfo(configFile()).isDir());
    }

    void aTextBecomesASetting_data()
    {
        QTest::addColumn<QByteArray>("section");
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("position");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<quint64>("expected");
        QTest::addColumn<QByteArray>("corrected");

        for (const Key &key : keys) {
            addTextsThatReadAlike(key);
        }
        for (const Key &key : {convergenceKey, varianceKey}) {
            addText(key, "2", 2);
            addText(key, "2.9", 2);
            for (const char *bad : {"3", "3.0", "-1", "-1.5", "1e300", "-1e300", "nan", "inf"}) {
                addText(key, bad, 0, "0");
            }
        }
        for (const Key &key : {medianKey, showKey}) {
            for (const char *bad : {"2", "2.9", "3", "-1", "-2", "1e300", "nan", "-inf"}) {
                addText(key, bad, 1, "1");
            }
        }
        addNumbersOfAnySize();
    }

    void aTextBecomesASetting()
    {
        QFETCH(const QByteArray, section);
        QFETCH(const QByteArray, key);
        QFETCH(const int, position);
        QFETCH(const QByteArray, text);
        QFETCH(const quint64, expected);
        QFETCH(const QByteArray, corrected);
        const QByteArray start = '[' + section + "]\n" + key + " = ";
        writeConfig(start + text + '\n');
        const CConfig config;
        QCOMPARE(config.status(), 0);
        Settings all = {0, 0, 0, 0, 0};
        all[position] = expected;
        QCOMPARE(settings(config), all);
        QCOMPARE(fileContent(), start + (corrected.isNull() ? text : corrected) + '\n');
    }

    void aBadValueIsRepairedOnItsOwn()
    {
        writeConfig("[Method]\nConvergence = 3\nVariance = 2\n\n\n[Result]\nMedian = 0\n\n\n"
                    "[Variable]\nSkip = -1\n\n\n[Info]\nShow = 0\n");
        const CConfig config;
        QCOMPARE(config.status(), 0);
        QCOMPARE(settings(config), Settings({0, 2, 0, largest, 0}));
        QCOMPARE(
            fileContent(),
            QByteArray("[Method]\nConvergence = 0\nVariance = 2\n\n\n[Result]\nMedian = 0\n\n\n"
                       "[Variable]\nSkip = -1\n\n\n[Info]\nShow = 0\n"));
    }

    void allBadValuesAreRepaired()
    {
        writeConfig("[Info]\nShow = 2\n[Result]\nMedian = -1\n[Method]\nVariance = 9\n"
                    "Convergence = 3\n[Variable]\nSkip = 2.9\n");
        const CConfig config;
        QCOMPARE(config.status(), 0);
        QCOMPARE(settings(config), Settings({0, 0, 1, 2, 1}));
        QCOMPARE(
            fileContent(),
            QByteArray("[Info]\nShow = 1\n\n\n[Result]\nMedian = 1\n\n\n[Method]\nVariance = 0\n"
                       "Convergence = 0\n\n\n[Variable]\nSkip = 2.9\n"));
    }

    void aMissingKeyIsNotAdded()
    {
        const QByteArray content = "[Method]\nVariance = 1\n";
        writeConfig(content);
        const CConfig config;
        QCOMPARE(settings(config), Settings({0, 1, 0, 0, 0}));
        QCOMPARE(fileContent(), content);
        // Not even if another value causes the file to be written.
        writeConfig("[Method]\nVariance = 4\n");
        const CConfig correcting;
        QCOMPARE(fileContent(), QByteArray("[Method]\nVariance = 0\n"));
    }

    void namesCompareWithoutRegardToCase()
    {
        writeConfig("[method]\nCONVERGENCE = 2\n\n\n[RESULT]\nmedian = 1\n");
        CConfig config;
        QCOMPARE(settings(config), Settings({2, 0, 1, 0, 0}));
        config.saveConfig(1, 2, 0, 4, 1);
        QCOMPARE(settings(config), Settings({1, 2, 0, 4, 1}));
        QCOMPARE(
            fileContent(),
            QByteArray("[method]\nCONVERGENCE = 1\nVariance = 2\n\n\n[RESULT]\nmedian = 0\n\n\n"
                       "[Variable]\nSkip = 4\n\n\n[Info]\nShow = 1\n"));
    }

    void theOrderOfTheFileIsKept()
    {
        writeConfig(
            "[Info]\nShow = 0\nMore = x\n\n\n[Own]\nb = 2\na = 1\n\n\n[Method]\nVariance = 1\n"
            "Other = y\n");
        CConfig config;
        config.saveConfig(2, 2, 1, 5, 1);
        QCOMPARE(
            fileContent(),
            QByteArray("[Info]\nShow = 1\nMore = x\n\n\n[Own]\nb = 2\na = 1\n\n\n[Method]\n"
                       "Variance = 2\nOther = y\nConvergence = 2\n\n\n[Result]\nMedian = 1\n\n\n"
                       "[Variable]\nSkip = 5\n"));
    }

    void aRepeatedKeyCountsWithItsLastValue()
    {
        writeConfig("[Method]\nConvergence = 1\nConvergence = 2\n");
        CConfig config;
        QCOMPARE(config.convergenceMethod(), quint64(2));
        QCOMPARE(config.writeFile(), 0);
        QCOMPARE(fileContent(), QByteArray("[Method]\nConvergence = 2\n"));
    }

    void savingWritesAllSettings()
    {
        CConfig config;
        config.createDefaultConfig();
        config.saveConfig(2, 1, 0, 12, 0);
        QCOMPARE(settings(config), Settings({2, 1, 0, 12, 0}));
        QCOMPARE(
            fileContent(),
            QByteArray("[Method]\nConvergence = 2\nVariance = 1\n\n\n[Result]\nMedian = 0\n\n\n"
                       "[Variable]\nSkip = 12\n\n\n[Info]\nShow = 0\n"));
        const CConfig next;
        QCOMPARE(settings(next), Settings({2, 1, 0, 12, 0}));
    }

    void savingAfterAnEmptyFileWritesTheUsualOrder()
    {
        writeConfig("");
        CConfig config;
        config.saveConfig(0, 0, 1, 3, 1);
        QCOMPARE(fileContent(), defaults);
    }

    void savingNegativeNumbersWritesThemAsTheyAre()
    {
        CConfig config;
        config.saveConfig(0, 0, 1, std::numeric_limits<int>::min(), 1);
        QVERIFY(fileContent().contains("\nSkip = -2147483648\n"));
        QCOMPARE(config.skip(), quint64(0) - quint64(2147483648));
    }

    void aFailedSaveKeepsTheNewValues()
    {
        QVERIFY(QDir().mkdir(configFile()));
        CConfig config;
        config.saveConfig(1, 2, 0, 7, 1);
        QCOMPARE(settings(config), Settings({1, 2, 0, 7, 1}));
    }

    void laterChangesOfTheFileAreNotNoticedAndOverwritten()
    {
        writeConfig(defaults);
        CConfig config;
        writeConfig("[Method]\nConvergence = 2\nVariance = 2\nMine = 1\n");
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        QCOMPARE(config.writeFile(), 0);
        QCOMPARE(fileContent(), defaults);
    }

    void theStoreIsOne()
    {
        writeConfig("[Variable]\nSkip = 6\n");
        CConfig &first = CConfig::instance();
        QCOMPARE(&CConfig::instance(), &first);
        QCOMPARE(first.skip(), quint64(6));
        writeConfig("[Variable]\nSkip = 9\n");
        QCOMPARE(CConfig::instance().skip(), quint64(6));
        CConfig::resetInstance();
        QCOMPARE(CConfig::instance().skip(), quint64(9));
    }

#ifdef Q_OS_UNIX
    void aLocationThatIsGoneKeepsTheDefaultsInMemory()
    {
        QVERIFY(QDir().mkdir("gone"));
        QVERIFY(QDir::setCurrent(m_folder->filePath("gone")));
        QVERIFY(QDir(m_folder->path()).rmdir("gone"));
        CConfig config;
        QCOMPARE(config.status(), -1);
        QCOMPARE(config.createDefaultConfig(), int(CConfig::WriteFailed));
        QCOMPARE(config.createDefaultConfig(), -3);
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        const CConfig next;
        QCOMPARE(next.status(), -1);
    }

    void aFolderWhoseNameNoTextHoldsGetsItsFile()
    {
        constexpr auto folder = "\xff\xfe ward";
        QCOMPARE(mkdir(folder, 0777), 0);
        QCOMPARE(chdir(folder), 0);
        QCOMPARE(CConfig().createDefaultConfig(), 0);
        QCOMPARE(fileContent(), defaults);
        const CConfig next;
        QCOMPARE(next.status(), 0);
        QCOMPARE(settings(next), Settings({0, 0, 1, 3, 1}));
        QCOMPARE(unlink("config.ini"), 0);
        QCOMPARE(chdir(".."), 0);
        QCOMPARE(rmdir(folder), 0);
    }

    void aReadOnlyLocationKeepsTheDefaultsInMemory()
    {
        QVERIFY(QFile::setPermissions(m_folder->path(), readOnlyFolder));
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("cannot become an ordinary user here");
        }
        CConfig config;
        QCOMPARE(config.status(), -1);
        QCOMPARE(config.createDefaultConfig(), -3);
        QCOMPARE(settings(config), Settings({0, 0, 1, 3, 1}));
        QVERIFY(!QFile::exists(configFile()));
        const CConfig next;
        QCOMPARE(next.status(), -1);
    }

    void aCorrectionOfAReadOnlyFileHoldsInMemory()
    {
        const QByteArray content = "[Method]\nConvergence = 7\nVariance = 2\n";
        writeConfig(content);
        QVERIFY(QFile::setPermissions(configFile(), readOnlyFile));
        QVERIFY(QFile::setPermissions(m_folder->path(), readOnlyFolder));
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("cannot become an ordinary user here");
        }
        const CConfig config;
        QCOMPARE(config.status(), 0);
        QCOMPARE(settings(config), Settings({0, 2, 0, 0, 0}));
        QCOMPARE(fileContent(), content);
    }

    void anUnreadableFileFailsTheLoad()
    {
        writeConfig(defaults);
        QVERIFY(QFile::setPermissions(configFile(), {}));
        QVERIFY(QFile::setPermissions(m_folder->path(), readOnlyFolder));
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("cannot become an ordinary user here");
        }
        const CConfig config;
        QCOMPARE(config.status(), -1);
    }

    void aFileThatFindsNoRoomStaysWhole_data()
    {
        QTest::addColumn<int>("room");
        QTest::newRow("full disk") << 0;
        QTest::newRow("room for the first block") << 4096;
    }

    void aFileThatFindsNoRoomStaysWhole()
    {
        QFETCH(int, room);
        const QByteArray content =
            "; " + QByteArray(5000, 'x') + "\n[Result]\nMedian = 1\n\n\n[Variable]\nSkip = 3\n";
        writeConfig(content);
        CConfig config;
        {
            const WriteLimit limit{rlim_t(room)};
            config.saveConfig(1, 2, 0, 7, 1);
            QCOMPARE(config.writeFile(), -3);
        }
        QCOMPARE(settings(config), Settings({1, 2, 0, 7, 1}));
        QCOMPARE(fileContent(), content);
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList(configFile()));
        QCOMPARE(config.writeFile(), 0);
        const CConfig next;
        QCOMPARE(settings(next), Settings({1, 2, 0, 7, 1}));
    }

    void aLinkStaysALink()
    {
        QVERIFY(QDir().mkdir("elsewhere"));
        QVERIFY(QFile::link("elsewhere/settings.ini", configFile()));
        CConfig config;
        QCOMPARE(config.createDefaultConfig(), 0);
        QVERIFY(QFileInfo(configFile()).isSymLink());
        QFile target("elsewhere/settings.ini");
        QVERIFY(target.open(QIODevice::ReadOnly));
        QCOMPARE(target.readAll(), defaults);
    }

    void aFileInAReadOnlyFolderIsWritten()
    {
        writeConfig("[Method]\nConvergence = 2\n; " + QByteArray(1000, 'x') + '\n');
        constexpr auto all = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
        QVERIFY(QFile::setPermissions(configFile(), readOnlyFile | all));
        QVERIFY(QFile::setPermissions(m_folder->path(), readOnlyFolder));
        CConfig config;
        config.saveConfig(0, 0, 1, 3, 1);
        const OrdinaryUser user;
        if (user.failed) {
            QSKIP("cannot become an ordinary user here");
        }
        config.saveConfig(1, 1, 1, 4, 1);
        const CConfig next;
        QCOMPARE(settings(next), Settings({1, 1, 1, 4, 1}));
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList(configFile()));
    }
#endif
};

QTEST_GUILESS_MAIN(TestCConfig)
#include "tst_cconfig.moc"
