// SPDX-License-Identifier: GPL-3.0-or-later
// Holds the documents against what they speak of: every link, picture, path, command, target, name
// and menu text in them exists, and version and date are the same everywhere.

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QShortcut>
#include <QSpinBox>
#include <QSvgRenderer>
#include <QtTest>

#include "settingsdialog.h"
#include "support/documents.h"
#include "support/mainwindowtester.h"

using Documents::all;
using Documents::between;
using Documents::path;
using Documents::read;

namespace
{

QStringList matches(const QString &text, const char *pattern)
{
    QStringList found;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto match = expression.globalMatch(text); match.hasNext();) {
        found << match.next().captured(1);
    }
    return found;
}

// All code: between backticks, and lines that are indented by four blanks.
QStringList codeOf(const QString &text)
{
    return between(text, "`", "`") + matches(text, "^ {4}(.*)$");
}

// The names of headings as links write them.
QStringList anchorsOf(const QString &text)
{
    QStringList anchors;
    for (QString heading : matches(text, "^#+ (.*)$")) {
        heading = heading.toLower();
        heading.remove(QRegularExpression("[^a-z0-9 _-]"));
        anchors << heading.replace(' ', '-');
    }
    return anchors;
}

// The content of all files below \p folder with one of the endings.
QString contentOf(const QString &folder, const QStringList &endings)
{
    QString content;
    QDirIterator files(path(folder), endings, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        content += read(files.next());
    }
    return content;
}

QString sources()
{
    static const QString content = contentOf("src", {"*.h", "*.cpp", "CMakeLists.txt"});
    return content;
}

// All string literals of the sources, with the parts of a long one joined.
QStringList literals()
{
    QString joined = contentOf("src", {"*.cpp", "*.h"});
    joined.remove(QRegularExpression(R"("\s*\n\s*")"));
    return matches(joined, "\"([^\"\n]+)\"");
}

// Whether a part of the project lies below a folder with one of these names.
bool isPathOfProject(const QString &word)
{
    static const QRegularExpression pattern("^(script|src|tests|docs|fuzz|samples|translations|"
                                            "packaging|benchmarks|cmake)/");
    return pattern.match(word).hasMatch();
}

QStringList presetsOf(const QString &kind)
{
    const QJsonObject presets =
        QJsonDocument::fromJson(read("CMakePresets.json").toUtf8()).object();
    QStringList names;
    const QJsonArray list = presets.value(kind).toArray();
    for (const auto &preset : list) {
        names << preset.toObject().value("name").toString();
    }
    return names;
}

QStringList targets()
{
    const QString lists = read("CMakeLists.txt") + contentOf("src", {"CMakeLists.txt"})
        + contentOf("tests", {"CMakeLists.txt"}) + contentOf("benchmarks", {"CMakeLists.txt"})
        + contentOf("fuzz", {"CMakeLists.txt"}) + contentOf("translations", {"CMakeLists.txt"})
        + contentOf("packaging", {"CMakeLists.txt"});
    return matches(lists,
                   "(?:add_executable|add_library|add_custom_target|glymark_add_test)\\((\\w+)");
}

} // namespace

class TestDocuments : public QObject
{
    Q_OBJECT

    // The documents in which the owner's addresses stand.
    static QStringList filledIn()
    {
        return {"README.md", "docs/guide.md", "CITATION.cff",
                "packaging/local.glymark.glymark.metainfo.xml"};
    }

    // Copies of them, with what \p owner holds.
    static void fillIn(const QTemporaryDir &folder, const QString &owner)
    {
        for (const QString &file : filledIn()) {
            const QString copy = folder.filePath(file);
            QVERIFY(QDir().mkpath(QFileInfo(copy).path()));
            QVERIFY(QFile::copy(path(file), copy));
        }
        QProcess cmake;
        cmake.start(CMAKE_PROGRAM,
                    {"-DOWNER=" + owner, "-DFOLDER=" + folder.path(), "-P",
                     path("cmake/FillInOwner.cmake")});
        QVERIFY(cmake.waitForFinished(60000));
        QVERIFY2(cmake.exitCode() == 0, cmake.readAllStandardError());
    }

