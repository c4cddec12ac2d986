// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/graphtester.h"

#include <algorithm>
#include <numeric>

#include <QApplication>
#include <QInputDialog>
#include <QPushButton>
#include <QTest>

#include "support/testworkbooks.h"

GraphTester::GraphTester(const QByteArray &config) : MainWindowTester(config)
{
    TestWorkbooks::save(path("five.xlsx"),
                        {{"a", 50.0, 60.0, 55.0, 70.0, 62.0, 61.0, 48.0},
                         {"b", 70.0, 68.0, 65.0, 66.0, 60.0, 58.0, 55.0},
                         {"c", 48.0, 52.0, 50.0, 55.0, 53.0, 58.0, 57.0, 60.0},
                         {"d", 90.0, 70.0, 60.0, 55.0, 50.0, 50.0},
                         {"e", 61.0, 60.5, 61.5, 59.0, 60.0, 64.0, 63.0}});
    start();
    open("five.xlsx");
}

void GraphTester::select(const QVector<int> &rows) const
{
    patientTable()->clearSelection();
    for (const int row : rows) {
        patientTable()->selectionModel()->select(patientTable()->model()->index(row, 0),
                                                 QItemSelectionModel::Select
                                                     | QItemSelectionModel::Rows);
    }
}

void GraphTester::press(const char *buttonText) const
{
    QTest::mouseClick(button(buttonText), Qt::LeftButton);
}

void GraphTester::expectName(const QString &name)
{
    answers.expect<QInputDialog>([this, name](QInputDialog &dialog) {
        offeredNames << dialog.textValue();
        if (!name.isNull()) {
            dialog.setTextValue(name);
        }
        dialog.accept();
    });
}

void GraphTester::makeGraph(const QVector<int> &rows, const QString &name)
{
    select(rows);
    expectName(name);
    press("Show graph");
}

QMenu *GraphTester::openMenu(int row) const
{
    const QModelIndex index = patientTable()->model()->index(row, 0);
    const QPoint pos = patientTable()->visualRect(index).center();
    // A menu takes no click of a pointer that has not moved since it opened.
    QTest::mouseMove(patientTable()->viewport(), pos);
    Q_EMIT patientTable()->customContextMenuRequested(pos);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

void GraphTester::mark(int row, int entry) const
{
    QMenu *menu = openMenu(row);
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                      menu->actionGeometry(entriesOf(*menu).at(entry)).center());
}

QList<QAction *> GraphTester::entriesOf(const QMenu &menu)
{
    QList<QAction *> entries;
    for (QAction *action : menu.actions()) {
        if (!action->isSeparator()) {
            entries << action;
        }
    }
    return entries;
}

QStringList GraphTester::lines(const QMenu &menu)
{
    QStringList all;
    for (const QAction *action : menu.actions()) {
        all << (action->isSeparator() ? "-"
                                      : QString(action->isChecked() ? "*" : "") + action->text());
    }
    return all;
}

QVector<int> GraphTester::marks() const
{
    QVector<int> all;
    for (const PatientRecord &patient : patientsModel()->patients) {
        all << patient.idealKvadrant;
    }
    return all;
}

double centerOfFive(QVector<double> values, bool median)
{
    if (values.size() != 5) {
        qFatal("no five values");
    }
    std::sort(values.begin(), values.end());
    return median ? values.at(2) : std::accumulate(values.cbegin(), values.cend(), 0.0) / 5;
}
