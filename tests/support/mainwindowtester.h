// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QAction>
#include <QDir>
#include <QTableView>

#include "mainwindow.h"
#include "support/modalanswers.h"
#include "support/workingfolder.h"
#include "tables/cpatientscore.h"
#include "tables/cpatientsmodel.h"

/// A main window in a folder of its own, and the ways in which a user reaches what it holds.
class MainWindowTester
{
public:
    /// Works in a fresh folder, with \p config as its "config.ini"; null for none.
    explicit MainWindowTester(const QByteArray &config = settingsText());
    ~MainWindowTester();
    Q_DISABLE_COPY_MOVE(MainWindowTester)

    /// Path of \p name in the working directory.
    QString path(const QString &name) const { return folder.filePath(name); }
    void writeFile(const QString &name, const QByteArray &content) const
    {
        folder.writeFile(name, content);
    }
    QByteArray readFile(const QString &name) const { return folder.readFile(name); }

    /// Makes the window; its messages at start go to answers.
    void start();
    QAction *action(const QString &text) const;
    /// Triggers the menu entry \p text.
    void trigger(const QString &text) const { action(text)->trigger(); }
    /// Opens \p fileName through the file dialog.
    void open(const QString &fileName);

    QTableView *patientTable() const;
    QTableView *scoreTable() const;
    CPatientsModel *patientsModel() const;
    CPatientScore *scoreModel() const;
    QPushButton *button(const QString &text) const;
    /// Texts of all labels, in the order in which the window was built.
    QStringList labelTexts() const;
    /// The texts of a table, row by row, cells joined by blanks.
    static QStringList tableTexts(const QTableView &table);

    WorkingFolder folder;
    ModalAnswers answers;
    std::unique_ptr<MainWindow> window;
};
