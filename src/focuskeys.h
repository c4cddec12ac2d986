// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>

class QMdiArea;
class QTableView;

/// The keys that move the focus between the parts of the main window: F6 goes on from the patients
/// to the results, from there to the current graph and back to the patients; Shift+F6 goes the
/// other way. Ctrl+Tab and Ctrl+Shift+Tab, with which the toolkit goes from graph to graph, do so
/// from the tables and the buttons too.
class FocusKeys : public QObject
{
public:
    /// Each table lies in a part of its own, its parent; all lie in one window.
    FocusKeys(QTableView *patients, QTableView *results, QMdiArea *graphs);

private:
    void focusPart(int step);
    void focusOtherGraph(void (QMdiArea::*activate)());
    void focusGraph() const;
    QList<QWidget *> parts() const;

    QTableView *const patientTable;
    QTableView *const resultTable;
    QMdiArea *const graphArea;
};