    static QString contentIn(const QTemporaryDir &folder, const QString &name)
    {
        QFile file(folder.filePath(name));
        return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private Q_SLOTS:
    void linksLeadSomewhere_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("target");
        for (const QString &document : all()) {
            for (const QString &target : between(read(document), "](", ")")) {
                if (!target.startsWith("https://")) {
                    QTest::newRow(qPrintable(document + ": " + target)) << document << target;
                }
            }
        }
    }

    void linksLeadSomewhere()
    {
        QFETCH(const QString, document);
        QFETCH(const QString, target);
        const QString file = target.section('#', 0, 0);
        const QString linked =
            file.isEmpty() ? document : QDir::cleanPath(QFileInfo(document).path() + '/' + file);
        QVERIFY2(QFileInfo(path(linked)).isFile(), qPrintable(linked));
        if (target.contains('#')) {
            QVERIFY2(anchorsOf(read(linked)).contains(target.section('#', 1)), qPrintable(target));
        }
    }

    // The packages bring along the guide and its pictures, and nothing beside them.
    void guideLinksOnlyItselfAndItsPictures()
    {
        static const QRegularExpression within("^(#.*|images/[a-z-]+\\.png)$");
        for (const QString &target : between(read("docs/guide.md"), "](", ")")) {
            QVERIFY2(within.match(target).hasMatch(), qPrintable(target));
        }
    }

    // Nobody gets the program without these words.
    void everyOfferSaysWhatGlymarkIsFor_data()
    {
        QTest::addColumn<QString>("file");
        for (const char *file :
             {"README.md", "docs/guide.md", "packaging/glymark.1.in", "packaging/CMakeLists.txt",
              "packaging/windows/read me.txt", "packaging/local.glymark.glymark.metainfo.xml"}) {
            QTest::newRow(file) << file;
        }
    }

    void everyOfferSaysWhatGlymarkIsFor()
    {
        QFETCH(const QString, file);
        static const QRegularExpression words("is a tool for research and teaching(\\.|;| and)( "
                                              "It)?( it)? gives no treatment advice");
        QVERIFY(words.match(Documents::flat(file)).hasMatch());
    }

    void offersSayTheSame()
    {
        const QString catalogue = Documents::flat("packaging/local.glymark.glymark.metainfo.xml");
        const QString package = Documents::flat("packaging/CMakeLists.txt");
        const QString summary = between(catalogue, "<summary>", "</summary>").value(0);
        QVERIFY(package.contains('"' + summary.left(1).toLower() + summary.mid(1) + '"'));
        QVERIFY(Documents::flat("packaging/glymark.desktop").contains("Comment=" + summary + ' '));
        QStringList offers = between(catalogue, "<p>", "</p>").mid(0, 3);
        offers << between(catalogue, "<li>", "</li>");
        QCOMPARE(offers.size(), 6);
        for (const QString &offer : offers) {
            QVERIFY2(package.contains(offer.trimmed()), qPrintable(offer));
        }
    }

    // In both languages of the installer.
    void startMenuIsCalledAsTheInstallerCallsIt()
    {
        const QStringList names =
            matches(read("packaging/windows/glymark.nsi"), "^LangString [^\"]+\"([^\"]+)\"");
        QCOMPARE(names.size(), 6);
        const QString guide = Documents::flat("docs/guide.md");
        for (const QString &name : names) {
            QVERIFY2(guide.contains('*' + name + '*'), qPrintable(name));
        }
    }

    // What the owner has filled in stands in the documents, and only that.
    void ownersAddressesAreInTheDocuments()
    {
        const QTemporaryDir folder;
        fillIn(folder, path("cmake/GlymarkOwner.cmake"));
        for (const QString &file : filledIn()) {
            QCOMPARE(contentIn(folder, file), read(file));
        }
    }

