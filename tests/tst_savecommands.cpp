// SPDX-License-Identifier: GPL-3.0-or-later
#include <QPushButton>
#include <QTest>
#include <xlsxdocument.h>

#include "support/mainwindowtester.h"

namespace
{

class Tester : public StartedTester
{
public:
    Tester() { openTwoPatients(); }

    /// Runs the command \p action and types \p fileName into its file dialog.
    void saveAs(const QString &action, const QString &fileName)
    {
        answers.expectFile(path(fileName));
        trigger(action);
    }
};

} // namespace

class TestSaveCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savingNeedsAFile_data() { commands_data(); }
    void savingNeedsAFile()
    {
        QFETCH(QString, action);
        StartedTester tester;
        tester.answers.expectMessage();
        tester.trigger(action);
        QCOMPARE(tester.answers.messages(), QStringList("No data|No data to save"));
    }

    void savingNeedsAFileAfterClosing_data() { commands_data(); }
    void savingNeedsAFileAfterClosing()
    {
        QFETCH(QString, action);
        Tester tester;
        tester.trigger("Close file");
        tester.answers.expectMessage();
        tester.trigger(action);
        QCOMPARE(tester.answers.messages(), QStringList("No data|No data to save"));
    }

    void fileDialogHasItsTexts_data() { commands_data(); }
    void fileDialogHasItsTexts()
    {
        QFETCH(QString, action);
        QFETCH(QString, caption);
        Tester tester;
        tester.answers.expect<QFileDialog>([caption](QFileDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), caption);
            QCOMPARE(dialog.nameFilters(), QStringList("Xlsx document (*.xlsx)"));
            QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptSave);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            dialog.reject();
        });
        tester.trigger(action);
    }

    void fileDialogStartsWhereTheLastOneEnded_data() { commands_data(); }
    void fileDialogStartsWhereTheLastOneEnded()
    {
        QFETCH(QString, action);
        Tester tester;
        const QString ward = tester.path("ward");
        QVERIFY(QDir().mkdir(ward));
        tester.answers.expect<QFileDialog>([&ward](QFileDialog &dialog) {
            dialog.setDirectory(ward);
            dialog.reject();
        });
        tester.trigger("Open File");
        QString directory;
        tester.answers.expect<QFileDialog>([&directory](QFileDialog &dialog) {
            directory = dialog.directory().canonicalPath();
            dialog.reject();
        });
        tester.trigger(action);
        QCOMPARE(directory, QDir(ward).canonicalPath());
    }

    void cancelWritesNothing_data() { commands_data(); }
    void cancelWritesNothing()
    {
        QFETCH(QString, action);
        Tester tester;
        const QStringList before = QDir(tester.folder.path()).entryList(QDir::Files);
        tester.answers.expectAndCancel();
        tester.trigger(action);
        QCOMPARE(QDir(tester.folder.path()).entryList(QDir::Files), before);
        QCOMPARE(tester.answers.messages(), QStringList());
    }

    void nameIsUsedAsTyped_data() { commands_data(); }
    void nameIsUsedAsTyped()
    {
        QFETCH(QString, action);
        QFETCH(QStringList, sheets);
        Tester tester;
        tester.saveAs(action, "no extension");
        QVERIFY(!QFile::exists(tester.path("no extension.xlsx")));
        const QXlsx::Document saved(tester.path("no extension"));
        QCOMPARE(saved.sheetNames(), sheets);
    }

    void failedSaveSaysNothingAndLosesNothing_data() { commands_data(); }
    void failedSaveSaysNothingAndLosesNothing()
    {
        QFETCH(QString, action);
        Tester tester;
        const QStringList table = tester.patientTexts();
        tester.saveAs(action, "nowhere/out.xlsx");
        QCOMPARE(tester.answers.messages(), QStringList());
        QVERIFY(!QFile::exists(tester.path("nowhere")));
        QCOMPARE(tester.patientTexts(), table);
        QVERIFY(tester.isFileOpen());
    }

    void savedDataOpensAgainAsInput()
    {
        Tester tester;
        const QStringList table = tester.patientTexts();
        const QStringList scores = tester.scoreTexts();
        tester.saveAs("Save file", "data.xlsx");
        tester.trigger("Close file");
        tester.open("data.xlsx");
        QCOMPARE(tester.patientTexts(), table);
        QCOMPARE(tester.scoreTexts(), scores);
    }

    void marksReachTheAnalysisWorkbook()
    {
        Tester tester;
        tester.mark(1, 3);
        tester.saveAs("Save data analysis", "analysis.xlsx");
        QXlsx::Document saved(tester.path("analysis.xlsx"));
        QVERIFY(saved.selectSheet("IdealCompare"));
        QCOMPARE(saved.read(2, 2).toInt(), -1);
        QCOMPARE(saved.read(3, 2).toInt(), 3);
    }

    void analysisUsesTheMediansWhateverTheSettingSays()
    {
        QByteArray average = settingsText();
        average.replace("Median = 1", "Median = 0");
        StartedTester tester(average);
        // Median differences 1, 2 and 9: on the median the middle one is worse, on the mean better.
        tester.openPatients("three.xlsx",
                            {{"a", 50.0, 51.0}, {"b", 50.0, 52.0}, {"c", 50.0, 59.0}});
        QCOMPARE(tester.patientsModel()->index(1, 1).data().toString().left(1), "B");
        tester.answers.expectFile(tester.path("analysis.xlsx"));
        tester.trigger("Save data analysis");
        QXlsx::Document saved(tester.path("analysis.xlsx"));
        QVERIFY(saved.selectSheet("Convergence&Variability"));
        QCOMPARE(saved.read(4, 1).toString(), "b");
        QCOMPARE(saved.read(4, 2).toInt(), 1);
    }

private:
    static void commands_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("sheets");
        QTest::newRow("data") << "Save file"
                              << "Save file" << QStringList({"Data", "Method result", "Graph"});
        QStringList analysis = {"Median"};
        const auto numbered = [&analysis](const char *name, int count) {
            for (int i = 1; i <= count; ++i) {
                analysis << name + QString::number(i);
            }
        };
        numbered("Compare ", 9);
        analysis << "AnovaMedian"
                 << "Convergence&Variability";
        numbered("Covergence compare ", 3);
        analysis << "ConvAnova";
        numbered("Variability compare ", 3);
        analysis << "VarAnova"
                 << "IdealCompare";
        QTest::newRow("analysis") << "Save data analysis"
                                  << "Save analysis" << analysis;
    }
};

QTEST_MAIN(TestSaveCommands)
#include "tst_savecommands.moc"
