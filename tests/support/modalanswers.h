// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <functional>

#include <QFileDialog>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVector>

/// Answers modal dialogs while a command that opens them runs.
///
/// Queue one answer per dialog before the command; each is called once, with the dialog as soon as
/// it is shown, and must close it. A dialog of another kind than expected, one that nobody expected
/// and one that its answer leaves open are closed. They fail the test when the answers go out of
/// scope, and so do answers to dialogs that never came.
class ModalAnswers : public QObject
{
    Q_OBJECT

public:
    ModalAnswers();
    ~ModalAnswers() override;
    Q_DISABLE_COPY_MOVE(ModalAnswers)

    /// The next dialog is a \p Dialog, to be handed to \p answer.
    template<typename Dialog>
    void expect(std::function<void(Dialog &)> answer)
    {
        answers.push_back([answer = std::move(answer)](QWidget &widget) {
            auto *dialog = qobject_cast<Dialog *>(&widget);
            if (dialog) {
                answer(*dialog);
            }
            return dialog != nullptr;
        });
    }

    /// The next dialog is a \p Dialog: \p meanwhile runs under it, and may open dialogs of its own,
    /// for which it queues the answers. Then \p answer closes it.
    template<typename Dialog>
    void expectInterrupted(std::function<void()> meanwhile, std::function<void(Dialog &)> answer)
    {
        expect<Dialog>(
            [meanwhile = std::move(meanwhile), answer = std::move(answer)](Dialog &dialog) {
                // From the event loop: no other dialog is answered while this one is.
                QTimer::singleShot(0, &dialog, [meanwhile, answer, &dialog] {
                    meanwhile();
                    answer(dialog);
                });
            });
    }
    /// The same for a dialog that asks for a file, and gets \p path typed in.
    void expectInterruptedFile(std::function<void()> meanwhile, const QString &path);

    /// The next dialog is a message box; its title and text are noted in messages().
    void expectMessage();
    /// The next dialog asks for a file, and gets \p path typed in.
    void expectFile(const QString &path);
    /// The next dialog is a \p Dialog, and is accepted as it is.
    template<typename Dialog>
    void expectAndAccept()
    {
        expect<Dialog>([](Dialog &dialog) { dialog.accept(); });
    }
    /// The next dialog is cancelled, whatever it is.
    void expectAndCancel();

    /// "title|text" of each answered message box.
    QStringList messages() const { return shownMessages; }
    /// What has gone wrong so far, and no longer fails the test: empty if each dialog came as
    /// expected and every answer was used.
    QStringList takeUnexpected();

private:
    void answerActive();
    void giveUpOn(QWidget &dialog);

    // After so many looks at a dialog that is still open, its answer has failed.
    static constexpr int longestPatience = 3000;

    QTimer timer;
    std::deque<std::function<bool(QWidget &)>> answers;
    QStringList shownMessages;
    QStringList problems;
    // Dialogs that are still open. Forgets one that is gone: the next may have its address.
    QVector<QPointer<QWidget>> answered;
    int patience = longestPatience;
};