    void ownersAddressesFillEveryPlace()
    {
        const QTemporaryDir folder;
        QFile owner(folder.filePath("owner.cmake"));
        QVERIFY(owner.open(QFile::WriteOnly));
        owner.write("set(GLYMARK_HOMEPAGE https://example.org/home)\n"
                    "set(GLYMARK_REPOSITORY https://example.org/source)\n"
                    "set(GLYMARK_FAULTS mailto:faults@example.org)\n");
        owner.close();
        fillIn(folder, owner.fileName());
        QVERIFY(contentIn(folder, "README.md").contains("from <https://example.org/home> or"));
        QVERIFY(contentIn(folder, "docs/guide.md")
                    .contains("\n\nReport it at <mailto:faults@example.org>.\n\n"));
        QVERIFY(contentIn(folder, "CITATION.cff")
                    .contains("\nurl: \"https://example.org/home\"\n"
                              "repository-code: \"https://example.org/source\"\n"));
        const QString catalogue = contentIn(folder, "packaging/local.glymark.glymark.metainfo.xml");
        QCOMPARE(matches(catalogue, "<url type=\"[a-z-]+\">([^<]+)</url>"),
                 QStringList({"https://example.org/home", "https://example.org/source",
                              "mailto:faults@example.org"}));
        QCOMPARE(matches(read("packaging/local.glymark.glymark.metainfo.xml"), "(<url )"),
                 QStringList());
    }

