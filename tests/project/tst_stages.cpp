// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

namespace
{

/// The folders of src/ that each folder may include and link beside itself; "" is src/ itself. The
/// two halves of a stage have rows of their own.
const QMap<QString, QStringList> allowed = {
    {"base", {}},
    {"settings", {"base"}},
    {"analysis", {"base", "settings"}},
    {"xlsx", {"base"}},
    {"xlsx/reading", {"base", "xlsx"}},
    {"xlsx/writing", {"base", "xlsx"}},
    {"workbooks", {"base", "settings", "analysis", "xlsx", "xlsx/reading", "xlsx/writing"}},
    {"tables", {"base", "settings", "analysis"}},
    {"graphs", {"base", "settings", "analysis"}},
    {"",
     {"base", "settings", "analysis", "xlsx", "xlsx/reading", "xlsx/writing", "workbooks", "tables",
      "graphs"}},
};

/// Where the workbook library may be used at all.
const QStringList withWorkbookLibrary = {"xlsx", "xlsx/reading", "xlsx/writing", "workbooks"};

/// A target of the program, as the build knows it.
struct Stage {
    QString folder;
    /// Paths below src/.
    QStringList files;
    QStringList links;
};

QVector<Stage> stages()
{
    QFile file(STAGES);
    if (!file.open(QFile::ReadOnly)) {
        qFatal("no list of the stages");
    }
    const QDir sources(SOURCES);
    QVector<Stage> all;
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)) {
        const QStringList parts = line.split('|');
        const QDir folder(parts.at(1));
        Stage stage = {sources.relativeFilePath(folder.path()), {}, parts.at(3).split(';')};
        stage.folder.replace(QRegularExpression("^\\.$"), "");
        for (const QString &name : parts.at(2).split(';', Qt::SkipEmptyParts)) {
            // What the build makes itself has a whole path, and is no source.
            if (QDir::isRelativePath(name)) {
                stage.files << sources.relativeFilePath(folder.filePath(name));
            }
        }
        all << stage;
    }
    return all;
}

/// The sources of the program, as paths below src/.
QStringList presentFiles()
{
    QStringList present;
    QDirIterator files(SOURCES, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        present << QDir(SOURCES).relativeFilePath(files.next());
    }
    present.sort();
    return present;
}

QString folderOf(const QString &file)
{
    return file.section('/', 0, -2);
}

/// The names that the file includes: "folder/unit.h" between quotes, others in angle brackets.
QStringList includesOf(const QString &file)
{
    QFile source(QDir(SOURCES).filePath(file));
    if (!source.open(QFile::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(file));
    }
    // NOLINTNEXTLINE(modernize-raw-string-literal): with # in one, moc loses the slots.
    static const QRegularExpression include("^\\s*#\\s*include\\s*([\"<][^\">]+)[\">]",
                                            QRegularExpression::MultilineOption);
    QStringList names;
    auto matches = include.globalMatch(QString::fromUtf8(source.readAll()));
    while (matches.hasNext()) {
        names << matches.next().captured(1);
    }
    return names;
}

} // namespace

/// The stages of the program: each a folder below src/, and a target.
class TestStages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySourceIsOfTheTargetOfItsFolder()
    {
        QStringList listed = {"main.cpp"};
        for (const Stage &stage : stages()) {
            for (const QString &file : stage.files) {
                QCOMPARE(file.section('/', 0, 0) == file ? "" : file.section('/', 0, 0),
                         stage.folder);
            }
            listed << stage.files;
        }
        listed.sort();
        QCOMPARE(listed, presentFiles());
    }

    void noIncludeLeadsUpwardOrSideways()
    {
        QStringList faults;
        int known = 0;
        for (const QString &file : presentFiles()) {
            const QString folder = folderOf(file);
            QVERIFY2(allowed.contains(folder), qPrintable(file));
            for (const QString &name : includesOf(file)) {
                if (!name.startsWith('"')) {
                    continue;
                }
                const QString included = folderOf(name.mid(1));
                QVERIFY2(QFile::exists(QDir(SOURCES).filePath(name.mid(1))), qPrintable(name));
                known += 1;
                if (included != folder && !allowed.value(folder).contains(included)) {
                    faults << file + " includes " + name.mid(1);
                }
            }
        }
        QCOMPARE(faults, QStringList());
        // A test that finds no include at all would find no fault either.
        QVERIFY(known > presentFiles().size());
    }

    void noTargetLinksUpwardOrSideways()
    {
        for (const Stage &stage : stages()) {
            for (const QString &library : stage.links.filter(QRegularExpression("^glymark_"))) {
                if (library == "glymark_options") {
                    continue;
                }
                const QString linked = library.mid(int(qstrlen("glymark_")));
                QVERIFY2(allowed.value(stage.folder).contains(linked),
                         qPrintable(stage.folder + " links " + linked));
            }
        }
    }

    void onlyWorkbooksMeetTheWorkbookLibrary()
    {
        int uses = 0;
        for (const QString &file : presentFiles()) {
            const QStringList names = includesOf(file).filter(QRegularExpression("^<xlsx"));
            uses += int(names.size());
            QVERIFY2(names.isEmpty() || withWorkbookLibrary.contains(folderOf(file)),
                     qPrintable(file));
        }
        QVERIFY(uses > 0);
        for (const Stage &stage : stages()) {
            QVERIFY2(stage.links.filter("QXlsx").isEmpty()
                         || withWorkbookLibrary.contains(stage.folder),
                     qPrintable(stage.folder));
        }
    }

    void onlyGraphsAndTheWindowLinkWidgets()
    {
        QStringList linking;
        for (const Stage &stage : stages()) {
            if (!stage.links.filter("Widgets").isEmpty()) {
                linking << stage.folder;
            }
        }
        QCOMPARE(linking, QStringList({"graphs"}));
    }
};

QTEST_GUILESS_MAIN(TestStages)
#include "tst_stages.moc"
