// SPDX-License-Identifier: GPL-3.0-or-later
#include <ctime>
#include <functional>

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <sys/resource.h>

#include "support/handmadeworkbook.h"
#include "support/hostileworkbooks.h"
#include "support/workingfolder.h"
#include "xlsx/reading/workbooklimits.h"
#include "xlsx/reading/workbookloader.h"

Q_DECLARE_METATYPE(HandmadeWorkbook)
Q_DECLARE_METATYPE(LoadError::Reason)
Q_DECLARE_METATYPE(std::function<void(WorkbookLimits *, qint64)>)

namespace
{

constexpr double longestLoad = 5.0; // seconds of the processor
constexpr long largestMemory = 512L * 1024; // KiB
constexpr int mebibyte = 1024 * 1024;

// Only what users get is measured. Debug builds multiply the time, and the sanitizers keep memory
// that was given back: there files and limits have a sixteenth of their size.
#ifdef QT_NO_DEBUG
constexpr bool isMeasured = true;
constexpr int shrink = 1;
#else
constexpr bool isMeasured = false;
constexpr int shrink = 16;
#endif

WorkbookLimits shrunkLimits()
{
    WorkbookLimits limits;
    for (qint64 *limit : {&limits.directorySize, &limits.partSize, &limits.unpackedSize,
                          &limits.parserMemory, &limits.memory}) {
        *limit /= shrink;
    }
    limits.xmlItems /= shrink;
    return limits;
}

} // namespace

