// SPDX-License-Identifier: GPL-3.0-or-later
// Linked with the program's own entry, so that a test learns what the program shows when it starts:
// prints each message box, accepts it, then prints the texts of the window and quits.

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTimer>

namespace
{

void print(const QStringList &texts)
{
    QFile out;
    if (!out.open(stdout, QFile::WriteOnly)) {
        qFatal("cannot write what is shown");
    }
    for (const QString &text : texts) {
        out.write(text.toUtf8() + '\n');
    }
}

QStringList shownTexts(const QWidget &window)
{
    QStringList texts{window.windowTitle()};
    for (const QMenuBar *bar : window.findChildren<QMenuBar *>()) {
        for (const QAction *menu : bar->actions()) {
            texts << menu->text();
            for (const QAction *action : menu->menu()->actions()) {
                texts << action->text();
            }
        }
    }
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        texts << label->text();
    }
    for (const QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        if (button->isVisible() && !button->text().isEmpty()) {
            texts << button->text();
        }
    }
    return texts;
}

void report()
{
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (box) {
        print({"box: " + box->windowTitle(), box->text(), box->button(QMessageBox::Ok)->text()});
        box->accept();
        return;
    }
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && !widget->windowTitle().isEmpty()) {
            print(shownTexts(*widget));
            QCoreApplication::quit();
        }
    }
}

void startReporting()
{
    auto *timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, timer, &report);
    timer->start(10);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(startReporting)
