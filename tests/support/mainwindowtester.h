#pragma once

#include <memory>

#include <QAction>
#include <QDir>
#include <QTableView>
#include <QTemporaryDir>

#include "cpatientscore.h"
#include "cpatientsmodel.h"
#include "mainwindow.h"
#include "support/modalanswers.h"

/// A main window in a folder of its own, and the ways in which a user reaches what it holds.
class MainWindowTester
{
public:
    /// Makes a fresh folder the working directory, with \p config as its "config.ini".
    explicit MainWindowTester(const QByteArray &config = defaultConfig);
    ~MainWindowTester();
    Q_DISABLE_COPY_MOVE(MainWindowTester)

    /// What the program writes when there is no settings file.
    static const QByteArray defaultConfig;

    /// Path of \p name in the working directory.
    QString path(const QString &name) const { return folder.filePath(name); }
    void writeFile(const QString &name, const QByteArray &content) const;
    QByteArray readFile(const QString &name) const;

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

    QTemporaryDir folder;
    ModalAnswers answers;
    std::unique_ptr<MainWindow> window;

private:
    QString previousFolder = QDir::currentPath();
};
