// SPDX-License-Identifier: GPL-3.0-or-later
#include <ctime>
#include <functional>

#include <QFile>
#include <QTest>

#include <sys/resource.h>
#include <zip.h>

#include "support/handmadeworkbook.h"
#include "support/workingfolder.h"
#include "xlsx/workbooklimits.h"
#include "xlsx/workbookloader.h"

Q_DECLARE_METATYPE(LoadError::Reason)

namespace
{

constexpr double longestLoad = 5.0; // seconds of the processor
constexpr long largestMemory = 512L * 1024; // KiB
constexpr int mebibyte = 1024 * 1024;
constexpr int lastRow = 1048576;

// A part that is never held as a whole: pieces by their number up to a null one.
using Pieces = std::function<QByteArray(int)>;

struct Stream {
    QByteArray before;
    Pieces pieces;
    QByteArray after;

    QByteArray current;
    int next = 0;
    bool ended = false;

    void restart()
    {
        current = before;
        next = 0;
        ended = false;
    }

    zip_int64_t read(char *data, zip_uint64_t size)
    {
        while (current.isEmpty() && !ended) {
            current = pieces(next++);
            ended = current.isNull();
            current = ended ? after : current;
        }
        const int count = static_cast<int>(qMin<zip_uint64_t>(size, zip_uint64_t(current.size())));
        std::copy_n(current.constData(), count, data);
        current.remove(0, count);
        return count;
    }

    static zip_int64_t call(void *self, void *data, zip_uint64_t size, zip_source_cmd_t command)
    {
        auto *const stream = static_cast<Stream *>(self);
        switch (command) {
        case ZIP_SOURCE_OPEN:
            stream->restart();
            return 0;
        case ZIP_SOURCE_READ:
            return stream->read(static_cast<char *>(data), size);
        case ZIP_SOURCE_STAT:
            zip_stat_init(static_cast<zip_stat_t *>(data));
            return sizeof(zip_stat_t);
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ,
                                                  ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                                  ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
        default:
            return 0;
        }
    }
};

Pieces repeated(const QByteArray &piece, int count)
{
    return [piece, count](int i) { return i < count ? piece : QByteArray(); };
}

} // namespace

