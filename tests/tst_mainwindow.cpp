// SPDX-License-Identifier: GPL-3.0-or-later
#include <QBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>

#include "support/handmadeworkbook.h"
#include "support/mainwindowtester.h"
#include "support/testworkbooks.h"

namespace
{

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList all;
    for (const char *entry : list) {
        all << entry;
    }
    return all;
}

void saveThreePatients(const MainWindowTester &tester, const QString &name)
{
    // Median differences -2, 0 and 5; standard deviations 1.92, 0 and 8.79.
    TestWorkbooks::save(tester.path(name),
                        {{"falling", 52.0, 50.0, 48.0, 52.0 - 5.0},
                         {"level", 60.0, 60.0, 60.0, 60.0, 60.0},
                         {"rising", 40.0, 45.0, 50.0, 55.0, 60.0, 66.0}});
}

QString rowsMessage(const QString &rows, const QString &file)
{
    return "Open file|Every patient needs at least two values. Nothing was opened. These rows "
           "have fewer:\n"
        + rows + "\n\n" + file;
}

/// " top" and the like for what is set, of the alignments that the window uses.
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

/// One line for each layout and widget below \p layout, in order, four dots a level: the kind of a
/// layout, the text of a label in quotes, that of a button in brackets, the class of another widget
/// and its name; then the alignment.
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

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QVERIFY(!anyVisible);
        QCOMPARE(tester.readFile("config.ini"), settingsText());
        const QStringList labels = tester.labelTexts();
        for (const char *value : {"Median difference", "Standard deviation", "Median", "3"}) {
            QCOMPARE(labels.count(value), 1);
        }
    }

    void withConfigNothingIsSaid()
    {
        MainWindowTester tester;
        tester.start();
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        MainWindowTester tester(before);
        tester.start();
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        QTest::newRow("negative offset wraps") << QByteArray("[Variable]\nSkip=-1")
                                               << texts({"Median difference", "Standard deviation",
                                                         "Average", "18446744073709551615"});
    }

    void valueLabelsFollowTheSettings()
    {
        QFETCH(QByteArray, config);
        QFETCH(QStringList, values);
        MainWindowTester tester(config);
        tester.start();
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
            MainWindowTester tester;
            tester.start();
            labels = tester.labelTexts();
            size = tester.window->sizeHint();
        }
        QByteArray hidden = settingsText();
        MainWindowTester tester(hidden.replace("Show = 1", "Show = 0"));
        tester.start();
        QCOMPARE(tester.labelTexts(), labels);
        QCOMPARE(tester.window->sizeHint(), size);
        for (const QLabel *label : tester.window->findChildren<QLabel *>()) {
            QVERIFY2(label->isVisible(), qPrintable(label->text()));
        }
    }

    void menuHasItsOrderShortcutsAndStates()
    {
        MainWindowTester tester;
        tester.start();
        const QList<QAction *> menus = tester.window->menuBar()->actions();
        QCOMPARE(menus.size(), 1);
        QCOMPARE(menus.first()->text(), "File");

        QStringList shown;
        for (const QAction *action : menus.first()->menu()->actions()) {
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
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        const QStringList others = texts({"Open File", "Save file", "Export graph", "Settings",
                                          "Groups graph", "Save data analysis", "Exit"});
        const auto enabled = [&tester] {
            QStringList names;
            for (const QAction *action :
                 tester.window->menuBar()->actions().first()->menu()->actions()) {
                if (action->isEnabled()) {
                    names << action->text();
                }
            }
            return names;
        };
        tester.open("three.xlsx");
        QStringList all = others;
        all.insert(6, "Close file");
        QCOMPARE(enabled(), all);
        tester.trigger("Close file");
        QCOMPARE(enabled(), others);
    }

    void restingOnOpenFileShowsNoTip()
    {
        MainWindowTester tester;
        tester.start();
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
        MainWindowTester tester;
        tester.start();
        QCOMPARE(tester.action("Open File")->statusTip(), "Open xlsx file with data");
        QCOMPARE(tester.action("Export graph")->statusTip(),
                 "Export currently selected graph to svg");
        QCOMPARE(tester.action("Save file")->statusTip(), QString());
        QVERIFY(tester.window->findChild<QStatusBar *>() == nullptr);
    }

    void widgetsHaveTheirTextsAndSizes()
    {
        MainWindowTester tester;
        tester.start();
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
        MainWindowTester tester;
        tester.start();
        constexpr auto wrappedLine = "....................\"Additional info: In brackets is on "
                                     "which axis that specific method "
                                     "will be displayed.\"";
        const QStringList tree = texts({
            "QHBoxLayout",
            "....QVBoxLayout",
            "........QMdiArea",
            "........QWidget",
            "............QHBoxLayout",
            "................QTableView scoreTable",
            "................QVBoxLayout top",
            "....................\"Legend\"",
            "....................\"Better value color: Green\"",
            "....................\"Worse value color: Red\"",
            "....................\"Center value color: Blue\"",
            wrappedLine,
            "....QWidget",
            "........QVBoxLayout",
            "............QVBoxLayout",
            "................\"Information\"",
            "................\"Method Results: Convergence/Variability\"",
            "................\"Convergence: B - Better, W - Worse\"",
            "................\"Variability: B - Better, W - Worse \"",
            "................QHBoxLayout left",
            "....................\"Convergence:\"",
            "....................\"Median difference\"",
            "................QHBoxLayout left",
            "....................\"Variability:\"",
            "....................\"Standard deviation\"",
            "................QHBoxLayout left",
            "....................\"Center method:\"",
            "....................\"Median\"",
            "................QHBoxLayout left",
            "....................\"Offset:\"",
            "....................\"3\"",
            "............QTableView patientTable",
            "............QHBoxLayout",
            "................[Show graph]",
            "................[Reset selection]",
        });
        QCOMPARE(treeOf(*tester.window->centralWidget()->layout()).join('\n'), tree.join('\n'));
    }

    void tablesAreSetUp()
    {
        MainWindowTester tester;
        tester.start();
        const QTableView *table = tester.patientTable();
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(tester.scoreTable()->selectionBehavior(), QAbstractItemView::SelectItems);

        saveThreePatients(tester, "three.xlsx");
        for (int opened = 0; opened < 2; ++opened) {
            tester.open("three.xlsx");
            for (int column = 0; column < 2; ++column) {
                QCOMPARE(table->horizontalHeader()->sectionResizeMode(column),
                         QHeaderView::Stretch);
            }
        }
    }

    void emptyAtStart()
    {
        MainWindowTester tester;
        tester.start();
        QVERIFY(tester.patientTable()->model() == nullptr);
        QVERIFY(tester.scoreTable()->model() == nullptr);
        QVERIFY(!tester.button("Show graph")->isEnabled());
        QVERIFY(!tester.button("Reset selection")->isEnabled());
        QVERIFY(tester.action("Save file")->isEnabled());
    }

    void openFillsBothTables()
    {
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        QCOMPARE(tester.answers.unexpected(), QStringList());

        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()),
                 texts({"falling B/W", "level W/B", "rising W/W"}));
        // By hand; the steps left over by the offset of 3 are none (4 values), 0, and -5 and -6.
        const QStringList scores = MainWindowTester::tableTexts(*tester.scoreTable());
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
        QVERIFY(tester.action("Close file")->isEnabled());
        QCOMPARE(tester.window->windowTitle(), "Glymark");
        for (const PatientRecord &patient : tester.patientsModel()->patients) {
            QCOMPARE(patient.idealKvadrant, -1);
        }
    }

    void patientsLoadWhateverElseTheirCellsHold()
    {
        MainWindowTester tester;
        tester.start();
        TestWorkbooks::save(tester.path("odd.xlsx"),
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
        tester.open("odd.xlsx");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.answers.messages(), QStringList());
        QStringList ids;
        QVector<QVector<double>> values;
        for (const PatientRecord &patient : tester.patientsModel()->patients) {
            ids << patient.id;
            values << patient.values;
        }
        QCOMPARE(ids,
                 texts({"note", "number as text", "zero", "gap", "negative", "day",
                        "formula without a value", "12345", "note", "  blanks  "}));
        const QVector<double> two = {50, 60};
        QCOMPARE(
            values,
            (QVector<QVector<double>>{
                two, {50, 61.5, 62}, two, two, {50, -60}, two, two, {1e300, 1e-300}, two, two}));
    }

    void onePatientIsBlueThroughout()
    {
        MainWindowTester tester;
        tester.start();
        TestWorkbooks::save(tester.path("one.xlsx"),
                            {{"only", 70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0}});
        tester.open("one.xlsx");
        const QAbstractItemModel *model = tester.scoreTable()->model();
        QCOMPARE(model->columnCount(), 1);
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(model->index(row, 0).data(Qt::BackgroundRole).value<QColor>().name(),
                     "#647b98");
        }
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), texts({"only W/W"}));
    }

    void twoEqualPatientsAreBothWorse()
    {
        for (const int median : {0, 1}) {
            MainWindowTester tester(settingsText(0, 0, median));
            tester.start();
            const QVector<QVariant> values = {70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0};
            TestWorkbooks::save(tester.path("two.xlsx"),
                                {QVector<QVariant>{"a"} + values, QVector<QVariant>{"b"} + values});
            tester.open("two.xlsx");
            QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()),
                     texts({"a W/W", "b W/W"}));
        }
    }

    void openAnswersToItsShortcut()
    {
        MainWindowTester tester;
        tester.start();
        QVERIFY(QTest::qWaitForWindowActive(tester.window.get()));
        saveThreePatients(tester, "three.xlsx");
        tester.answers.expect<QFileDialog>([](QFileDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Open file");
            QCOMPARE(dialog.nameFilters(), texts({"Xlsx document (*.xlsx)"}));
            dialog.reject();
        });
        QTest::keyClick(tester.window.get(), Qt::Key_O, Qt::ControlModifier);
        QCOMPARE(tester.answers.unexpected(), QStringList());
    }

    void cancelledOpenChangesNothing()
    {
        MainWindowTester tester;
        tester.start();
        tester.answers.expectAndCancel();
        tester.trigger("Open File");
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(!tester.action("Close file")->isEnabled());

        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        tester.patientTable()->selectRow(1);
        tester.patientsModel()->patients[2].idealKvadrant = 2;
        auto *subWindow = tester.window->findChild<QMdiArea *>()->addSubWindow(new QWidget);
        subWindow->show();
        const CPatientsModel *model = tester.patientsModel();
        tester.answers.expectAndCancel();
        tester.trigger("Open File");
        QCOMPARE(tester.patientsModel(), model);
        QCOMPARE(tester.patientTable()->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(tester.patientsModel()->patients.at(2).idealKvadrant, 2);
        QVERIFY(subWindow->isVisible());
        QCOMPARE(tester.window->findChild<QMdiArea *>()->subWindowList().size(), 1);
        QCOMPARE(tester.answers.unexpected(), QStringList());
    }

    void secondOpenReplacesTheFirst()
    {
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        TestWorkbooks::save(tester.path("one.xlsx"), {{"only", 40.0, 50.0}});
        tester.open("three.xlsx");
        tester.patientsModel()->patients[0].idealKvadrant = 3;
        tester.patientTable()->selectRow(0);
        auto *subWindow = tester.window->findChild<QMdiArea *>()->addSubWindow(new QWidget);
        subWindow->show();

        QSignalSpy patientsGone(tester.patientsModel(), &QObject::destroyed);
        QSignalSpy scoresGone(tester.scoreModel(), &QObject::destroyed);
        tester.open("one.xlsx");
        QCOMPARE(patientsGone.size(), 1);
        QCOMPARE(scoresGone.size(), 1);
        // One patient is on every center.
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), texts({"only W/W"}));
        QCOMPARE(tester.patientsModel()->patients.first().idealKvadrant, -1);
        QVERIFY(!tester.patientTable()->selectionModel()->hasSelection());
        QVERIFY(subWindow->isVisible());

        tester.trigger("Close file");
        QVERIFY(!subWindow->isVisible());
        QCOMPARE(tester.answers.unexpected(), QStringList());
    }

    void closeEmptiesEverything()
    {
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        const QStringList labels = tester.labelTexts();
        tester.patientsModel()->patients[1].idealKvadrant = 2;
        const auto &patients = tester.patientsModel()->patients;
        const auto &scores = tester.patientsModel()->scores;
        tester.trigger("Close file");
        QCOMPARE(patients.size(), 0);
        QCOMPARE(scores.size(), 0);
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(tester.scoreModel() == nullptr);
        QVERIFY(!tester.action("Close file")->isEnabled());
        QVERIFY(!tester.button("Show graph")->isEnabled());
        QVERIFY(!tester.button("Reset selection")->isEnabled());
        QCOMPARE(tester.labelTexts(), labels);

        tester.open("three.xlsx");
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()),
                 texts({"falling B/W", "level W/B", "rising W/W"}));
        for (const PatientRecord &patient : tester.patientsModel()->patients) {
            QCOMPARE(patient.idealKvadrant, -1);
        }
        QVERIFY(tester.action("Close file")->isEnabled());
    }

    void closeShortcutNeedsAFile()
    {
        MainWindowTester tester;
        tester.start();
        QVERIFY(QTest::qWaitForWindowActive(tester.window.get()));
        QSignalSpy closed(tester.action("Close file"), &QAction::triggered);
        QTest::keyClick(tester.window.get(), Qt::Key_H, Qt::ControlModifier);
        QCOMPARE(closed.size(), 0);
        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
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
            << "Open file|This workbook has no patients: column 1 of row 2 is empty. Nothing "
               "was "
               "opened.\n\nbad.xlsx";
        QTest::newRow("one value, no value, and a 0 at once")
            << QVector<TestWorkbooks::Row>{{"good", 40.0, 50.0},
                                           {"one", 40.0},
                                           {"none"},
                                           {"zero", 40.0, 0.0, 50.0}}
            << rowsMessage("Row 3: one\nRow 4: none\nRow 5: zero", "bad.xlsx");
    }

    void refusedFileLeavesTheLoadedOne()
    {
        QFETCH(QVector<TestWorkbooks::Row>, rows);
        QFETCH(QString, message);
        MainWindowTester tester;
        tester.start();
        const QString bad = "bad.xlsx";
        TestWorkbooks::save(tester.path(bad), rows);

        tester.answers.expectFile(tester.path(bad));
        tester.answers.expectMessage();
        tester.trigger("Open File");
        QVERIFY(tester.patientsModel() == nullptr);
        QVERIFY(!tester.action("Close file")->isEnabled());

        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        tester.patientsModel()->patients[2].idealKvadrant = 4;
        tester.patientTable()->selectRow(1);
        auto *subWindow = tester.window->findChild<QMdiArea *>()->addSubWindow(new QWidget);
        subWindow->show();
        const CPatientsModel *model = tester.patientsModel();

        tester.answers.expectFile(tester.path(bad));
        tester.answers.expectMessage();
        tester.trigger("Open File");
        QCOMPARE(tester.answers.messages(), QStringList({message, message}));
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patientsModel(), model);
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()),
                 texts({"falling B/W", "level W/B", "rising W/W"}));
        QCOMPARE(tester.patientsModel()->patients.at(2).idealKvadrant, 4);
        QCOMPARE(tester.patientTable()->selectionModel()->selectedRows().size(), 1);
        QVERIFY(subWindow->isVisible());
        QVERIFY(tester.action("Close file")->isEnabled());
    }

    void eachUnreadableFileHasItsOwnSentence_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sentence");

        HandmadeWorkbook workbook;
        workbook.rows = "<row><c><v>1</v></c></row><row><c><v>2</v></c><c><v>50</v></c></row>";
        const auto bytes = [](const HandmadeWorkbook &book) {
            const QTemporaryDir folder;
            book.save(folder.filePath("book.xlsx"));
            QFile file(folder.filePath("book.xlsx"));
            return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
        };
        HandmadeWorkbook chartOnly = workbook;
        chartOnly.relationships = chartOnly.relationship("chart", "chartsheet", "chart.xml");
        chartOnly.sheets = R"(<sheet name="Chart" sheetId="1" r:id="chart"/>)";
        HandmadeWorkbook tooFar = workbook;
        tooFar.rows = R"(<row r="1048577"><c r="A1048577"><v>1</v></c></row>)";
        HandmadeWorkbook badCell = workbook;
        badCell.rows = R"(<row r="17"><c r="C17"><v>5,5</v></c></row>)";
        const QByteArray whole = bytes(workbook);

        QTest::newRow("not a workbook")
            << QByteArray("notes") << "This file is not a workbook. Nothing was opened.";
        QTest::newRow("old format") << compoundFile("Workbook")
                                    << "This is a workbook of the old kind (.xls). Save it as "
                                       ".xlsx with a spreadsheet program and open that file. "
                                       "Nothing was opened.";
        QTest::newRow("password") << compoundFile("EncryptedPackage")
                                  << "This workbook is protected by a password. Save it without "
                                     "one and open that file. Nothing was opened.";
        QTest::newRow("damaged") << whole.left(whole.size() / 2)
                                 << "This workbook is damaged (archive: it cannot be taken apart). "
                                    "Nothing was opened.";
        QTest::newRow("damaged cell")
            << bytes(badCell)
            << "This workbook is damaged (worksheet, cell C17: this is not a number). "
               "Nothing was opened.";
        QTest::newRow("no worksheet")
            << bytes(chartOnly) << "This workbook has no worksheet. Nothing was opened.";
        QTest::newRow("too large")
            << bytes(tooFar) << "This workbook is too large. Nothing was opened.";
    }

    void eachUnreadableFileHasItsOwnSentence()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, sentence);
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        const CPatientsModel *model = tester.patientsModel();
        tester.writeFile("bad.xlsx", content);
        tester.answers.expectFile(tester.path("bad.xlsx"));
        tester.answers.expectMessage();
        tester.trigger("Open File");
        QCOMPARE(tester.answers.messages(), QStringList("Open file|" + sentence + "\n\nbad.xlsx"));
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patientsModel(), model);
    }

    void refusalNamesTheFirstTenRows()
    {
        MainWindowTester tester;
        tester.start();
        QVector<TestWorkbooks::Row> rows;
        QStringList named;
        for (int i = 0; i < 13; ++i) {
            rows.append({QString("p%1").arg(i), 40.0});
            if (i < 10) {
                named << QString("Row %1: p%2").arg(i + 2).arg(i);
            }
        }
        TestWorkbooks::save(tester.path("bad.xlsx"), rows);
        tester.answers.expectFile(tester.path("bad.xlsx"));
        tester.answers.expectMessage();
        tester.trigger("Open File");
        named << "and 3 more";
        QCOMPARE(tester.answers.messages(), QStringList(rowsMessage(named.join('\n'), "bad.xlsx")));
    }

    void refusalShortensLongIdentifiers()
    {
        MainWindowTester tester;
        tester.start();
        TestWorkbooks::save(tester.path("bad.xlsx"),
                            {{QString(5000, 'x') + "\nend", 40.0}, {"<b>bold</b>", 40.0}});
        tester.answers.expectFile(tester.path("bad.xlsx"));
        tester.answers.expect<QMessageBox>([](QMessageBox &box) {
            QVERIFY2(!Qt::mightBeRichText(box.text()), "the identifier would be taken for markup");
            QVERIFY(box.text().contains("Row 3: <b>bold</b>"));
            QVERIFY(box.text().size() < 300);
            box.accept();
        });
        tester.trigger("Open File");
        QCOMPARE(tester.answers.unexpected(), QStringList());
    }

    void refusalCutsNoCharacterInTwo_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("kept");
        // The limit of 60 falls before a pair, into it and behind it.
        QTest::newRow("before a pair") << 60 << 60;
        QTest::newRow("into a pair") << 59 << 59;
        QTest::newRow("behind a pair") << 58 << 60;
    }

    void refusalCutsNoCharacterInTwo()
    {
        QFETCH(const int, before);
        QFETCH(const int, kept);
        MainWindowTester tester;
        tester.start();
        const QString identifier = QString(before, 'x') + "\U0001F600" + "tail";
        TestWorkbooks::save(tester.path("bad.xlsx"), {{identifier, 40.0}});
        tester.answers.expectFile(tester.path("bad.xlsx"));
        tester.answers.expectMessage();
        tester.trigger("Open File");
        const QString row = "Row 2: " + identifier.left(kept) + "\u2026";
        QCOMPARE(tester.answers.messages(), QStringList(rowsMessage(row, "bad.xlsx")));
    }

    void windowMayCloseWithAFileOpen()
    {
        MainWindowTester tester;
        tester.start();
        saveThreePatients(tester, "three.xlsx");
        tester.open("three.xlsx");
        QSignalSpy gone(tester.patientsModel(), &QObject::destroyed);
        tester.window->close();
        tester.window.reset();
        QCOMPARE(gone.size(), 1);
    }

    void exitEndsTheProgram()
    {
        MainWindowTester tester;
        tester.start();
        QTimer::singleShot(0, tester.window.get(), [&tester] { tester.trigger("Exit"); });
        constexpr int stillRunning = 17;
        QTimer watchdog;
        connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(stillRunning); });
        watchdog.start(10000);
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        MainWindowTester tester;
        tester.start();
        const QString name = QTest::currentDataTag();
        QVERIFY(QFile::copy(SAMPLES_DIR "/" + name, tester.path(name)));
        tester.open(name);
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.patientsModel()->patients.size(), patients);
        for (const PatientRecord &patient : tester.patientsModel()->patients) {
            QVERIFY(patient.values.size() >= 5);
            QVERIFY(patient.values.size() <= 24);
            for (const double value : patient.values) {
                QVERIFY(value >= 30 && value <= 120);
            }
        }
    }

    void fiftyOpensLeaveTheMemoryFlat()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the address sanitizer keeps freed memory");
#endif
        MainWindowTester tester;
        tester.start();
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
            QCOMPARE(tester.patientsModel()->patients.size(), 300);
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
