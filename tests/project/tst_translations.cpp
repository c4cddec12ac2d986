// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QComboBox>
#include <QDomDocument>
#include <QGroupBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMap>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTest>
#include <QTranslator>
#include <xlsxcellrange.h>
#include <xlsxdocument.h>

#include "analysis/methodlabels.h"
#include "graphs/resultsubwindow.h"
#include "settingsdialog.h"
#include "support/mainwindowtester.h"

namespace
{

QByteArray catalogue()
{
    QFile file(CZECH_CATALOGUE);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

struct Message {
    QString translation;
    /// "unfinished", "vanished" or "obsolete"; empty for one in use.
    QString type;
};

/// The messages of a translation source file by "context|source|comment".
QMap<QString, Message> messagesOf(const QString &path)
{
    QMap<QString, Message> messages;
    QFile file(path);
    QDomDocument document;
    if (!file.open(QFile::ReadOnly) || !document.setContent(&file)) {
        return messages;
    }
    const QDomNodeList elements = document.elementsByTagName("message");
    for (int i = 0; i < elements.size(); ++i) {
        const QDomElement element = elements.at(i).toElement();
        const QDomElement translation = element.firstChildElement("translation");
        const QStringList key{
            element.parentNode().firstChildElement("name").text(),
            element.firstChildElement("source").text(),
            element.firstChildElement("comment").text(),
        };
        messages.insert(key.join('|'), {translation.text(), translation.attribute("type")});
    }
    return messages;
}

/// What a translation must keep: blanks at the ends, placeholders, patterns of file names.
QStringList keptParts(const QString &string)
{
    static const QRegularExpression part(R"(^\s+|\s+$|%L?\d+|%n|\(\*\.\w+\)|:$)");
    QStringList parts;
    QRegularExpressionMatchIterator matches = part.globalMatch(string);
    while (matches.hasNext()) {
        parts << matches.next().captured();
    }
    parts.sort();
    return parts;
}

/// A window with the Czech texts of its folder, loaded as the program loads them.
class CzechTester : public MainWindowTester
{
public:
    explicit CzechTester(const QByteArray &config = settingsText()) : MainWindowTester(config)
    {
        writeFile("czech_cs.qm", catalogue());
        if (!m_translator.load("czech_cs", QString(), QString(), QString())) {
            qFatal("the Czech texts cannot be loaded");
        }
        QCoreApplication::installTranslator(&m_translator);
        start();
    }

private:
    QTranslator m_translator;
};

/// Every cell of a workbook, sheet by sheet.
QStringList cellsOf(const QString &path)
{
    QXlsx::Document book(path);
    QStringList cells;
    for (const QString &sheet : book.sheetNames()) {
        book.selectSheet(sheet);
        cells << sheet;
        const QXlsx::CellRange range = book.dimension();
        for (int row = range.firstRow(); range.isValid() && row <= range.lastRow(); ++row) {
            for (int column = 1; column <= range.lastColumn(); ++column) {
                cells << book.read(row, column).toString();
            }
        }
    }
    return cells;
}

QStringList paintedTexts(const QByteArray &svg)
{
    QDomDocument page;
    page.setContent(svg);
    QStringList painted;
    const QDomNodeList elements = page.elementsByTagName("text");
    for (int i = 0; i < elements.size(); ++i) {
        painted << elements.at(i).toElement().text().trimmed();
    }
    return painted;
}

struct ProgramRun {
    QStringList shown;
    QStringList errors;
};

/// What the program itself shows when it starts in \p folder.
ProgramRun startProgram(const QString &folder)
{
    QProcess program;
    program.setWorkingDirectory(folder);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_RUNTIME_DIR", folder);
    program.setProcessEnvironment(environment);
    program.start(START_REPORT, QStringList());
    if (!program.waitForFinished(60000)) {
        program.kill();
        program.waitForFinished();
        return {};
    }
    QStringList errors = QString::fromLocal8Bit(program.readAllStandardError()).split('\n');
    // The platform without a screen prints a line for every window.
    errors = errors.filter(QRegularExpression("^(?!This plugin does not support)."));
    const QString output = QString::fromUtf8(program.readAllStandardOutput());
    // The accelerator marks of Qt's own buttons depend on the desktop.
    return {QString(output).remove('&').split('\n', Qt::SkipEmptyParts), errors};
}

QStringList englishStart()
{
    return texts(
        {"box: Wrong Config",
         "Config file doesn't exist or has invalid format. Default config will be created",
         "OK",
         "Glymark",
         "File",
         "Open File",
         "Save file",
         "Export graph",
         "Settings",
         "Groups graph",
         "Save data analysis",
         "Close file",
         "Exit",
         "Legend",
         "Better value color: Green",
         "Worse value color: Red",
         "Center value color: Blue",
         "Additional info: In brackets is on which axis that specific method will be displayed.",
         "Information",
         "Method Results: Convergence/Variability",
         "Convergence: B - Better, W - Worse",
         "Variability: B - Better, W - Worse ",
         "Convergence:",
         "Median difference",
         "Variability:",
         "Standard deviation",
         "Center method:",
         "Median",
         "Offset:",
         "3",
         "Show graph",
         "Reset selection"});
}

QStringList czechStart()
{
    return texts({"box: Chybné nastavení",
                  ("Soubor s nastavením neexistuje nebo má neplatný formát. Vytvoří se výchozí "
                   "nastavení."),
                  "OK",
                  "Glymark",
                  "Soubor",
                  "Otevřít soubor",
                  "Uložit soubor",
                  "Exportovat graf",
                  "Nastavení",
                  "Graf všech pacientů",
                  "Uložit analýzu dat",
                  "Zavřít soubor",
                  "Ukončit",
                  "Legenda",
                  "Zelená: lepší než střed",
                  "Červená: horší než střed",
                  "Modrá: rovno středu",
                  "Poznámka: v závorce je osa, na které se daná metoda zobrazí.",
                  "Informace",
                  "Hodnocení: konvergence/variabilita",
                  "Konvergence: L – lepší, H – horší",
                  "Variabilita: L – lepší, H – horší ",
                  "Konvergence:",
                  "Medián rozdílů",
                  "Variabilita:",
                  "Směrodatná odchylka",
                  "Výpočet středu:",
                  "Medián",
                  "Vynecháno hodnot:",
                  "3",
                  "Zobrazit graf",
                  "Zrušit výběr"});
}

/// The font of the application while this exists.
class FontOfSize
{
public:
    explicit FontOfSize(int points) { QApplication::setFont(QFont("DejaVu Sans", points)); }
    ~FontOfSize() { QApplication::setFont(before); }
    Q_DISABLE_COPY_MOVE(FontOfSize)

private:
    const QFont before = QApplication::font();
};

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextIsTranslated()
    {
        const QMap<QString, Message> messages = messagesOf(CZECH_SOURCE);
        QVERIFY(!messages.isEmpty());
        QStringList open;
        for (auto message = messages.begin(); message != messages.end(); ++message) {
            if (!message->type.isEmpty() || message->translation.trimmed().isEmpty()) {
                open << message.key();
            }
        }
        QCOMPARE(open, QStringList());
    }

    void blanksAndPlaceholdersAreKept()
    {
        const QMap<QString, Message> messages = messagesOf(CZECH_SOURCE);
        QVERIFY(!messages.isEmpty());
        for (auto message = messages.begin(); message != messages.end(); ++message) {
            const QString source = message.key().section('|', 1, 1);
            QVERIFY2(keptParts(source) == keptParts(message->translation),
                     qPrintable(message.key()));
        }
    }

    void noTextOfTheSourcesIsMissing()
    {
        const QTemporaryDir folder;
        const QString fresh = folder.filePath("fresh.ts");
        QProcess lupdate;
        // It does not escape the names of folders in the locations.
        lupdate.start(LUPDATE, {"-silent", "-locations", "none", SOURCES, "-ts", fresh});
        QVERIFY(lupdate.waitForFinished(60000));
        QCOMPARE(lupdate.exitCode(), 0);

        const QStringList found = messagesOf(fresh).keys();
        QVERIFY(found.contains("MainWindow|Open File|"));
        const QMap<QString, Message> known = messagesOf(CZECH_SOURCE);
        QStringList missing;
        for (const QString &key : found) {
            if (!known.contains(key)) {
                missing << key;
            }
        }
        // After a change of texts: cmake --build <dir> --target translations
        QCOMPARE(missing, QStringList());
    }

    void marksAgreeInAllPlaces()
    {
        const CzechTester tester;
        const auto translated = [](const char *context, const char *source) {
            return QCoreApplication::translate(context, source);
        };
        struct Kvadrant {
            const char *convergence, *variability, *label, *entry;
            int number;
        };
        for (const Kvadrant &kvadrant : {Kvadrant{"W/", "W", "W/W", "Kvadrant 1 (W/W)", 1},
                                         Kvadrant{"B/", "W", "B/W", "Kvadrant 2 (B/W)", 2},
                                         Kvadrant{"B/", "B", "B/B", "Kvadrant 3 (B/B)", 3},
                                         Kvadrant{"W/", "B", "W/B", "Kvadrant 4 (W/B)", 4}}) {
            const QString mark = translated("CPatientsModel", kvadrant.convergence)
                + translated("CPatientsModel", kvadrant.variability);
            QCOMPARE(translated("ResultSubWindow", kvadrant.label), mark);
            QCOMPARE(translated("MainWindow", kvadrant.entry),
                     QString("Kvadrant %1 (%2)").arg(kvadrant.number).arg(mark));
        }
        const QString better = translated("CPatientsModel", "B");
        const QString worse = translated("CPatientsModel", "W");
        const QString explanation = QString(" %1 – lepší, %2 – horší").arg(better, worse);
        QVERIFY(better != worse);
        QVERIFY(
            translated("MainWindow", "Convergence: B - Better, W - Worse").endsWith(explanation));
        QVERIFY(translated("MainWindow", "Variability: B - Better, W - Worse ")
                    .trimmed()
                    .endsWith(explanation));
    }

    void programStartsInCzech()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile::copy(CZECH_CATALOGUE, folder.filePath("czech_cs.qm")));
        const ProgramRun run = startProgram(folder.path());
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.shown, czechStart());
    }

    void fileNamesOfTheTranslation_data()
    {
        QTest::addColumn<QStringList>("whole");
        QTest::addColumn<QStringList>("damaged");
        QTest::addColumn<bool>("czech");
        // If there is no such file, Qt shortens its name at "_".
        QTest::newRow("shortened name") << texts({"czech.qm"}) << QStringList() << true;
        QTest::newRow("no suffix") << texts({"czech_cs"}) << QStringList() << true;
        QTest::newRow("full name first") << texts({"czech_cs.qm"}) << texts({"czech.qm"}) << true;
        QTest::newRow("full name alone counts")
            << texts({"czech.qm"}) << texts({"czech_cs.qm"}) << false;
        QTest::newRow("another language") << texts({"czech_sk.qm"}) << QStringList() << false;
        QTest::newRow("language alone") << texts({"cs.qm"}) << QStringList() << false;
    }

    void fileNamesOfTheTranslation()
    {
        QFETCH(const QStringList, whole);
        QFETCH(const QStringList, damaged);
        QFETCH(const bool, czech);
        const QTemporaryDir folder;
        for (const QString &name : whole) {
            QVERIFY(QFile::copy(CZECH_CATALOGUE, folder.filePath(name)));
        }
        for (const QString &name : damaged) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QFile::WriteOnly));
            QVERIFY(file.write("damaged") > 0);
        }
        const ProgramRun run = startProgram(folder.path());
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.shown.contains("Otevřít soubor"), czech);
        QCOMPARE(run.shown == englishStart(), !czech);
    }

    void programStaysEnglishWithoutTheFile()
    {
        const QTemporaryDir folder;
        const ProgramRun run = startProgram(folder.path());
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.shown, englishStart());
    }

    void programStaysEnglishWithADamagedFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray whole = catalogue();
        QVERIFY(whole.size() > 1000);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut short") << whole.left(whole.size() / 2);
        QTest::newRow("first bytes only") << whole.left(20);
        QTest::newRow("start overwritten") << QByteArray(16, 'x') + whole.mid(16);
        QTest::newRow("something else") << QByteArray("<!DOCTYPE html><html></html>");
    }

    void programStaysEnglishWithADamagedFile()
    {
        QFETCH(const QByteArray, content);
        const QTemporaryDir folder;
        QFile file(folder.filePath("czech_cs.qm"));
        QVERIFY(file.open(QFile::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
        file.close();
        const ProgramRun run = startProgram(folder.path());
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.shown, englishStart());
    }

    void valueLabelsFollowTheSettingsAndFitThePanel_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("median");
        QTest::addColumn<QStringList>("values");
        QTest::newRow("0") << 0 << 0 << texts({"Medián rozdílů", "Směrodatná odchylka", "Průměr"});
        QTest::newRow("1") << 1 << 1
                           << texts({"Lineární regrese", "SD rozdílů bez začátku", "Medián"});
        QTest::newRow("2") << 2 << 1 << texts({"C*e^(k*x)", "Mezikvartilové rozpětí", "Medián"});
    }

    void valueLabelsFollowTheSettingsAndFitThePanel()
    {
        QFETCH(const int, method);
        QFETCH(const int, median);
        QFETCH(const QStringList, values);
        const FontOfSize font(9);
        CzechTester tester(settingsText(method, method, median, 99));
        tester.openThreePatients();
        const QStringList labels = tester.labelTexts();
        for (const QString &value : values) {
            QVERIFY2(labels.contains(value), qPrintable(value));
        }
        const QWidget *panel = tester.patientTable()->parentWidget();
        QCOMPARE(panel->width(), 275);
        QVERIFY2(panel->layout()->minimumSize().width() <= panel->width(),
                 qPrintable(QString::number(panel->layout()->minimumSize().width())));
        const QHeaderView *header = tester.patientTable()->horizontalHeader();
        for (int column = 0; column < header->count(); ++column) {
            QVERIFY(header->sectionSizeHint(column) <= header->sectionSize(column));
        }
    }

    // The line of a method at the foot of the plot ends before the vertical axis.
    void methodsFitTheirHalfOfThePlot()
    {
        const FontOfSize font(9);
        CzechTester tester;
        tester.openThreePatients();
        tester.patientTable()->selectRow(2);
        tester.answers.expectAndAccept<QInputDialog>();
        tester.button("Zobrazit graf")->click();
        auto *tabs = tester.window->findChild<QTabWidget *>();
        QVERIFY(tabs);
        tabs->setCurrentIndex(1);
        const QWidget *plot = tabs->currentWidget();
        tester.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(tester.window.get()));
        for (const Method &method : convergenceMethods) {
            const QString line =
                ResultSubWindow::tr("Convergence: ") + ResultSubWindow::tr(method.plot);
            const int end = 5 + plot->fontMetrics().horizontalAdvance(line);
            QVERIFY2(end < plot->width() / 2, qPrintable(line));
        }
    }

    void headersOfThePatientTableFitALargeFont()
    {
        const FontOfSize font(11);
        CzechTester tester;
        tester.openThreePatients();
        const QHeaderView *header = tester.patientTable()->horizontalHeader();
        QCOMPARE(header->count(), 2);
        for (int column = 0; column < header->count(); ++column) {
            QVERIFY(header->sectionSizeHint(column) <= header->sectionSize(column));
        }
    }

    void tablesAreCzech()
    {
        CzechTester tester;
        tester.openThreePatients();
        const auto header = [](const QAbstractItemModel *model, int section, Qt::Orientation way) {
            return model->headerData(section, way).toString();
        };
        QCOMPARE(header(tester.patientsModel(), 0, Qt::Horizontal), "ID pacienta");
        QCOMPARE(header(tester.patientsModel(), 1, Qt::Horizontal), "Hodnocení");
        QCOMPARE(header(tester.patientsModel(), 2, Qt::Horizontal), "Unknown!");
        // The center of x is the level patient, that of y the falling one.
        QCOMPARE(tester.patientTexts(), texts({"falling L/H", "level H/L", "rising H/H"}));

        QCOMPARE(tester.patientTable()->accessibleName(), "Pacienti");
        QCOMPARE(tester.scoreTable()->accessibleName(), "Výsledky");
        QCOMPARE(tester.area()->accessibleName(), "Grafy");

        QStringList methods;
        for (int row = 0; row < tester.scoreModel()->rowCount(); ++row) {
            methods << header(tester.scoreModel(), row, Qt::Vertical);
        }
        QCOMPARE(methods,
                 texts({"Medián rozdílů (x)", "Lineární regrese (x)", "C*e^(k*x) (x)",
                        "Směrodatná odchylka (y)", "Směrodatná odchylka rozdílů bez začátku (y)",
                        "Mezikvartilové rozpětí (y)"}));
        // 52, 50, 48, 47: the slope is -17/10.
        QCOMPARE(tester.scoreModel()->index(1, 0).data().toString(), "-1.7");
    }

    void shortcutsStay()
    {
        CzechTester tester;
        const auto shortcut = [&tester](const char *action) {
            return tester.action(action)->shortcut().toString(QKeySequence::PortableText);
        };
        QCOMPARE(shortcut("Otevřít soubor"), "Ctrl+O");
        QCOMPARE(shortcut("Uložit soubor"), "Ctrl+S");
        QCOMPARE(shortcut("Exportovat graf"), "Ctrl+P");
        QCOMPARE(shortcut("Nastavení"), "Ctrl+T");
        QCOMPARE(shortcut("Graf všech pacientů"), "Ctrl+L");
        QCOMPARE(shortcut("Uložit analýzu dat"), "Ctrl+D");
        QCOMPARE(shortcut("Zavřít soubor"), "Ctrl+H");
        QCOMPARE(shortcut("Ukončit"), "Ctrl+Q");
    }

    void settingsDialogIsCzech()
    {
        CzechTester tester;
        QStringList shown;
        tester.answers.expect<SettingsDialog>([&shown](SettingsDialog &dialog) {
            shown << dialog.windowTitle();
            for (const QGroupBox *group : dialog.findChildren<QGroupBox *>()) {
                shown << group->title();
            }
            for (const QLabel *label : dialog.findChildren<QLabel *>()) {
                shown << label->text();
            }
            for (const QComboBox *combo : dialog.findChildren<QComboBox *>()) {
                for (int i = 0; i < combo->count(); ++i) {
                    shown << combo->itemText(i);
                }
            }
            for (const QAbstractButton *button : dialog.findChildren<QAbstractButton *>()) {
                shown << button->text();
            }
            dialog.reject();
        });
        tester.trigger("Nastavení");
        shown.sort();
        QStringList expected = texts(
            {"Nastavení", "Metody", "Zobrazení informací", "Výpočet středu", "Vynechané hodnoty",
             "Konvergence", "Variabilita", "Počet vynechaných počátečních hodnot", "Medián rozdílů",
             "Lineární regrese", "C*e^(k*x)", "Směrodatná odchylka",
             "Směrodatná odchylka rozdílů bez začátku", "Mezikvartilové rozpětí", "OK", "Zrušit",
             "Průměr", "Medián", "Zobrazit informace (nad pravou tabulkou)"});
        expected.sort();
        QCOMPARE(shown, expected);
    }

    void contextMenuIsCzech()
    {
        CzechTester tester;
        tester.openThreePatients();
        QMenu *menu = tester.openMenu(0);
        QVERIFY(menu);
        QStringList entries;
        for (const QAction *entry : MainWindowTester::entriesOf(*menu)) {
            entries << entry->text();
        }
        menu->close();
        QCOMPARE(entries,
                 texts({"Vyberte ideální kvadrant", "Kvadrant 1 (H/H)", "Kvadrant 2 (L/H)",
                        "Kvadrant 3 (L/L)", "Kvadrant 4 (H/L)", "Bez ideálního kvadrantu"}));
    }

    void graphsAndTheirNameAreCzech()
    {
        CzechTester tester;
        tester.openThreePatients();
        tester.patientTable()->selectRow(2);
        QStringList shown;
        tester.answers.expect<QInputDialog>([&shown](QInputDialog &dialog) {
            shown << dialog.windowTitle() << dialog.labelText() << dialog.textValue();
            dialog.accept();
        });
        tester.button("Zobrazit graf")->click();
        const auto *tabs = tester.window->findChild<QTabWidget *>();
        QVERIFY(tabs);
        shown << tabs->tabText(0) << tabs->tabText(1);
        QCOMPARE(shown,
                 texts({"Název grafu", "Název", "Graf 1", "Graf naměřených hodnot",
                        "Graf výsledků pacientů"}));
    }

    void exportedPageIsCzech()
    {
        CzechTester tester(settingsText(1, 1, 1, 0));
        tester.openThreePatients();
        tester.patientTable()->selectRow(2);
        tester.answers.expectAndAccept<QInputDialog>();
        tester.button("Zobrazit graf")->click();
        QStringList shown;
        tester.answers.expect<QFileDialog>([&](QFileDialog &dialog) {
            shown << dialog.windowTitle() << dialog.nameFilters();
            dialog.findChild<QLineEdit *>("fileNameEdit")->setText(tester.path("page.svg"));
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        tester.answers.expectMessage();
        tester.trigger("Exportovat graf");
        QCOMPARE(shown, texts({"Uložit SVG", "Soubory SVG (*.svg)"}));
        QCOMPARE(tester.answers.messages(), texts({"Export grafů|Graf byl úspěšně exportován"}));

        const QStringList painted = paintedTexts(tester.readFile("page.svg"));
        for (const char *expected :
             {"L/H", "H/H", "L/L", "H/L", "Konvergence", "Variabilita",
              "Konvergence: Lineární regrese (nejmenší čtverce)",
              "Variabilita: Směrodatná odchylka rozdílů bez začátku", "mmol/mol", "x", "rising"}) {
            QVERIFY2(painted.contains(expected), expected);
        }
    }

    void messagesAreCzech()
    {
        CzechTester tester;
        tester.answers.expectMessage();
        tester.trigger("Graf všech pacientů");
        tester.answers.expectMessage();
        tester.trigger("Exportovat graf");
        tester.openThreePatients();
        tester.answers.expectMessage();
        tester.button("Zobrazit graf")->click();
        QCOMPARE(
            tester.answers.messages(),
            texts({"Žádná data|Nejsou žádná data k zobrazení",
                   "Export do SVG|Není vybrán žádný graf k exportu",
                   "Vybráno: 0|Vyberte v tabulce výše řádky, které se mají zobrazit v grafu"}));
    }

    void workbookWithoutPatientsIsRefusedInCzech()
    {
        CzechTester tester;
        tester.openRefused("empty.xlsx", {});
        QCOMPARE(tester.answers.messages(),
                 QStringList("Otevřít soubor|Tento sešit neobsahuje žádné pacienty: buňka A2 je "
                             "prázdná. Nic nebylo otevřeno.\n\nempty.xlsx"));
    }

    void savingAsksInCzechAndWritesEnglish_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("englishAction");
        QTest::newRow("data") << "Uložit soubor"
                              << "Uložit soubor"
                              << "Save file";
        QTest::newRow("analysis") << "Uložit analýzu dat"
                                  << "Uložit analýzu"
                                  << "Save data analysis";
    }

    void savingAsksInCzechAndWritesEnglish()
    {
        QFETCH(const QString, action);
        QFETCH(const QString, caption);
        QFETCH(const QString, englishAction);
        const QTemporaryDir folder;
        const QString czechBook = folder.filePath("czech.xlsx");
        const QString englishBook = folder.filePath("english.xlsx");
        {
            CzechTester tester;
            tester.answers.expectMessage();
            tester.trigger(action);
            QCOMPARE(tester.answers.messages(),
                     QStringList("Žádná data|Nejsou žádná data k uložení"));
            tester.openThreePatients();
            tester.answers.expect<QFileDialog>([&caption](QFileDialog &dialog) {
                QCOMPARE(dialog.windowTitle(), caption);
                QCOMPARE(dialog.nameFilters(), QStringList("Sešit XLSX (*.xlsx)"));
                dialog.reject();
            });
            tester.trigger(action);
            tester.answers.expectFile(czechBook);
            tester.trigger(action);
            QVERIFY(QFile::copy(tester.path("three.xlsx"), folder.filePath("three.xlsx")));
        }
        StartedTester english;
        english.answers.expectFile(folder.filePath("three.xlsx"));
        english.trigger("Open File");
        english.answers.expectFile(englishBook);
        english.trigger(englishAction);
        const QStringList cells = cellsOf(englishBook);
        QVERIFY(cells.size() > 30);
        QCOMPARE(cellsOf(czechBook), cells);
    }

    void dialogsOfTheToolkitAreCzech()
    {
        if (!QFile::exists(QT_TRANSLATIONS "/qtbase_cs.qm")) {
            QSKIP("Qt's Czech catalogue is not installed");
        }
        CzechTester tester;
        QStringList shown;
        tester.answers.expect<QFileDialog>([&shown](QFileDialog &dialog) {
            shown << dialog.windowTitle() << dialog.nameFilters();
            for (const QPushButton *button : dialog.findChildren<QPushButton *>()) {
                shown << button->text().remove('&');
            }
            dialog.reject();
        });
        tester.trigger("Otevřít soubor");
        QCOMPARE(shown, texts({"Otevřít soubor", "Sešit XLSX (*.xlsx)", "Otevřít", "Zrušit"}));
    }
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
