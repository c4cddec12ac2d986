// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QAction>
#include <QDir>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTableView>

#include "mainwindow.h"
#include "support/modalanswers.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "tables/cpatientscore.h"
#include "tables/cpatientsmodel.h"

QStringList texts(std::initializer_list<const char *> list);

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
    /// The entries of the one menu.
    QList<QAction *> menuEntries() const;
    QAction *action(const QString &text) const;
    /// Triggers the menu entry \p text.
    void trigger(const QString &text) const { action(text)->trigger(); }

    /// Opens \p fileName through the file dialog, in any language.
    void open(const QString &fileName);
    /// The same for a file that is refused with a message.
    void openRefused(const QString &fileName);
    void openRefused(const QString &fileName, const QVector<TestWorkbooks::Row> &rows);
    /// Writes a workbook with one row per patient, and opens it.
    void openPatients(const QString &fileName, const QVector<TestWorkbooks::Row> &rows);
    /// Opens "two.xlsx" with the patients "a" and "b".
    void openTwoPatients();
    /// Opens "three.xlsx": "falling", "level" and "rising" with median differences -2, 0 and 5 and
    /// standard deviations 1.92029, 0 and 8.78762.
    void openThreePatients();
    bool isFileOpen() const { return action("Close file")->isEnabled(); }

    QMdiArea *area() const { return window->findChild<QMdiArea *>(); }
    QList<QMdiSubWindow *> subWindows() const { return area()->subWindowList(); }
    QTableView *patientTable() const;
    QTableView *scoreTable() const;
    CPatientsModel *patientsModel() const;
    CPatientScore *scoreModel() const;
    /// The first column of the patient table; empty without a file.
    QStringList patientIds() const;
    /// The texts of a table, row by row, cells joined by blanks.
    QStringList patientTexts() const { return tableTexts(*patientTable()); }
    QStringList scoreTexts() const { return tableTexts(*scoreTable()); }
    int selectedRows() const;
    QPushButton *button(const QString &text) const;
    /// Texts of all labels, in the order in which the window was built.
    QStringList labelTexts() const;

    /// Right-clicks the row and gives the menu that opens.
    QMenu *openMenu(int row) const;
    /// Chooses an entry of that menu: 0 is the heading, 1 to 4 are the kvadrants, 5 is none.
    void mark(int row, int entry) const;
    static QList<QAction *> entriesOf(const QMenu &menu);
    /// "text" of each entry, "*" in front of a checked one, "-" for a separator.
    static QStringList lines(const QMenu &menu);
    /// The ideal kvadrant of each patient as its menu shows it, -1 for none.
    QVector<int> idealKvadrants() const;

    WorkingFolder folder;
    ModalAnswers answers;
    std::unique_ptr<MainWindow> window;

private:
    static QStringList tableTexts(const QTableView &table);
};

/// The same with the window on the screen.
class StartedTester : public MainWindowTester
{
public:
    explicit StartedTester(const QByteArray &config = settingsText()) : MainWindowTester(config)
    {
        start();
    }
};
