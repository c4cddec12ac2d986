// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>

#include "support/mainwindowtester.h"

/// A window with a workbook of five patients open, and the gestures of a user on it.
class GraphTester : public MainWindowTester
{
public:
    explicit GraphTester(const QByteArray &config = settingsText());

    QMdiArea *area() const { return window->findChild<QMdiArea *>(); }
    QList<QMdiSubWindow *> subWindows() const { return area()->subWindowList(); }

    void select(const QVector<int> &rows) const;
    int selectedRows() const
    {
        return int(patientTable()->selectionModel()->selectedRows().size());
    }
    void press(const char *buttonText) const;
    /// Accepts the next name dialog after typing \p name; a null name leaves the offered one, which
    /// is noted in offeredNames.
    void expectName(const QString &name = QString());
    void makeGraph(const QVector<int> &rows, const QString &name = QString());
    /// Right-clicks the row and gives the menu that opens.
    QMenu *openMenu(int row) const;
    void mark(int row, int entry) const;
    static QList<QAction *> entriesOf(const QMenu &menu);
    /// "text" of each entry, "*" in front of a checked one, "-" for a separator.
    static QStringList lines(const QMenu &menu);
    QVector<int> marks() const;

    QStringList offeredNames;
};

/// Median or mean of five values.
double centerOfFive(QVector<double> values, bool median);
