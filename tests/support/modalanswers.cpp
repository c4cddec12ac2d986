// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/modalanswers.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

ModalAnswers::ModalAnswers()
{
    timer.setInterval(1);
    connect(&timer, &QTimer::timeout, this, &ModalAnswers::answerActive);
    timer.start();
}

ModalAnswers::~ModalAnswers()
{
    const QStringList all = takeUnexpected();
    QVERIFY2(all.isEmpty(), qPrintable(all.join(", ")));
}

void ModalAnswers::expectMessage()
{
    expect<QMessageBox>([this](QMessageBox &box) {
        shownMessages << box.windowTitle() + '|' + box.text();
        box.button(QMessageBox::Ok)->click();
    });
}

void ModalAnswers::expectFile(const QString &path)
{
    expect<QFileDialog>([path](QFileDialog &dialog) {
        dialog.findChild<QLineEdit *>("fileNameEdit")->setText(path);
        // From the event loop, so that the question whether to replace the file can be answered.
        QTimer::singleShot(0, &dialog, [&dialog] {
            QMetaObject::invokeMethod(&dialog, "accept");
            // A dialog that refuses the name would wait forever.
            if (dialog.isVisible()) {
                dialog.reject();
            }
        });
    });
}

void ModalAnswers::expectInterruptedFile(std::function<void()> meanwhile, const QString &path)
{
    expectInterrupted<QFileDialog>(std::move(meanwhile), [path](QFileDialog &dialog) {
        dialog.findChild<QLineEdit *>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(&dialog, "accept");
    });
}

void ModalAnswers::expectAndCancel()
{
    expect<QDialog>([](QDialog &dialog) { dialog.reject(); });
}

QStringList ModalAnswers::takeUnexpected()
{
    QStringList all;
    all.swap(problems);
    if (!answers.empty()) {
        all << QString("%1 dialogs did not come").arg(answers.size());
        answers.clear();
    }
    return all;
}

void ModalAnswers::answerActive()
{
    QWidget *active = QApplication::activeModalWidget();
    if (!active || !active->isVisible()) {
        return;
    }
    answered.removeAll(nullptr);
    if (answered.contains(active)) {
        giveUpOn(*active);
        return;
    }
    answered.append(active);
    patience = longestPatience;
    if (answers.empty()) {
        problems << QString("unexpected: %1").arg(active->windowTitle());
        active->close();
        return;
    }
    const auto answer = answers.front();
    answers.pop_front();
    const QString title = active->windowTitle();
    if (!answer(*active)) {
        problems << QString("another kind: %1").arg(title);
        active->close();
    }
}

void ModalAnswers::giveUpOn(QWidget &dialog)
{
    if (--patience == 0) {
        problems << QString("left open: %1").arg(dialog.windowTitle());
        dialog.close();
    }
}