    // The toolkit's renderer passes over some of what browsers draw.
    void drawingsAreShownWholeByTheToolkit()
    {
        for (const char *drawing : {"packaging/glymark.svg", "docs/images/architecture.svg"}) {
            const QSvgRenderer renderer(path(drawing));
            QVERIFY2(renderer.isValid(), drawing);
            for (const char *unknown : {"clipPath", "marker", "mask", "filter", "></text>"}) {
                QVERIFY2(!read(drawing).contains(unknown), unknown);
            }
        }
        QSvgRenderer icon(path("packaging/glymark.svg"));
        QImage image(128, 128, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        icon.render(&painter);
        painter.end();
        for (const QPoint corner :
             {QPoint(8, 8), QPoint(119, 8), QPoint(8, 119), QPoint(119, 119)}) {
            QCOMPARE(qAlpha(image.pixel(corner)), 0);
        }
        QCOMPARE(image.pixelColor(110, 30), QColor("#e79292"));
        QCOMPARE(image.pixelColor(18, 98), QColor("#aad083"));
    }

    // Where the installed program keeps things.
    void manualPageAndGuideNameTheSameFolders()
    {
        const QString manual = contentOf("packaging", {"glymark.1*"});
        for (const char *folder : {"/usr/share/glymark/samples", "/usr/share/doc/glymark",
                                   "~/Documents/Glymark", "~/.local/share/glymark"}) {
            QVERIFY2(manual.contains(folder), folder);
            QVERIFY2(read("docs/guide.md").contains('`' + QString(folder) + '`'), folder);
        }
    }

    void everyPictureIsShown()
    {
        QString text;
        for (const QString &document : all()) {
            text += read(document);
        }
        const QStringList pictures = QDir(path("docs/images")).entryList(QDir::Files);
        QVERIFY(pictures.size() > 10);
        for (const QString &picture : pictures) {
            QVERIFY2(text.contains("images/" + picture + ')'), qPrintable(picture));
        }
    }

    void foldersOfThePictureAreThoseThatThereAre()
    {
        QStringList shown =
            matches(read("docs/images/architecture.svg"), R"(font-weight="bold"[^>]*>([a-z/]+)<)");
        QStringList folders = {"src"};
        QDirIterator below(path("src"), QDir::Dirs | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (below.hasNext()) {
            folders << QDir(path("src")).relativeFilePath(below.next());
        }
        shown.sort();
        folders.sort();
        QCOMPARE(shown, folders);
    }

    void pathsInCodeExist_data()
    {
        QTest::addColumn<QString>("named");
        for (const QString &document : all()) {
            for (const QString &code : codeOf(read(document))) {
                for (const QString &word : code.split(' ')) {
                    if (isPathOfProject(word) && !word.contains('<')) {
                        QTest::newRow(qPrintable(document + ": " + word)) << word;
                    }
                }
            }
        }
    }

    void pathsInCodeExist()
    {
        QFETCH(const QString, named);
        QVERIFY2(QFileInfo::exists(path(named)), qPrintable(named));
    }

    void commandsNameWhatThereIs()
    {
        QString code;
        for (const QString &document : all()) {
            code += codeOf(read(document)).join('\n') + '\n';
        }
        const QStringList workflows = matches(code, "--workflow --preset (\\w+)");
        QVERIFY(!workflows.isEmpty());
        for (const QString &preset : workflows) {
            QVERIFY2(presetsOf("workflowPresets").contains(preset), qPrintable(preset));
        }
        for (const QString &preset : matches(code, "cmake --preset (\\w+)")) {
            QVERIFY2(presetsOf("configurePresets").contains(preset), qPrintable(preset));
        }
        for (const QString &preset : matches(code, "--build --preset (\\w+)")) {
            QVERIFY2(presetsOf("buildPresets").contains(preset), qPrintable(preset));
        }
        for (const QString &preset : matches(code, "ctest --preset (\\w+)")) {
            QVERIFY2(presetsOf("testPresets").contains(preset), qPrintable(preset));
        }
        const QStringList named = matches(code, "--target (\\w+)") + matches(code, "-R (\\w+)")
            + matches(code, R"(build/\w+/(?:\w+/)+(\w+)(?:\s|$))");
        QVERIFY(named.size() > 3);
        for (const QString &target : named) {
            QVERIFY2(targets().contains(target), qPrintable(target));
        }
        const QStringList functions = matches(code, R"(build/dev/tests/tst_\w+ (\w+))");
        QVERIFY(!functions.isEmpty());
        const QString tests = contentOf("tests", {"tst_*.cpp"});
        for (const QString &function : functions) {
            QVERIFY2(tests.contains("void " + function + "()"), qPrintable(function));
        }
    }

    void testsNamedByScriptsExist()
    {
        const QStringList named =
            matches(read("tests/bare/cases") + contentOf("script", {"*"}), R"(\b(tst_\w+))");
        QVERIFY(named.size() > 10);
        for (const QString &test : named) {
            QVERIFY2(targets().contains(test), qPrintable(test));
        }
    }

    // Units, classes, functions and keys that the developers' pages name.
    void namesInCodeExist_data()
    {
        QTest::addColumn<QString>("named");
        for (const char *document : {"docs/architecture.md", "CONTRIBUTING.md"}) {
            for (const QString &code : between(read(document), "`", "`")) {
                static const QRegularExpression name("^[A-Za-z]\\w*(::\\w+)?$");
                if (name.match(code).hasMatch()) {
                    QTest::newRow(qPrintable(QString(document) + ": " + code)) << code;
                }
            }
        }
    }

    void namesInCodeExist()
    {
        QFETCH(const QString, named);
        const QString known = sources() + contentOf("tests", {"*.h", "*.cpp", "CMakeLists.txt"})
            + read("CMakePresets.json");
        // Of the style rules: a name that stands for others, and a word of the language.
        const bool found = named == "m_name" || named == "delete"
            || QRegularExpression("\\b" + named + "\\b").match(known).hasMatch()
            || targets().contains(named) || QFile::exists(path(named));
        QVERIFY2(found, qPrintable(named));
    }

    // Texts in quotation marks are those that the program shows or writes.
    void quotedTextsAreThoseOfTheProgram_data()
    {
        QTest::addColumn<QString>("quoted");
        for (const char *document : {"README.md", "docs/guide.md"}) {
            for (const QString &quoted : between(Documents::flat(document), "\"", "\"")) {
                QTest::newRow(qPrintable(QString(document) + ": " + quoted)) << quoted;
            }
        }
    }

    void quotedTextsAreThoseOfTheProgram()
    {
        QFETCH(const QString, quoted);
        // Not from the program's texts: a button of the toolkit, numbers as C++ writes them, labels
        // that are put together or shortened (tst_guide compares both), a cell, and how to cite.
        static const QStringList others = {"OK",
                                           "60,5",
                                           "nan",
                                           "inf",
                                           "-inf",
                                           "Simple linear regression+ Interquartile range",
                                           "ndard deviation difference offset",
                                           "0.375 %",
                                           "coefficient k by Glymark",
                                           "interquartile range by Glymark"};
        bool found = others.contains(quoted);
        for (const QString &literal : literals()) {
            QString pattern = QRegularExpression::escape(literal);
            pattern.replace("\\%1", "[0-9]+");
            const QRegularExpression whole(QRegularExpression::anchoredPattern(pattern));
            found = found || whole.match(quoted).hasMatch()
                || (quoted.startsWith('(') && literal.endsWith(' ' + quoted));
        }
        QVERIFY2(found, qPrintable(quoted));
    }

    void commandsOfTheGuideAreTheMenu()
    {
        MainWindowTester tester;
        tester.start();
        QStringList menu;
        for (const QAction *action :
             tester.window->menuBar()->actions().first()->menu()->actions()) {
            menu << action->text() + ' ' + action->shortcut().toString(QKeySequence::PortableText);
        }
        QStringList told;
        for (const QStringList &row : Documents::tableRows(read("docs/guide.md"))) {
            if (row.size() == 3 && row.at(1).startsWith("Ctrl+")) {
                told << row.at(0) + ' ' + row.at(1);
            }
        }
        QCOMPARE(told, menu);
    }

    void keysOfTheWindowAreInTheGuide()
    {
        MainWindowTester tester;
        tester.start();
        QStringList told;
        for (const QStringList &row : Documents::tableRows(read("docs/guide.md"))) {
            told << row.first().split(", ");
        }
        QStringList keys = {"Shift+F10"};
        for (const QShortcut *shortcut : tester.window->findChildren<QShortcut *>()) {
            keys << shortcut->key().toString(QKeySequence::PortableText);
        }
        QVERIFY(keys.contains("F6"));
        for (const QString &key : keys) {
            QVERIFY2(told.contains(key), qPrintable(key));
        }
    }

    void settingsOfTheGuideAreThoseOfANewFile()
    {
        QString told;
        QString section;
        for (const QStringList &row : Documents::tableRows(read("docs/guide.md"))) {
            if (row.size() == 5 && row.at(0).startsWith('`')) {
                if (row.at(0) != section) {
                    section = row.at(0);
                    told += '[' + section.mid(1).chopped(1) + "]\n";
                }
                told += row.at(1).mid(1).chopped(1) + " = " + row.at(4) + '\n';
            }
        }
        QCOMPARE(told, QString(settingsText()).replace("\n\n\n", "\n"));
    }

    void offsetOfTheDialogGoesAsFarAsTold()
    {
        const MainWindowTester tester;
        const SettingsDialog dialog;
        const auto *offset = dialog.findChild<QSpinBox *>();
        QVERIFY(offset);
        QVERIFY(read("docs/guide.md")
                    .contains(QString("| %1 to %2 in the dialog |")
                                  .arg(offset->minimum())
                                  .arg(offset->maximum())));
    }

    // "Enlarge the window first."
    void lowerTableHasNoRoomForPatientsAtFirst()
    {
        MainWindowTester tester;
        tester.start();
        tester.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(tester.window.get()));
        tester.answers.expectFile(path("samples/glymark-sample.xlsx"));
        tester.action("Open File")->trigger();
        QCoreApplication::processEvents();
        const QTableView *table = tester.scoreTable();
        const int atFirst = table->viewport()->width();
        QVERIFY2(atFirst < table->columnWidth(0), qPrintable(QString::number(atFirst)));
        tester.window->resize(1240, 960);
        QCoreApplication::processEvents();
        QVERIFY(table->viewport()->width() > table->columnWidth(0));
    }

    void versionIsTheSameEverywhere_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("guide, example") << "docs/guide.md"
                                        << R"(\(Glymark ([0-9.]+)\)\.)";
        QTest::newRow("guide, citation") << "docs/guide.md"
                                         << "Glymark, version ([0-9.]+), ";
        QTest::newRow("citation file") << "CITATION.cff"
                                       << "^version: ([0-9.]+)$";
        QTest::newRow("changes") << "CHANGELOG.md"
                                 << R"(^## \[([0-9.]+)\])";
        QTest::newRow("changes of the package") << "packaging/changelog.in"
                                                << R"(^glymark \(([0-9.]+))";
        QTest::newRow("releases in the software catalogue")
            << "packaging/local.glymark.glymark.metainfo.xml"
            << "<release version=\"([0-9.]+)\"";
    }