/// Files that are made to take time and memory.
class TestWorkbookLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostileWorkbookIsBounded_data()
    {
        QTest::addColumn<int>("index");
        const QVector<HostileWorkbook> workbooks = hostileWorkbooks(shrink);
        for (int i = 0; i < workbooks.size(); ++i) {
            QTest::newRow(workbooks.at(i).name) << i;
        }
    }

    void hostileWorkbookIsBounded()
    {
        QFETCH(const int, index);
        const HostileWorkbook workbook = hostileWorkbooks(shrink).at(index);
        workbook.save(path());
        const LoadError error = load().error;
        QVERIFY(workbook.expected || error);
        QCOMPARE(error.reason, workbook.expected.value_or(error.reason));
    }

    void oneLongTextOfAllCellsIsOneText()
    {
        constexpr int cells = 100000 / shrink;
        HandmadeWorkbook workbook;
        workbook.strings = "<si><t>" + QByteArray(32767, 'x') + "</t></si>";
        workbook.rows = QByteArray(R"(<row><c t="s"><v>0</v></c></row>)").repeated(cells);
        workbook.save(path());
        const LoadedWorkbook loaded = load();
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(cells, 1).toString().size(), 32767);
    }

    void fiftyThousandPatientsAreRead()
    {
        const QByteArray row = R"(<row><c t="inlineStr"><is><t>P</t></is></c>)"
            + QByteArray("<c><v>50.5</v></c>").repeated(20) + "</row>";
        HandmadeWorkbook workbook;
        constexpr int rows = 50000 / shrink + 1;
        workbook.rows = row.repeated(rows);
        workbook.save(path());
        const LoadedWorkbook loaded = load();
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(rows, 21).toDouble(), 50.5);
    }

    // What reaches a limit is loaded, and one more is too large.
    void limitsAreExact_data()
    {
        QTest::addColumn<Setter>("set");
        QTest::addColumn<qint64>("reached");
        const auto row = [](const char *name, qint64 reached, const Setter &set) {
            QTest::newRow(name) << set << reached;
        };
        qint64 largestPart = 0;
        qint64 largestList = 0;
        qint64 allParts = 0;
        for (const auto &part : richWorkbook().parts()) {
            const bool isList = part.first.endsWith("rels") || part.first.endsWith("workbook.xml");
            qint64 *const largest = isList ? &largestList : &largestPart;
            *largest = qMax<qint64>(*largest, part.second.size());
            allParts += part.second.size();
        }
        richWorkbook().save(path());

        row("bytes of the file", QFileInfo(path()).size(),
            [](auto *l, qint64 n) { l->fileSize = n; });
        row("bytes of a part", largestPart, [](auto *l, qint64 n) { l->partSize = n; });
        row("bytes of a list", largestList, [](auto *l, qint64 n) { l->listSize = n; });
        row("bytes of all parts", allParts, [](auto *l, qint64 n) { l->unpackedSize = n; });
        // worksheet, sheetData, row, c, v
        row("elements inside each other", 5, [](auto *l, qint64 n) { l->depth = int(n); });
        // r, t, s
        row("attributes of an element", 3, [](auto *l, qint64 n) { l->attributes = int(n); });
        row("cell formats", 4, [](auto *l, qint64 n) { l->cellFormats = int(n); });
        // number formats; there are three relationships and a sheet
        row("entries of a list", 5, [](auto *l, qint64 n) { l->listEntries = int(n); });
        // Three cells in two rows; texts of three and two letters in the table.
        const WorkbookLimits costs;
        row("memory", 3 * costs.cellCost + 2 * costs.rowCost + 2 * costs.textCost + 10,
            [](auto *l, qint64 n) { l->memory = n; });
    }

    void limitsAreExact()
    {
        QFETCH(const Setter, set);
        QFETCH(const qint64, reached);
        richWorkbook().save(path());
        WorkbookLimits limits;
        set(&limits, reached);
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::None);
        set(&limits, reached - 1);
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::TooLarge);
    }

    // The start of the first element is the first item, and the wrong one there ends the reading.
    void limitOfItemsIsExact()
    {
        HandmadeWorkbook workbook;
        workbook.more = {{"_rels/.rels", "<a/>"}};
        workbook.save(path());
        WorkbookLimits limits;
        limits.xmlItems = 1;
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::Damaged);
        limits.xmlItems = 0;
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::TooLarge);
    }

    // Lists of every kind have the same limit.
    void entriesOfEachListAreBounded_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        HandmadeWorkbook sheets;
        sheets.sheets = QByteArray(R"(<sheet name="S" sheetId="1" r:id="sheet"/>)").repeated(9);
        QTest::newRow("sheets") << sheets;
        HandmadeWorkbook relationships;
        for (int i = 0; i < 8; ++i) {
            relationships.relationships +=
                relationships.relationship("r" + QByteArray::number(i), "theme", "theme.xml");
        }
        QTest::newRow("relationships") << relationships;
        HandmadeWorkbook formats;
        formats.styles = "<numFmts>" + numberFormats(9) + "</numFmts><cellXfs><xf/></cellXfs>";
        QTest::newRow("number formats") << formats;
    }

    void entriesOfEachListAreBounded()
    {
        QFETCH(const HandmadeWorkbook, workbook);
        workbook.save(path());
        WorkbookLimits limits;
        limits.listEntries = 9;
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::None);
        limits.listEntries = 8;
        QVERIFY(loadWorkbook(path(), 1, limits).error);
    }

    // What is read later may have more bytes than that list may.
    void bytesOfPartsAreNoBytesOfTheirList()
    {
        QRandomGenerator random(1);
        HandmadeWorkbook workbook;
        while (workbook.rows.size() < mebibyte) {
            workbook.rows += "<!--" + QByteArray::number(random.generate64(), 36) + "-->";
        }
        workbook.save(path());
        WorkbookLimits limits;
        limits.directorySize = mebibyte / 4;
        QVERIFY(QFileInfo(path()).size() > limits.directorySize);
        QCOMPARE(loadWorkbook(path(), 1, limits).error.reason, LoadError::None);
    }

    // An element counts twice, with each attribute, name space, piece of text and comment once
    // more. What a tag or comment has beyond 32 bytes counts by eight of them, and the name of an
    // attribute with its namespace by 24.
    void eachItemOfXmlCounts_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<int>("items");
        QTest::newRow("element") << QByteArray("<x/>") << 2;
        QTest::newRow("element with a text") << QByteArray("<x>1</x>") << 3;
        QTest::newRow("two pieces of text") << QByteArray("<x>1&lt;</x>") << 4;
        QTest::newRow("attributes") << QByteArray("<x a='' b=''/>") << 4;
        QTest::newRow("namespace") << QByteArray("<x xmlns='u'/>") << 3;
        QTest::newRow("comment") << QByteArray("<!-- 1 -->") << 1;
        QTest::newRow("usual tag") << "<x a='" + QByteArray(24, '1') + "'/>" << 3;
        QTest::newRow("long tag") << "<x a='" + QByteArray(23 + 80, '1') + "'/>" << 3 + 10;
        QTest::newRow("long end of a tag") << "<x></x" + QByteArray(28 + 80, ' ') + ">" << 2 + 10;
        QTest::newRow("long comment") << "<!--" + QByteArray(25 + 80, '1') + "-->" << 1 + 10;
        // The name is put together of one or of 47 bytes, a line feed and one more.
        QTest::newRow("attribute with a namespace") << QByteArray("<x xmlns:u='u' u:a=''/>") << 4;
        const QByteArray uri(46, 'u');
        QTest::newRow("attribute with a long namespace")
            << "<x xmlns:u='" + uri + "' u:a=''/>" << 4 + 2 + (12 + 46 + 10 - 32) / 8;
    }

    void eachItemOfXmlCounts()
    {
        QFETCH(const QByteArray, xml);
        QFETCH(const int, items);
        HandmadeWorkbook workbook;
        const auto put = [&workbook](const QByteArray &beside) {
            workbook.more = {
                {workbook.sheetPart, workbook.part("worksheet", "<sheetData/>" + beside)}};
        };
        put({});
        const int before = neededItems(workbook);
        put(xml);
        QCOMPARE(neededItems(workbook) - before, items);
    }

