// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/workbookorigin.h"

#include <QtTest>
#include <xlsxdocument.h>

#include "support/savedfiles.h"
#include "support/testgroups.h"
#include "support/workingfolder.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"

namespace
{

using Writer = void (*)(const QString &fileName, const TestGroup &group);

void writeData(const QString &fileName, const TestGroup &group)
{
    writeDataWorkbook(fileName, group.patients, group.scores);
}

void writeAnalysis(const QString &fileName, const TestGroup &group)
{
    writeAnalysisWorkbook(fileName, group.patients, group.scores, group.averageCenter,
                          group.medianCenter);
}

} // namespace

Q_DECLARE_METATYPE(Writer)

class TestWorkbookOrigin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void workbookSaysWhatMadeIt_data() { writers(); }
    void workbookSaysWhatMadeIt()
    {
        QFETCH(Writer, write);
        for (const QByteArray offset : {"0", "3", "12"}) {
            useSkip(offset);
            write("book.xlsx", TestGroup::ofSize(3));
            const QXlsx::Document book("book.xlsx");
            QStringList names = book.documentPropertyNames();
            names.sort();
            QCOMPARE(names, QStringList({"creator", "description"}));
            QCOMPARE(book.documentProperty("creator"), QString("Glymark"));
            QCOMPARE(book.documentProperty("description"),
                     QString("Glymark " PROJECT_VERSION ", offset ") + offset);
        }
    }

    void sameVersionAndSettingsGiveTheSameBytes_data() { writers(); }
    void sameVersionAndSettingsGiveTheSameBytes()
    {
        QFETCH(Writer, write);
        useSkip("3");
        const TestGroup group = TestGroup::ofSize(3);
        write("one.xlsx", group);
        const QByteArray user = qgetenv("USER");
        qputenv("USER", "somebody else");
        write("another.xlsx", group);
        qputenv("USER", user);
        const QByteArray content = SavedFiles::contentOf("one.xlsx");
        QVERIFY(content.startsWith("PK"));
        QCOMPARE(SavedFiles::contentOf("another.xlsx"), content);
        useSkip("4");
        write("another.xlsx", group);
        QVERIFY(SavedFiles::contentOf("another.xlsx") != content);
    }

private:
    static void writers()
    {
        QTest::addColumn<Writer>("write");
        QTest::newRow("data workbook") << Writer(writeData);
        QTest::newRow("analysis workbook") << Writer(writeAnalysis);
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookOrigin)
#include "tst_workbookorigin.moc"
