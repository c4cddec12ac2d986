// SPDX-License-Identifier: GPL-3.0-or-later
// Linked with the program's own entry: opens the workbook that GLYMARK_WORKBOOK names, shows
// everything, prints what a test needs to know about the texts, and quits.
//
//     ratio 1.5            pixels of the screen for one of the program
//     text Ok 20           the width of a text in pixels of the program, in the font of its widget
//     cut Legend           a text that has too little room
//     problem ...          something that went wrong

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTableView>
#include <QTabWidget>
#include <QTextStream>
#include <QTimer>

#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"
#include "settingsdialog.h"
#include "support/modalanswers.h"

namespace
{

constexpr QSize windowSize(1240, 900);

void print(const QString &line)
{
    QTextStream(stdout) << line << '\n';
}

void reportText(const QWidget &widget, const QString &text, bool cut)
{
    print(QString("text %1 %2").arg(text).arg(widget.fontMetrics().horizontalAdvance(text)));
    if (cut) {
        print("cut " + text);
    }
}

void report(const QLabel &label)
{
    const QSize room = label.contentsRect().size();
    const QSize needed =
        label.fontMetrics()
            .boundingRect(QRect(QPoint(), room), label.wordWrap() ? int(Qt::TextWordWrap) : 0,
                          label.text())
            .size();
    reportText(label, label.text(),
               needed.width() > room.width() || needed.height() > room.height());
}

void report(const QTableView &table)
{
    const QAbstractItemModel *model = table.model();
    for (int row = 0; model && row < model->rowCount(); ++row) {
        for (int column = 0; column < model->columnCount(); ++column) {
            const QModelIndex cell = model->index(row, column);
            const QSize needed = table.sizeHintForIndex(cell);
            reportText(table, cell.data().toString(),
                       needed.width() > table.columnWidth(column)
                           || needed.height() > table.rowHeight(row));
        }
    }
}

void report(const QHeaderView &header)
{
    const QAbstractItemModel *model = header.model();
    const bool narrow = header.sizeHint().width() > header.width();
    for (int section = 0; model && section < header.count(); ++section) {
        const bool cut = header.orientation() == Qt::Vertical
            ? narrow
            : header.sectionSizeHint(section) > header.sectionSize(section);
        reportText(header, model->headerData(section, header.orientation()).toString(), cut);
    }
}

void reportGraph(const QWidget &graph)
{
    // The positions are fixed, so the texts have room if they keep their width.
    for (const char *text : {"mmol/mol", "1234.56", "Difference standard deviation offset"}) {
        reportText(graph, text, false);
    }
}

template<typename Widget, typename Report>
void reportAll(const QWidget &window, Report reportOne)
{
    for (const Widget *widget : window.findChildren<Widget *>()) {
        if (widget->isVisible()) {
            reportOne(*widget);
        }
    }
}

void reportWindow(const QWidget &window)
{
    reportAll<QLabel>(window, [](const QLabel &label) { report(label); });
    reportAll<QTableView>(window, [](const QTableView &table) { report(table); });
    reportAll<QHeaderView>(window, [](const QHeaderView &header) { report(header); });
    reportAll<QAbstractButton>(window, [](const QAbstractButton &button) {
        if (!button.text().isEmpty()) {
            reportText(button, button.text(), button.sizeHint().width() > button.width());
        }
    });
    reportAll<QComboBox>(window, [](const QComboBox &combo) {
        reportText(combo, combo.currentText(), combo.sizeHint().width() > combo.width());
    });
    reportAll<GraphSubWindow>(window, reportGraph);
    reportAll<ResultSubWindow>(window, reportGraph);
}

class Visit : public QObject
{
public:
    explicit Visit(QObject *parent) : QObject(parent)
    {
        answers.expect<QMessageBox>([](QMessageBox &box) {
            reportWindow(box);
            box.accept();
        });
        QTimer::singleShot(0, this, &Visit::start);
    }

private:
    // Repeats until the message at the start is answered and the window is shown.
    void start()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMainWindow *>(widget) && widget->isVisible()) {
                visit(*qobject_cast<QMainWindow *>(widget));
                QCoreApplication::quit();
                return;
            }
        }
        QTimer::singleShot(10, this, &Visit::start);
    }

    void visit(QMainWindow &window)
    {
        print(QString("ratio %1").arg(window.devicePixelRatioF()));
        window.resize(windowSize);
        const QList<QAction *> actions = window.menuBar()->actions().first()->menu()->actions();
        answers.expectFile(QString::fromLocal8Bit(qgetenv("GLYMARK_WORKBOOK")));
        actions.at(0)->trigger();
        auto *patients = window.findChild<QTableView *>("patientTable");
        patients->selectAll();
        answers.expect<QInputDialog>([](QInputDialog &dialog) {
            reportWindow(dialog);
            dialog.accept();
        });
        window.findChildren<QPushButton *>().first()->click();
        reportWindow(window);
        if (auto *tabs = window.findChild<QTabWidget *>()) {
            tabs->setCurrentIndex(1);
            reportAll<ResultSubWindow>(window, reportGraph);
        } else {
            print("problem no graph");
        }
        answers.expect<SettingsDialog>([](SettingsDialog &dialog) {
            reportWindow(dialog);
            dialog.reject();
        });
        actions.at(3)->trigger();
        for (const QString &problem : answers.takeUnexpected()) {
            print("problem " + problem);
        }
    }

    ModalAnswers answers;
};

void startVisit()
{
    new Visit(QCoreApplication::instance());
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(startVisit)