private:
    using Setter = std::function<void(WorkbookLimits *, qint64)>;

    static QByteArray numberFormats(int count)
    {
        QByteArray formats;
        for (int i = 0; i < count; ++i) {
            formats += "<numFmt numFmtId='" + QByteArray::number(200 + i) + "' formatCode='0'/>";
        }
        return formats;
    }

    // Something for each limit.
    static HandmadeWorkbook richWorkbook()
    {
        HandmadeWorkbook workbook;
        workbook.rows = R"(<row><c r="A1" t="s" s="1"><v>0</v></c><c r="B1"><v>1</v></c></row>)"
                        R"(<row><c r="A2" t="s"><v>1</v></c></row>)";
        workbook.strings = "<si><t>one</t></si><si><t>ab</t></si>";
        workbook.styles =
            "<numFmts>" + numberFormats(5) + "</numFmts><cellXfs><xf/><xf/><xf/><xf/></cellXfs>";
        return workbook;
    }

    // The smallest limit of what is read of XML with which the workbook is loaded.
    int neededItems(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        WorkbookLimits limits;
        limits.xmlItems = 0;
        while (loadWorkbook(path(), 1, limits).error.reason == LoadError::TooLarge) {
            ++limits.xmlItems;
        }
        return limits.xmlItems;
    }

    QString path() const { return m_folder.filePath("book.xlsx"); }

    LoadedWorkbook load() const
    {
        const std::clock_t start = std::clock();
        LoadedWorkbook workbook = loadWorkbook(path(), 1, shrunkLimits());
        const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        qInfo("%.2f s, at most %ld MiB so far", seconds, usage.ru_maxrss / 1024);
        if (isMeasured && (seconds >= longestLoad || usage.ru_maxrss >= largestMemory)) {
            QTest::qFail("too much", __FILE__, __LINE__);
        }
        return workbook;
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookLimits)
#include "tst_workbooklimits.moc"
