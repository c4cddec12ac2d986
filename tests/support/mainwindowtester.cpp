// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mainwindowtester.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList all;
    for (const char *text : list) {
        all << text;
    }
    return all;
}

MainWindowTester::MainWindowTester(const QByteArray &config)
{
    if (!config.isNull()) {
        useSettings(config);
    }
}

MainWindowTester::~MainWindowTester()
{
    window.reset();
}

void MainWindowTester::start()
{
    window = std::make_unique<MainWindow>();
    window->show();
}

QList<QAction *> MainWindowTester::menuEntries() const
{
    return window->menuBar()->actions().constFirst()->menu()->actions();
}

QAction *MainWindowTester::action(const QString &text) const
{
    for (QAction *entry : menuEntries()) {
        if (entry->text() == text) {
            return entry;
        }
    }
    qFatal("no menu entry %s", qPrintable(text));
}

void MainWindowTester::open(const QString &fileName)
{
    answers.expectFile(path(fileName));
    menuEntries().constFirst()->trigger();
}

void MainWindowTester::openRefused(const QString &fileName)
{
    answers.expectFile(path(fileName));
    answers.expectMessage();
    menuEntries().constFirst()->trigger();
}

void MainWindowTester::openRefused(const QString &fileName, const QVector<TestWorkbooks::Row> &rows)
{
    TestWorkbooks::save(path(fileName), rows);
    openRefused(fileName);
}

void MainWindowTester::openPatients(const QString &fileName,
                                    const QVector<TestWorkbooks::Row> &rows)
{
    TestWorkbooks::save(path(fileName), rows);
    open(fileName);
}

void MainWindowTester::openTwoPatients()
{
    openPatients("two.xlsx", {{"a", 50.0, 60.0, 55.0, 70.0}, {"b", 70.0, 68.0, 65.0, 66.0}});
}

void MainWindowTester::openThreePatients()
{
    openPatients("three.xlsx",
                 {{"falling", 52.0, 50.0, 48.0, 47.0},
                  {"level", 60.0, 60.0, 60.0, 60.0, 60.0},
                  {"rising", 40.0, 45.0, 50.0, 55.0, 60.0, 66.0}});
}

QTableView *MainWindowTester::patientTable() const
{
    return window->findChild<QTableView *>("patientTable");
}

QTableView *MainWindowTester::scoreTable() const
{
    return window->findChild<QTableView *>("scoreTable");
}

CPatientsModel *MainWindowTester::patientsModel() const
{
    return qobject_cast<CPatientsModel *>(patientTable()->model());
}

CPatientScore *MainWindowTester::scoreModel() const
{
    return qobject_cast<CPatientScore *>(scoreTable()->model());
}

QStringList MainWindowTester::patientIds() const
{
    QStringList ids;
    const QAbstractItemModel *model = patientTable()->model();
    for (int row = 0; model && row < model->rowCount(); ++row) {
        ids << model->index(row, 0).data().toString();
    }
    return ids;
}

int MainWindowTester::selectedRows() const
{
    return int(patientTable()->selectionModel()->selectedRows().size());
}

QPushButton *MainWindowTester::button(const QString &text) const
{
    for (QPushButton *candidate : window->findChildren<QPushButton *>()) {
        if (candidate->text() == text) {
            return candidate;
        }
    }
    qFatal("no button %s", qPrintable(text));
}

QStringList MainWindowTester::labelTexts() const
{
    QStringList texts;
    for (const QLabel *label : window->findChildren<QLabel *>()) {
        texts << label->text();
    }
    return texts;
}

QMenu *MainWindowTester::openMenu(int row) const
{
    const QModelIndex index = patientTable()->model()->index(row, 0);
    patientTable()->scrollTo(index);
    const QPoint pos = patientTable()->visualRect(index).center();
    // A menu ignores a click unless the pointer has moved since it opened.
    QTest::mouseMove(patientTable()->viewport(), pos);
    Q_EMIT patientTable()->customContextMenuRequested(pos);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

void MainWindowTester::mark(int row, int entry) const
{
    QMenu *menu = openMenu(row);
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                      menu->actionGeometry(entriesOf(*menu).at(entry)).center());
}

QList<QAction *> MainWindowTester::entriesOf(const QMenu &menu)
{
    QList<QAction *> entries;
    for (QAction *action : menu.actions()) {
        if (!action->isSeparator()) {
            entries << action;
        }
    }
    return entries;
}

QStringList MainWindowTester::lines(const QMenu &menu)
{
    QStringList all;
    for (const QAction *action : menu.actions()) {
        all << (action->isSeparator() ? "-"
                                      : QString(action->isChecked() ? "*" : "") + action->text());
    }
    return all;
}

QVector<int> MainWindowTester::idealKvadrants() const
{
    QVector<int> all;
    for (int row = 0; row < patientTable()->model()->rowCount(); ++row) {
        QMenu *menu = openMenu(row);
        const QList<QAction *> entries = entriesOf(*menu);
        for (int entry = 0; entry < entries.size(); ++entry) {
            if (entries.at(entry)->isChecked()) {
                all << (entry == 5 ? -1 : entry);
            }
        }
        menu->close();
    }
    return all;
}

QStringList MainWindowTester::tableTexts(const QTableView &table)
{
    QStringList rows;
    const QAbstractItemModel *model = table.model();
    for (int row = 0; model && row < model->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model->columnCount(); ++column) {
            cells << model->index(row, column).data().toString();
        }
        rows << cells.join(' ');
    }
    return rows;
}
