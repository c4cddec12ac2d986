// SPDX-License-Identifier: GPL-3.0-or-later
#include <QFileDialog>
#include <QTest>

#include "support/mainwindowtester.h"

/// The toolkit remembers the folder of the last dialog while the program runs, so this test is a
/// program of its own.
class TestFirstDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstDialogStartsInTheWorkingDirectory()
    {
        StartedTester tester;
        QString directory;
        tester.answers.expect<QFileDialog>([&directory](QFileDialog &dialog) {
            directory = dialog.directory().canonicalPath();
            dialog.reject();
        });
        tester.trigger("Open File");
        QCOMPARE(directory, QDir(tester.folder.path()).canonicalPath());
    }
};

QTEST_MAIN(TestFirstDialog)
#include "tst_firstdialog.moc"