/// Files that are made to take time and memory.
class TestWorkbookLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostileRowsAreBounded_data()
    {
        QTest::addColumn<QByteArray>("piece");
        QTest::addColumn<int>("count");
        QTest::addColumn<LoadError::Reason>("expected");
        const auto rows = [](const char *name, const QByteArray &piece, int count,
                             LoadError::Reason expected) {
            QTest::newRow(name) << piece << count << expected;
        };
        const QByteArray cell = "<c><v>1</v></c>";
        rows("cell in the last place", R"(<row r="1048576"><c r="XFD1048576"><v>1</v></c></row>)",
             1, LoadError::None);
        rows("blanks over the limit of a part", QByteArray(mebibyte, ' '), 513,
             LoadError::TooLarge);
        rows("blanks below the limit of a part", QByteArray(mebibyte, ' '), 511, LoadError::None);
        rows("a cell in each row", "<row>" + cell + "</row>", lastRow, LoadError::TooLarge);
        rows("full rows", "<row>" + cell.repeated(16384) + "</row>", 100, LoadError::TooLarge);
        rows("dates", "<row>" + QByteArray(R"(<c s="1"><v>40000</v></c>)").repeated(100) + "</row>",
             20000, LoadError::TooLarge);
        rows("long texts",
             R"(<row><c t="inlineStr"><is><t>)" + QByteArray(32767, 'x') + "</t></is></c></row>",
             12000, LoadError::TooLarge);
        rows("elements", QByteArray(R"(<x xmlns="urn:x"/>)").repeated(1024), 10000,
             LoadError::TooLarge);
        rows("ends of lines", QByteArray(mebibyte, '\n'), 100, LoadError::TooLarge);
        QByteArray row = "<row";
        for (int i = 0; i < 250; ++i) {
            row += " a" + QByteArray::number(i) + "=\"\"";
        }
        rows("rows full of attributes", (row + "/>").repeated(100), 2000, LoadError::TooLarge);
        rows("elements inside each other",
             "<row><c>" + QByteArray("<x:x xmlns:x='x'>").repeated(200), 1, LoadError::TooLarge);
        QByteArray attributes = R"(<row xmlns:x="urn:x")";
        for (int i = 0; i < 300; ++i) {
            attributes += " x:a" + QByteArray::number(i) + "=\"\"";
        }
        rows("attributes", attributes + "/>", 1, LoadError::TooLarge);
        rows("long attribute", R"(<row spans=")" + QByteArray(2 * mebibyte, '1') + R"("/>)", 1,
             LoadError::TooLarge);
        rows("long comment", "<!--" + QByteArray(2 * mebibyte, '1') + "-->", 1,
             LoadError::TooLarge);
        rows("long number",
             R"(<row r="1"><c r="B1"><v>)" + QByteArray(2 * mebibyte, '1') + "</v></c></row>", 1,
             LoadError::Damaged);
    }

    void hostileRowsAreBounded()
    {
        QFETCH(const QByteArray, piece);
        QFETCH(const int, count);
        QFETCH(const LoadError::Reason, expected);
        HandmadeWorkbook workbook;
        workbook.styles = R"(<cellXfs><xf/><xf numFmtId="14"/></cellXfs>)";
        const Pieces pieces = [&piece, count](int i) {
            if (i == 0) {
                return "<sheetData>" + piece;
            }
            return i < count ? piece : i == count ? QByteArray("</sheetData>") : QByteArray();
        };
        savePart(workbook, "xl/worksheets/sheet1.xml", "worksheet", pieces);
        QCOMPARE(load().error.reason, expected);
    }

    // The parser keeps each name that it meets.
    void hostileNamesAreBounded()
    {
        const auto names = [](int i) {
            constexpr int inPiece = 1000;
            QByteArray piece = i == 0 ? "<sheetData/>" : "";
            for (int name = i * inPiece; name < (i + 1) * inPiece; ++name) {
                piece += "<x" + QByteArray::number(name) + "/>";
            }
            return i < 3000 ? piece : QByteArray();
        };
        savePart(HandmadeWorkbook(), "xl/worksheets/sheet1.xml", "worksheet", names);
        QCOMPARE(load().error.reason, LoadError::TooLarge);
    }

    void hostileTextsAreBounded()
    {
        HandmadeWorkbook workbook;
        workbook.strings = "";
        const char *const part = "xl/sharedStrings.xml";
        savePart(workbook, part, "sst", repeated("<si/>", 9'000'000));
        QCOMPARE(load().error.reason, LoadError::TooLarge);
        savePart(workbook, part, "sst",
                 repeated("<si><t>" + QByteArray(30000, 'x') + "</t></si>", 8000));
        QCOMPARE(load().error.reason, LoadError::TooLarge);

        // One long text for a hundred thousand cells is one text.
        workbook.strings = "<si><t>" + QByteArray(32767, 'x') + "</t></si>";
        workbook.rows = QByteArray(R"(<row><c t="s"><v>0</v></c></row>)").repeated(100'000);
        workbook.save(path());
        const LoadedWorkbook loaded = load();
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(100'000, 1).toString().size(), 32767);
    }

    void hostileDirectoryIsBounded()
    {
        HandmadeWorkbook().save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        for (int i = 0; i < 60'000; ++i) {
            const QByteArray name = QByteArray::number(i).rightJustified(200, '0');
            QVERIFY(zip_file_add(archive, name.constData(), zip_source_buffer(archive, "", 0, 0), 0)
                    >= 0);
        }
        QCOMPARE(zip_close(archive), 0);
        QCOMPARE(load().error.reason, LoadError::TooLarge);
    }

    void hugeFileIsRefused()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("PK");
        QVERIFY(file.resize(workbookLimits.fileSize + 1));
        file.close();
        QCOMPARE(load().error.reason, LoadError::TooLarge);
    }

    void fiftyThousandPatientsAreRead()
    {
        const QByteArray row = R"(<row><c t="inlineStr"><is><t>P</t></is></c>)"
            + QByteArray("<c><v>50.5</v></c>").repeated(20) + "</row>";
        HandmadeWorkbook workbook;
        workbook.rows = row.repeated(50'001);
        workbook.save(path());
        const LoadedWorkbook loaded = load();
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(50'001, 21).toDouble(), 50.5);
    }

private:
    QString path() const { return m_folder.filePath("book.xlsx"); }
    // The workbook with one part in pieces instead of its own.
    void savePart(const HandmadeWorkbook &workbook, const char *part, const char *root,
                  const Pieces &pieces) const
    {
        const QByteArray mark = "--here--";
        const QByteArray frame = workbook.part(root, mark);
        Stream stream;
        stream.before = frame.left(frame.indexOf(mark));
        stream.pieces = pieces;
        stream.after = frame.mid(frame.indexOf(mark) + mark.size());
        workbook.save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        const zip_int64_t index = zip_file_add(
            archive, part, zip_source_function(archive, &Stream::call, &stream), ZIP_FL_OVERWRITE);
        QVERIFY(index >= 0);
        constexpr zip_uint32_t fastest = 1;
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE,
                                 fastest);
        QCOMPARE(zip_close(archive), 0);
    }

    LoadedWorkbook load() const
    {
        const std::clock_t start = std::clock();
        LoadedWorkbook workbook = loadWorkbook(path());
        const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        qInfo("%.2f s, at most %ld MiB so far", seconds, usage.ru_maxrss / 1024);
#ifndef __SANITIZE_ADDRESS__ // which takes time, and keeps memory that was given back
        if (seconds >= longestLoad || usage.ru_maxrss >= largestMemory) {
            QTest::qFail("too much", __FILE__, __LINE__);
        }
#endif
        return workbook;
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookLimits)
#include "tst_workbooklimits.moc"
