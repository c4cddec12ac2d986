// SPDX-License-Identifier: GPL-3.0-or-later
#include <QBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <xlsxdocument.h>

#include "support/handmadeworkbook.h"
#include "support/mainwindowtester.h"

namespace
{

QByteArray bytesOf(const HandmadeWorkbook &workbook)
{
    const QTemporaryDir folder;
    workbook.save(folder.filePath("book.xlsx"));
    QFile file(folder.filePath("book.xlsx"));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// Opens three patients, marks one, selects another and makes a graph.
void workOnThreePatients(StartedTester &tester)
{
    tester.openThreePatients();
    tester.mark(2, 4);
    tester.patientTable()->selectRow(1);
    tester.trigger("Groups graph");
}

/// That work is still there.
void verifyWorkOnThreePatients(const StartedTester &tester)
{
    QCOMPARE(tester.patientTexts(), texts({"falling B/W", "level W/B", "rising W/W"}));
    QCOMPARE(tester.idealKvadrants(), QVector<int>({-1, -1, 4}));
    QCOMPARE(tester.selectedRows(), 1);
    QCOMPARE(tester.subWindows().size(), 1);
    QVERIFY(tester.subWindows().constFirst()->isVisible());
    QVERIFY(tester.isFileOpen());
}

/// The values of each patient as "Save file" writes them.
QVector<QVector<double>> savedValues(StartedTester &tester)
{
    tester.answers.expectFile(tester.path("values.xlsx"));
    tester.trigger("Save file");
    const QXlsx::Document saved(tester.path("values.xlsx"));
    QVector<QVector<double>> all;
    for (int row = 2; saved.read(row, 1).isValid(); ++row) {
        QVector<double> values;
        for (int column = 2; saved.read(row, column).isValid(); ++column) {
            values << saved.read(row, column).toDouble();
        }
        all << values;
    }
    return all;
}

/// " top", " left" or both, the alignments that the window uses.
QString alignmentText(Qt::Alignment alignment)
{
    QString shown;
    if (alignment & Qt::AlignTop) {
        shown += " top";
    }
    if (alignment & Qt::AlignLeft) {
        shown += " left";
    }
    alignment &= ~(Qt::AlignTop | Qt::AlignLeft);
    return alignment ? shown + " and more" : shown;
}

QString widgetText(const QWidget &widget)
{
    const auto *label = qobject_cast<const QLabel *>(&widget);
    const auto *button = qobject_cast<const QPushButton *>(&widget);
    return label ? "\"" + label->text() + "\""
        : button ? "[" + button->text() + "]"
                 : QString(widget.metaObject()->className()) + ' ' + widget.objectName();
}

/// One line per layout and widget below \p layout, in order, with four dots per level: the class of
/// a layout, the text of a label in quotes, that of a button in brackets, class and name of another
/// widget; then the alignment.
QStringList treeOf(const QLayout &layout, const QString &indent = QString())
{
    QStringList lines = {indent + layout.metaObject()->className()
                         + alignmentText(layout.alignment())};
    const QString inner = indent + "....";
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem *item = layout.itemAt(i);
        if (const QLayout *nested = item->layout()) {
            lines << treeOf(*nested, inner);
        } else if (const QWidget *widget = item->widget()) {
            lines << inner + widgetText(*widget).trimmed() + alignmentText(item->alignment());
            if (widget->layout()) {
                lines << treeOf(*widget->layout(), inner + "....");
            }
        } else {
            lines << inner + "space";
        }
    }
    return lines;
}

constexpr const char *centralTree = R"(QHBoxLayout
....QVBoxLayout
........QMdiArea
........QWidget
............QHBoxLayout
................QTableView scoreTable
................QVBoxLayout top
...................."Legend"
...................."Better value color: Green"
...................."Worse value color: Red"
...................."Center value color: Blue"
...................."Additional info: In brackets is on which axis )"
                                    R"(that specific method will be displayed."
....QWidget
........QVBoxLayout
............QVBoxLayout
................"Information"
................"Method Results: Convergence/Variability"
................"Convergence: B - Better, W - Worse"
................"Variability: B - Better, W - Worse "
................QHBoxLayout left
...................."Convergence:"
...................."Median difference"
................QHBoxLayout left
...................."Variability:"
...................."Standard deviation"
................QHBoxLayout left
...................."Center method:"
...................."Median"
................QHBoxLayout left
...................."Offset:"
...................."3"
............QTableView patientTable
............QHBoxLayout
................[Show graph]
................[Reset selection])";

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void testerFailsOnAnUnexpectedMessage()
    {
        StartedTester tester;
        tester.trigger("Save file");
        QEXPECT_FAIL("", "nobody expects \"No data\"", Continue);
    }

    void testerFailsOnAnExpectedMessageThatDoesNotCome()
    {
        StartedTester tester;
        tester.answers.expectMessage();
        QEXPECT_FAIL("", "no command shows one", Continue);
    }

    void withoutConfigTheBoxComesOnceBeforeTheWindow()
    {
        MainWindowTester tester{QByteArray()};
        bool anyVisible = false;
        tester.answers.expect<QMessageBox>([&anyVisible](QMessageBox &box) {
            anyVisible = box.parentWidget()->isVisible();
            QCOMPARE(box.windowTitle(), "Wrong Config");
            QCOMPARE(box.text(),
                     "Config file doesn't exist or has invalid format. Default config will be "
                     "created");
            QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
            QVERIFY(qobject_cast<MainWindow *>(box.parentWidget()) != nullptr);
            box.button(QMessageBox::Ok)->click();
        });
        tester.start();
        QVERIFY(!anyVisible);
        QCOMPARE(tester.readFile("config.ini"), settingsText());
        const QStringList labels = tester.labelTexts();
        for (const char *value : {"Median difference", "Standard deviation", "Median", "3"}) {
            QCOMPARE(labels.count(value), 1);
        }
    }

    void withConfigNothingIsSaid()
    {
        StartedTester tester;
        QCOMPARE(tester.window->windowTitle(), "Glymark");
        QCOMPARE(tester.readFile("config.ini"), settingsText());
    }

    void readableSettingsStartWithoutAMessage_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("empty") << QByteArray("") << QByteArray("");
        QTest::newRow("garbage") << QByteArray("no settings\n") << QByteArray("no settings\n");
        QTest::newRow("out of range") << settingsText(3, 2, 0, 7) << settingsText(0, 2, 0, 7);
        QTest::newRow("all out of range")
            << settingsText(-1, 3, 2, -1, 2) << settingsText(0, 0, 1, -1, 1);
    }

    void readableSettingsStartWithoutAMessage()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        StartedTester tester(before);
        QVERIFY(tester.window->isVisible());
        QCOMPARE(tester.readFile("config.ini"), after);
    }

    void valueLabelsFollowTheSettings_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QStringList>("values");

        QTest::newRow("second methods, average")
            << settingsText(1, 1, 0, 0)
            << texts({"Linear least squares", "Difference standard deviation offset", "Average",
                      "0"});
        QTest::newRow("third methods")
            << settingsText(2, 2, 1, 99)
            << texts({"C*e^(k*x)", "Interquartile range", "Median", "99"});
        QTest::newRow("empty file: all zero")
            << QByteArray("") << texts({"Median difference", "Standard deviation", "Average", "0"});
        QTest::newRow("fractions are cut off")
            << QByteArray("[Method]\nConvergence=2.9\n[Variable]\nSkip=7.9")
            << texts({"C*e^(k*x)", "Standard deviation", "Average", "7"});
        QTest::newRow("negative offset wraps around")
            << QByteArray("[Variable]\nSkip=-1")
            << texts(
                   {"Median difference", "Standard deviation", "Average", "18446744073709551615"});
    }

    void valueLabelsFollowTheSettings()
    {
        QFETCH(QByteArray, config);
        QFETCH(QStringList, values);
        StartedTester tester(config);
        const QStringList labels = tester.labelTexts();
        QStringList shown;
        for (const char *caption : {"Convergence:", "Variability:", "Center method:", "Offset:"}) {
            // Caption and value stand side by side in one row.
            shown << labels.at(labels.indexOf(caption) + 1);
        }
        QCOMPARE(shown, values);
    }

    void hidingTheInformationChangesNothing()
    {
        QStringList labels;
        QSize size;
        {
            StartedTester tester;
            labels = tester.labelTexts();
            size = tester.window->sizeHint();
        }
        QByteArray hidden = settingsText();
        StartedTester tester(hidden.replace("Show = 1", "Show = 0"));
        QCOMPARE(tester.labelTexts(), labels);
        QCOMPARE(tester.window->sizeHint(), size);
        for (const QLabel *label : tester.window->findChildren<QLabel *>()) {
            QVERIFY2(label->isVisible(), qPrintable(label->text()));
        }
    }

    void menuHasItsOrderShortcutsAndStates()
    {
        StartedTester tester;
        const QList<QAction *> menus = tester.window->menuBar()->actions();
        QCOMPARE(menus.size(), 1);
        QCOMPARE(menus.first()->text(), "File");

        QStringList shown;
        for (const QAction *action : tester.menuEntries()) {
            shown << action->text() + ' ' + QKeySequence::listToString(action->shortcuts())
                    + QString(action->isEnabled() ? "" : " disabled");
            QCOMPARE(action->parent(), tester.window.get());
            QVERIFY(!action->isSeparator());
        }
        QCOMPARE(shown,
                 texts({"Open File Ctrl+O", "Save file Ctrl+S", "Export graph Ctrl+P",
                        "Settings Ctrl+T", "Groups graph Ctrl+L", "Save data analysis Ctrl+D",
                        "Close file Ctrl+H disabled", "Exit Ctrl+Q"}));
    }

    void sevenActionsAreNeverDisabled()
    {
        StartedTester tester;
        const QStringList others = texts({"Open File", "Save file", "Export graph", "Settings",
                                          "Groups graph", "Save data analysis", "Exit"});
        const auto enabled = [&tester] {
            QStringList names;
            for (const QAction *action : tester.menuEntries()) {
                if (action->isEnabled()) {
                    names << action->text();
                }
            }
            return names;
        };
        tester.openThreePatients();
        QStringList all = others;
        all.insert(6, "Close file");
        QCOMPARE(enabled(), all);
        tester.trigger("Close file");
        QCOMPARE(enabled(), others);
    }

    void restingOnOpenFileShowsNoTip()
    {
        StartedTester tester;
        QMenu *menu = tester.window->menuBar()->actions().first()->menu();
        QAction *action = tester.action("Open File");
        menu->popup(tester.window->mapToGlobal(QPoint(0, 0)));
        menu->setActiveAction(action);
        const QPoint position = menu->actionGeometry(action).center();
        QHelpEvent rest(QEvent::ToolTip, position, menu->mapToGlobal(position));
        QCoreApplication::sendEvent(menu, &rest);
        QVERIFY2(!QToolTip::isVisible(), qPrintable(QToolTip::text()));
        QVERIFY(tester.window->findChild<QStatusBar *>() == nullptr);
        QVERIFY(!tester.labelTexts().contains(action->statusTip()));
        menu->close();
    }

    void noStatusBarShowsTheTips()
    {
        StartedTester tester;
        QCOMPARE(tester.action("Open File")->statusTip(), "Open xlsx file with data");
        QCOMPARE(tester.action("Export graph")->statusTip(),
                 "Export currently selected graph to svg");
        QCOMPARE(tester.action("Save file")->statusTip(), QString());
        QVERIFY(tester.window->findChild<QStatusBar *>() == nullptr);
    }

    void widgetsHaveTheirTextsAndSizes()
    {
        StartedTester tester;
        QStringList labels = tester.labelTexts();
        labels.sort();
        const char *const axes = "Additional info: In brackets is on which axis that specific "
                                 "method will be displayed.";
        QStringList expected = texts(
            {"Legend", "Better value color: Green", "Worse value color: Red",
             "Center value color: Blue", axes, "Information",
             "Method Results: Convergence/Variability", "Convergence: B - Better, W - Worse",
             "Variability: B - Better, W - Worse ", "Convergence:", "Median difference",
             "Variability:", "Standard deviation", "Center method:", "Median", "Offset:", "3"});
        expected.sort();
        QCOMPARE(labels, expected);

        QStringList wrapped;
        for (const QLabel *label : tester.window->findChildren<QLabel *>()) {
            QCOMPARE(label->styleSheet(), QString());
            if (label->wordWrap()) {
                wrapped << label->text().left(16);
            }
        }
        QCOMPARE(wrapped, texts({"Additional info:"}));

        const QWidget *panel = tester.patientTable()->parentWidget();
        QCOMPARE(panel->minimumWidth(), 275);
        QCOMPARE(panel->maximumWidth(), 275);
        QCOMPARE(tester.scoreTable()->parentWidget()->minimumHeight(), 200);
    }

    void widgetsHaveTheirOrderAndAlignment()
    {
        StartedTester tester;
        QCOMPARE(treeOf(*tester.window->centralWidget()->layout()).join('\n'),
                 QString(centralTree));
    }

    void tablesAreSetUp()
    {
        StartedTester tester;
        const QTableView *table = tester.patientTable();
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(tester.scoreTable()->selectionBehavior(), QAbstractItemView::SelectItems);

        for (int opened = 0; opened < 2; ++opened) {
            tester.openThreePatients();
            for (int column = 0; column < 2; ++column) {
                QCOMPARE(table->horizontalHeader()->sectionResizeMode(column),
                         QHeaderView::Stretch);
            }
        }
    }

    void emptyAtStart()
    {
        StartedTester tester;
        QVERIFY(tester.patientTable()->model() == nullptr);
        QVERIFY(tester.scoreTable()->model() == nullptr);
        QVERIFY(!tester.button("Show graph")->isEnabled());
        QVERIFY(!tester.button("Reset selection")->isEnabled());
        QVERIFY(tester.action("Save file")->isEnabled());
    }

    void openFillsBothTables()
    {
        StartedTester tester;
        tester.openThreePatients();

        QCOMPARE(tester.patientTexts(), texts({"falling B/W", "level W/B", "rising W/W"}));
        // By hand; the offset of 3 leaves no step (4 values), 0, and -5 and -6.
        const QStringList scores = tester.scoreTexts();
        QCOMPARE(scores.at(0), "-2 0 5");
        QCOMPARE(scores.at(1).section(' ', 0, 0), "-1.7");
        QCOMPARE(scores.at(3), "1.92029 0 8.78762");
        QCOMPARE(scores.at(4), "nan 0 0.5");
        QCOMPARE(scores.at(5), "4.5 0 15");
        const QAbstractItemModel *model = tester.scoreTable()->model();
        const auto color = [model](int column) {
            return model->index(0, column).data(Qt::BackgroundRole).value<QColor>().name();
        };
        QCOMPARE(color(0), "#aad083");
        QCOMPARE(color(1), "#647b98");
        QCOMPARE(color(2), "#e79292");

        QVERIFY(tester.button("Show graph")->isEnabled());
        QVERIFY(tester.button("Reset selection")->isEnabled());
        QVERIFY(tester.isFileOpen());
        QCOMPARE(tester.window->windowTitle(), "Glymark");
        QCOMPARE(tester.idealKvadrants(), QVector<int>(3, -1));
    }

    void patientsLoadWhateverElseTheirCellsHold()
    {
        StartedTester tester;
        tester.openPatients("odd.xlsx",
                            {{"note", 50.0, 60.0, "pause", 70.0},
                             {"number as text", 50.0, "61.5", 62.0},
                             {"zero", 50.0, 60.0, 0.0, 70.0},
                             {"gap", 50.0, 60.0, QVariant(), 70.0},
                             {"negative", 50.0, -60.0},
                             {"day", 50.0, 60.0, QDateTime(QDate(2020, 2, 29), QTime(12, 0)), 70.0},
                             {"formula without a value", 50.0, 60.0, "=B2", 70.0},
                             {12345.0, 1e300, 1e-300},
                             {"note", 50.0, 60.0},
                             {"  blanks  ", 50.0, 60.0}});
        QCOMPARE(tester.patientIds(),
                 texts({"note", "number as text", "zero", "gap", "negative", "day",
                        "formula without a value", "12345", "note", "  blanks  "}));
        const QVector<double> two = {50, 60};
        QCOMPARE(
            savedValues(tester),
            (QVector<QVector<double>>{
                two, {50, 61.5, 62}, two, two, {50, -60}, two, two, {1e300, 1e-300}, two, two}));
    }

    void onePatientIsBlueThroughout()
    {
        StartedTester tester;
        tester.openPatients("one.xlsx", {{"only", 70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0}});
        const QAbstractItemModel *model = tester.scoreTable()->model();
        QCOMPARE(model->columnCount(), 1);
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(model->index(row, 0).data(Qt::BackgroundRole).value<QColor>().name(),
                     "#647b98");
        }
        QCOMPARE(tester.patientTexts(), texts({"only W/W"}));
    }

    void twoEqualPatientsAreBothWorse()
    {
        for (const int median : {0, 1}) {
            StartedTester tester(settingsText(0, 0, median));
            const QVector<QVariant> values = {70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0};
            tester.openPatients("equal.xlsx",
                                {QVector<QVariant>{"a"} + values, QVector<QVariant>{"b"} + values});
            QCOMPARE(tester.patientTexts(), texts({"a W/W", "b W/W"}));
        }
    }

    void openAnswersToItsShortcut()
    {
        StartedTester tester;
        QVERIFY(QTest::qWaitForWindowActive(tester.window.get()));
        tester.answers.expect<QFileDialog>([](QFileDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Open file");
            QCOMPARE(dialog.nameFilters(), texts({"Xlsx document (*.xlsx)"}));
            dialog.reject();
        });
        QTest::keyClick(tester.window.get(), Qt::Key_O, Qt::ControlModifier);
    }

    void cancelledOpenChangesNothing()
    {
        StartedTester tester;
        tester.answers.expectAndCancel();
        tester.trigger("Open File");
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(!tester.isFileOpen());

        workOnThreePatients(tester);
        const CPatientsModel *model = tester.patientsModel();
        tester.answers.expectAndCancel();
        tester.trigger("Open File");
        QCOMPARE(tester.patientsModel(), model);
        verifyWorkOnThreePatients(tester);
    }

    void secondOpenReplacesTheFirst()
    {
        StartedTester tester;
        workOnThreePatients(tester);
        QSignalSpy patientsGone(tester.patientsModel(), &QObject::destroyed);
        QSignalSpy scoresGone(tester.scoreModel(), &QObject::destroyed);
        tester.openPatients("one.xlsx", {{"only", 40.0, 50.0}});
        QCOMPARE(patientsGone.size(), 1);
        QCOMPARE(scoresGone.size(), 1);
        // One patient is on every center.
        QCOMPARE(tester.patientTexts(), texts({"only W/W"}));
        QCOMPARE(tester.idealKvadrants(), QVector<int>({-1}));
        QVERIFY(!tester.patientTable()->selectionModel()->hasSelection());
        QVERIFY(tester.subWindows().constFirst()->isVisible());

        tester.trigger("Close file");
        QCOMPARE(tester.subWindows().size(), 0);
    }

    void closeEmptiesEverything()
    {
        StartedTester tester;
        tester.openThreePatients();
        const QStringList labels = tester.labelTexts();
        tester.mark(1, 2);
        tester.trigger("Close file");
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(tester.scoreModel() == nullptr);
        QVERIFY(!tester.isFileOpen());
        QVERIFY(!tester.button("Show graph")->isEnabled());
        QVERIFY(!tester.button("Reset selection")->isEnabled());
        QCOMPARE(tester.labelTexts(), labels);
        tester.answers.expectMessage();
        tester.trigger("Groups graph");
        QCOMPARE(tester.answers.messages(), texts({"No data|No data to visualize"}));

        tester.open("three.xlsx");
        QCOMPARE(tester.patientTexts(), texts({"falling B/W", "level W/B", "rising W/W"}));
        QCOMPARE(tester.idealKvadrants(), QVector<int>(3, -1));
        QVERIFY(tester.isFileOpen());
    }

    void closeShortcutNeedsAFile()
    {
        StartedTester tester;
        QVERIFY(QTest::qWaitForWindowActive(tester.window.get()));
        QSignalSpy closed(tester.action("Close file"), &QAction::triggered);
        QTest::keyClick(tester.window.get(), Qt::Key_H, Qt::ControlModifier);
        QCOMPARE(closed.size(), 0);
        tester.openThreePatients();
        tester.window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(tester.window.get()));
        QTest::keyClick(tester.window.get(), Qt::Key_H, Qt::ControlModifier);
        QCOMPARE(closed.size(), 1);
        QVERIFY(tester.patientsModel() == nullptr);
    }

    void refusedFileLeavesTheLoadedOne_data()
    {
        QTest::addColumn<QVector<TestWorkbooks::Row>>("rows");
        QTest::addColumn<QString>("message");

        QTest::newRow("no patient row")
            << QVector<TestWorkbooks::Row>{{"  "}, {"late", 40.0, 50.0}}
            << "Open file|This workbook has no patients: column 1 of row 2 is empty. Nothing was "
               "opened.\n\nbad.xlsx";
        QTest::newRow("one value, no value, and a 0 at once")
            << QVector<TestWorkbooks::Row>{{"good", 40.0, 50.0},
                                           {"one", 40.0},
                                           {"none"},
                                           {"zero", 40.0, 0.0, 50.0}}
            << "Open file|Every patient needs at least two values. Nothing was opened. These rows "
               "have fewer:\nRow 3: one (C3 is empty)\nRow 4: none (B4 is empty)\n"
               "Row 5: zero (C5 is 0)\nEach row must be one patient: the identifier in column A, "
               "the values from column B on.\n\nbad.xlsx";
    }

    void refusedFileLeavesTheLoadedOne()
    {
        QFETCH(QVector<TestWorkbooks::Row>, rows);
        QFETCH(QString, message);
        StartedTester tester;
        tester.openRefused("bad.xlsx", rows);
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(!tester.isFileOpen());

        workOnThreePatients(tester);
        const CPatientsModel *model = tester.patientsModel();
        tester.openRefused("bad.xlsx");
        QCOMPARE(tester.answers.messages(), QStringList({message, message}));
        QCOMPARE(tester.patientsModel(), model);
        verifyWorkOnThreePatients(tester);
    }

    void eachUnreadableFileHasItsOwnSentence_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sentence");

        HandmadeWorkbook workbook;
        workbook.rows = "<row><c><v>1</v></c></row><row><c><v>2</v></c><c><v>50</v></c></row>";
        HandmadeWorkbook chartOnly = workbook;
        chartOnly.relationships = chartOnly.relationship("chart", "chartsheet", "chart.xml");
        chartOnly.sheets = R"(<sheet name="Chart" sheetId="1" r:id="chart"/>)";
        HandmadeWorkbook tooFar = workbook;
        tooFar.rows = R"(<row r="1048577"><c r="A1048577"><v>1</v></c></row>)";
        HandmadeWorkbook badCell = workbook;
        badCell.rows = R"(<row r="17"><c r="C17"><v>5,5</v></c></row>)";
        const QByteArray whole = bytesOf(workbook);

        QTest::newRow("not a workbook") << QByteArray("notes") << "This file is not a workbook.";
        QTest::newRow("old format")
            << compoundFile("Workbook")
            << "This is a workbook of the old kind (.xls). Save it as .xlsx with a spreadsheet "
               "program and open that file.";
        QTest::newRow("password") << compoundFile("EncryptedPackage")
                                  << "This workbook is protected by a password. Save it without "
                                     "one and open that file.";
        QTest::newRow("damaged") << whole.left(whole.size() / 2)
                                 << "This workbook is damaged (archive: it cannot be read).";
        QTest::newRow("damaged cell")
            << bytesOf(badCell)
            << "This workbook is damaged (worksheet, cell C17: this is not a number).";
        QTest::newRow("no worksheet") << bytesOf(chartOnly) << "This workbook has no worksheet.";
        QTest::newRow("too large") << bytesOf(tooFar) << "This workbook is too large.";
    }

    void eachUnreadableFileHasItsOwnSentence()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, sentence);
        StartedTester tester;
        tester.openThreePatients();
        const CPatientsModel *model = tester.patientsModel();
        tester.writeFile("bad.xlsx", content);
        tester.openRefused("bad.xlsx");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Open file|" + sentence + " Nothing was opened.\n\nbad.xlsx"));
        QCOMPARE(tester.patientsModel(), model);
    }

    void windowMayCloseWithAFileOpen()
    {
        StartedTester tester;
        tester.openThreePatients();
        QSignalSpy gone(tester.patientsModel(), &QObject::destroyed);
        tester.window->close();
        tester.window.reset();
        QCOMPARE(gone.size(), 1);
    }

    void exitEndsTheProgram()
    {
        StartedTester tester;
        QTimer::singleShot(0, tester.window.get(), [&tester] { tester.trigger("Exit"); });
        constexpr int stillRunning = 17;
        QTimer watchdog;
        connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(stillRunning); });
        watchdog.start(10000);
        QCOMPARE(QCoreApplication::exec(), 0);
    }

    void samplesOpen_data()
    {
        QTest::addColumn<int>("patients");
        QTest::newRow("glymark-sample.xlsx") << 40;
        QTest::newRow("glymark-small.xlsx") << 6;
    }

    void samplesOpen()
    {
        QFETCH(int, patients);
        StartedTester tester;
        const QString name = QTest::currentDataTag();
        QVERIFY(QFile::copy(SAMPLES_DIR "/" + name, tester.path(name)));
        tester.open(name);
        const QVector<QVector<double>> all = savedValues(tester);
        QCOMPARE(all.size(), patients);
        for (const QVector<double> &values : all) {
            QVERIFY(values.size() >= 5);
            QVERIFY(values.size() <= 24);
            for (const double value : values) {
                QVERIFY(value >= 30 && value <= 120);
            }
        }
    }

    void fiftyOpensLeaveTheMemoryFlat()
    {
#ifdef GLYMARK_SANITIZED
        QSKIP("the address sanitizer keeps freed memory");
#endif
        StartedTester tester;
        QVector<TestWorkbooks::Row> rows;
        for (int patient = 0; patient < 300; ++patient) {
            TestWorkbooks::Row row{QString("patient %1").arg(patient)};
            for (int i = 0; i < 20; ++i) {
                row.append(40.0 + (patient * 7 + i * 3) % 60);
            }
            rows.append(row);
        }
        TestWorkbooks::save(tester.path("group.xlsx"), rows);
        const auto residentPages = [] {
            QFile statm("/proc/self/statm");
            return statm.open(QFile::ReadOnly) ? statm.readAll().split(' ').value(1).toDouble()
                                               : 0.0;
        };
        double afterFive = 0;
        for (int i = 1; i <= 50; ++i) {
            tester.open("group.xlsx");
            QCOMPARE(tester.patientIds().size(), 300);
            if (i == 5) {
                afterFive = residentPages();
            }
        }
        if (afterFive == 0.0) {
            QSKIP("no /proc on this system");
        }
        const double growth = residentPages() / afterFive - 1;
        qInfo("memory grew by %.1f %% from the 5th to the 50th workbook", growth * 100);
        QVERIFY(growth < 0.05);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
