// SPDX-License-Identifier: GPL-3.0-or-later
#include <QGuiApplication>
#include <QMessageBox>
#include <QtTest>

#include "support/mainwindowtester.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"
#include "xlsx/reading/workbookloader.h"

namespace
{

constexpr int noCursor = -1;

int cursorNow()
{
    const QCursor *cursor = QGuiApplication::overrideCursor();
    return cursor == nullptr ? noCursor : int(cursor->shape());
}

// The cursor at each call of what follows.
QVector<int> seen;

} // namespace

// These three take the place of the program's own, which take their time.
LoadedWorkbook loadWorkbook(const QString &path, int /*textColumn*/,
                            const WorkbookLimits & /*limits*/)
{
    seen.append(cursorNow());
    if (path.endsWith("damaged.xlsx")) {
        return {nullptr, LoadError::Damaged};
    }
    auto document = std::make_unique<QXlsx::Document>();
    document->write(2, 1, "a");
    document->write(2, 2, 50.0);
    document->write(2, 3, 60.0);
    return {std::move(document), {}};
}

bool writeDataWorkbook(const QString & /*fileName*/, const QVector<PatientRecord> & /*patients*/,
                       const QVector<PatientScoreRecord> & /*scores*/)
{
    seen.append(cursorNow());
    return true;
}

void writeAnalysisWorkbook(const QString & /*fileName*/,
                           const QVector<PatientRecord> & /*patients*/,
                           const QVector<PatientScoreRecord> & /*scores*/,
                           const PatientScoreRecord & /*averageCenter*/,
                           const PatientScoreRecord & /*medianCenter*/)
{
    seen.append(cursorNow());
}

class TestWaitingCursor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { seen.clear(); }

    void openingWaitsToItsEnd()
    {
        MainWindowTester tester;
        tester.start();
        // Comes last.
        QObject::connect(tester.action("Close file"), &QAction::changed, this,
                         [] { seen.append(cursorNow()); });
        tester.writeFile("good.xlsx", "");
        tester.open("good.xlsx");
        QCOMPARE(tester.patientsModel()->patients.size(), 1);
        QCOMPARE(seen, QVector<int>({Qt::WaitCursor, Qt::WaitCursor}));
        QCOMPARE(cursorNow(), noCursor);
    }

    void refusalComesWithTheUsualCursor()
    {
        MainWindowTester tester;
        tester.start();
        tester.writeFile("damaged.xlsx", "");
        tester.answers.expectFile(tester.path("damaged.xlsx"));
        tester.answers.expect<QMessageBox>([](QMessageBox &box) {
            seen.append(cursorNow());
            box.accept();
        });
        tester.trigger("Open File");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(seen, QVector<int>({Qt::WaitCursor, noCursor}));
        QCOMPARE(cursorNow(), noCursor);
    }

    void savingWaits_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("data workbook") << "Save file";
        QTest::newRow("analysis workbook") << "Save data analysis";
    }

    void savingWaits()
    {
        QFETCH(QString, command);
        MainWindowTester tester;
        tester.start();
        tester.writeFile("good.xlsx", "");
        tester.open("good.xlsx");
        seen.clear();
        tester.answers.expect<QFileDialog>([&tester](QFileDialog &dialog) {
            seen.append(cursorNow());
            dialog.selectFile(tester.path("out.xlsx"));
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        tester.trigger(command);
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(seen, QVector<int>({noCursor, Qt::WaitCursor}));
        QCOMPARE(cursorNow(), noCursor);
    }
};

QTEST_MAIN(TestWaitingCursor)
#include "tst_waitingcursor.moc"
