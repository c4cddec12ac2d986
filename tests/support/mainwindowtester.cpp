#include "support/mainwindowtester.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include "cconfig.h"

const QByteArray MainWindowTester::defaultConfig =
    "[Method]\nConvergence = 0\nVariance = 0\n\n\n[Result]\nMedian = 1\n\n\n[Variable]\nSkip = 3\n"
    "\n\n[Info]\nShow = 1\n";

MainWindowTester::MainWindowTester(const QByteArray &config)
{
    if (!folder.isValid() || !QDir::setCurrent(folder.path())) {
        qFatal("no temporary folder");
    }
    if (!config.isNull()) {
        writeFile("config.ini", config);
    }
    CConfig::resetInstance();
}

MainWindowTester::~MainWindowTester()
{
    window.reset();
    CConfig::resetInstance();
    QDir::setCurrent(previousFolder);
}

void MainWindowTester::writeFile(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

QByteArray MainWindowTester::readFile(const QString &name) const
{
    QFile file(path(name));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
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
