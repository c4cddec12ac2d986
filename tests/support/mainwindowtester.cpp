// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mainwindowtester.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

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

QAction *MainWindowTester::action(const QString &text) const
{
    const QList<QAction *> menus = window->menuBar()->actions();
    for (QAction *candidate : menus.first()->menu()->actions()) {
        if (candidate->text() == text) {
            return candidate;
        }
    }
    qFatal("no menu entry %s", qPrintable(text));
}

void MainWindowTester::open(const QString &fileName)
{
    answers.expectFile(path(fileName));
    trigger("Open File");
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