    void versionIsTheSameEverywhere()
    {
        QFETCH(const QString, file);
        QFETCH(const QString, pattern);
        // What tells of several begins with the newest.
        QCOMPARE(matches(read(file), qPrintable(pattern)).value(0), QString(PROJECT_VERSION));
    }

    void sourcesNameTheLicence()
    {
        const QStringList folders = {"benchmarks", "cmake", "fuzz",  "packaging",   "samples",
                                     "script",     "src",   "tests", "translations"};
        int count = 0;
        for (const QString &folder : folders) {
            const QStringList names = folder == "script"
                ? QStringList("*")
                : QStringList({"*.cpp", "*.h", "*.cmake", "CMakeLists.txt", "*.py", "glymark*.in"});
            QDirIterator files(path(folder), names, QDir::Files, QDirIterator::Subdirectories);
            while (files.hasNext()) {
                const QString file = files.next();
                // The first line of a script says what runs it.
                QVERIFY2(read(file)
                             .section('\n', 0, 1)
                             .contains("SPDX-License-Identifier: GPL-3.0-or-later"),
                         qPrintable(file));
                ++count;
            }
        }
        QVERIFY(count > 100);
        // Partly other people's work.
        for (const char *list : {"packaging/copyright", "packaging/windows/copyright.txt"}) {
            QVERIFY2(Documents::flat(list).contains("the logarithm of musl"), list);
        }
    }

    void dateIsTheSameEverywhere_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("guide") << "docs/guide.md"
                               << R"(Glymark, version [0-9.]+, ([0-9-]+)\.)";
        QTest::newRow("changes") << "CHANGELOG.md"
                                 << R"(^## \[[0-9.]+\] - ([0-9-]+)$)";
        QTest::newRow("software catalogue") << "packaging/local.glymark.glymark.metainfo.xml"
                                            << R"x(<release version="[0-9.]+" date="([0-9-]+)")x";
        QTest::newRow("manual page") << "packaging/glymark.1.in"
                                     << R"(^\.TH GLYMARK 1 ([0-9-]+) )";
    }

    void dateIsTheSameEverywhere()
    {
        QFETCH(const QString, file);
        QFETCH(const QString, pattern);
        const QStringList date = matches(read("CITATION.cff"), "^date-released: ([0-9-]+)$");
        QCOMPARE(date.size(), 1);
        QCOMPARE(matches(read(file), qPrintable(pattern)).value(0), date.first());
    }
};

QTEST_MAIN(TestDocuments)
#include "tst_documents.moc"
