// SPDX-License-Identifier: GPL-3.0-or-later
#include <ctime>
#include <functional>

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <sys/resource.h>
#include <zip.h>
#define ZLIB_CONST // takes what it only reads as such
#include <zlib.h>

#include "support/handmadeworkbook.h"
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
constexpr int lastRow = 1048576;

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

// A part that is never held as a whole: pieces by their number up to a null one.
using Pieces = std::function<QByteArray(int)>;

// Small pieces are taken together.
Pieces repeated(const QByteArray &piece, int count)
{
    const int together = qMax(1, mebibyte / int(piece.size()));
    return [large = piece.repeated(together), piece, together, count](int i) {
        const int left = count - i * together;
        return left >= together ? large : left > 0 ? piece.repeated(left) : QByteArray();
    };
}

// Deflates pieces each for itself, so that one that comes again is not deflated again.
class Deflater
{
public:
    Deflater()
    {
        deflateInit2(&m_stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    }
    ~Deflater() { deflateEnd(&m_stream); }
    Q_DISABLE_COPY_MOVE(Deflater)

    QByteArray next(const QByteArray &piece)
    {
        if (piece != m_piece) {
            m_piece = piece;
            m_deflated = deflated(piece);
            m_pieceSum = crc32(0, bytes(piece), uInt(piece.size()));
        }
        m_sum = crc32_combine(m_sum, m_pieceSum, piece.size());
        m_size += piece.size();
        return m_deflated;
    }

    // What ends the whole.
    static QByteArray end() { return {"\x03\0", 2}; }

    uLong sum() const { return m_sum; }
    qint64 size() const { return m_size; }

private:
    static const Bytef *bytes(const QByteArray &from)
    {
        return reinterpret_cast<const Bytef *>(from.constData());
    }

    QByteArray deflated(const QByteArray &piece)
    {
        QByteArray to(int(deflateBound(&m_stream, uLong(piece.size()))) + 16, Qt::Uninitialized);
        m_stream.next_in = bytes(piece);
        m_stream.avail_in = uInt(piece.size());
        m_stream.next_out = reinterpret_cast<Bytef *>(to.data());
        m_stream.avail_out = uInt(to.size());
        deflate(&m_stream, Z_FULL_FLUSH);
        to.chop(int(m_stream.avail_out));
        return to;
    }

    z_stream m_stream = {};
    QByteArray m_piece;
    QByteArray m_deflated;
    uLong m_pieceSum = 0;
    uLong m_sum = 0;
    qint64 m_size = 0;
};

// Gives an archive a part that is deflated already.
struct Stream {
    QByteArray before;
    Pieces pieces;
    QByteArray after;

    Deflater deflater;
    QByteArray current;
    int taken = 0; // bytes of the current piece
    int next = -1;
    bool ended = false;

    void advance()
    {
        const QByteArray piece = next < 0 ? before : pieces(next);
        ++next;
        taken = 0;
        ended = piece.isNull();
        current = ended ? deflater.next(after) + Deflater::end() : deflater.next(piece);
    }

    zip_int64_t read(char *data, zip_uint64_t size)
    {
        while (taken == current.size() && !ended) {
            advance();
        }
        const auto left = static_cast<zip_uint64_t>(current.size() - taken);
        const int count = static_cast<int>(qMin<zip_uint64_t>(size, left));
        std::copy_n(current.constData() + taken, count, data);
        taken += count;
        return count;
    }

    zip_int64_t describe(zip_stat_t *stat) const
    {
        zip_stat_init(stat);
        stat->comp_method = ZIP_CM_DEFLATE;
        stat->valid = ZIP_STAT_COMP_METHOD;
        if (ended) {
            stat->size = static_cast<zip_uint64_t>(deflater.size());
            stat->crc = static_cast<zip_uint32_t>(deflater.sum());
            stat->valid |= ZIP_STAT_SIZE | ZIP_STAT_CRC;
        }
        return sizeof(zip_stat_t);
    }

    static zip_int64_t call(void *self, void *data, zip_uint64_t size, zip_source_cmd_t command)
    {
        auto *const stream = static_cast<Stream *>(self);
        switch (command) {
        case ZIP_SOURCE_READ:
            return stream->read(static_cast<char *>(data), size);
        case ZIP_SOURCE_STAT:
            return stream->describe(static_cast<zip_stat_t *>(data));
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ,
                                                  ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                                  ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
        default:
            return 0;
        }
    }
};

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
        QTest::addColumn<QByteArray>("around");
        const auto rows = [](const char *name, const QByteArray &piece, int count,
                             LoadError::Reason expected) {
            QTest::newRow(name) << piece << count << expected
                                << "<sheetData>" + mark() + "</sheetData>";
        };
        // Beside the rows, where everything is passed over.
        const auto beside = [](const char *name, const QByteArray &piece, int count) {
            QTest::newRow(name) << piece << count << LoadError::TooLarge << "<sheetData/>" + mark();
        };
        const QByteArray cell = "<c><v>1</v></c>";
        rows("cell in the last place", R"(<row r="1048576"><c r="XFD1048576"><v>1</v></c></row>)",
             1, LoadError::None);
        const auto largest = static_cast<int>(shrunkLimits().partSize / mebibyte);
        rows("blanks over the limit of a part", QByteArray(mebibyte, ' '), largest + 1,
             LoadError::TooLarge);
        rows("blanks below the limit of a part", QByteArray(mebibyte, ' '), largest - 1,
             LoadError::None);
        rows("a cell in each row", "<row>" + cell + "</row>", lastRow / shrink,
             LoadError::TooLarge);
        rows("full rows", "<row>" + cell.repeated(16384) + "</row>", 80 / shrink,
             LoadError::TooLarge);
        rows("dates", "<row>" + QByteArray(R"(<c s="1"><v>40000</v></c>)").repeated(100) + "</row>",
             13000 / shrink, LoadError::TooLarge);
        rows("long texts",
             R"(<row><c t="inlineStr"><is><t>)" + QByteArray(32767, 'x') + "</t></is></c></row>",
             5600 / shrink, LoadError::TooLarge);
        beside("elements", QByteArray(R"(<x xmlns="urn:x"/>)").repeated(1024), 8400 / shrink);
        rows("ends of lines", QByteArray(mebibyte, '\n'), 32 / shrink, LoadError::TooLarge);
        QByteArray many = "<x";
        QByteArray prefixed = "<x xmlns:x='" + QByteArray(92, 'u') + "'";
        for (int i = 0; i < 250; ++i) {
            many += " a" + QByteArray::number(i) + "=\"\"";
            prefixed += " x:a" + QByteArray::number(i) + "=\"\"";
        }
        beside("elements full of attributes", (many + "/>").repeated(100), 1000 / shrink);
        beside("elements full of prefixed attributes", (prefixed + "/>").repeated(100),
               1000 / shrink);
        const int megabytes = 500 / shrink;
        beside("attributes of a megabyte", "<x a='" + QByteArray(1000000, 'x') + "'/>", megabytes);
        beside("attributes of references", "<x a='" + QByteArray("&lt;").repeated(250000) + "'/>",
               megabytes);
        beside("attributes of line feeds", "<x a='" + QByteArray(1000000, '\n') + "'/>", megabytes);
        beside("comments of a megabyte", "<!--" + QByteArray(1000000, 'x') + "-->", megabytes);
        beside("elements inside each other", QByteArray("<x>").repeated(200), 1);
        beside("attributes",
               "<x" + many.mid(2) + QByteArray(many.mid(2)).replace(" a", " b") + "/>", 1);
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
        QFETCH(const QByteArray, around);
        savePart(workbook, "xl/worksheets/sheet1.xml", "worksheet", repeated(piece, count), around);
        QCOMPARE(load().error.reason, expected);
    }

    // The parser keeps each name that it meets.
    void hostileNamesAreBounded()
    {
        const auto names = [](int i) {
            constexpr int inPiece = 1000;
            QByteArray piece;
            for (int name = i * inPiece; name < (i + 1) * inPiece; ++name) {
                piece += "<x" + QByteArray::number(name) + "/>";
            }
            return i < 1600 / shrink ? piece : QByteArray();
        };
        savePart(HandmadeWorkbook(), "xl/worksheets/sheet1.xml", "worksheet", names,
                 "<sheetData/>" + mark());
        QCOMPARE(load().error.reason, LoadError::TooLarge);
    }

    void hostileTextsAreBounded()
    {
        HandmadeWorkbook workbook;
        workbook.strings = "";
        const char *const part = "xl/sharedStrings.xml";
        savePart(workbook, part, "sst", repeated("<si/>", 5600000 / shrink));
        QCOMPARE(load().error.reason, LoadError::TooLarge);
        savePart(workbook, part, "sst",
                 repeated("<si><t>" + QByteArray(30000, 'x') + "</t></si>", 5800 / shrink));
        QCOMPARE(load().error.reason, LoadError::TooLarge);

        // One long text for all cells is one text.
        constexpr int cells = 100000 / shrink;
        workbook.strings = "<si><t>" + QByteArray(32767, 'x') + "</t></si>";
        workbook.rows = QByteArray(R"(<row><c t="s"><v>0</v></c></row>)").repeated(cells);
        workbook.save(path());
        const LoadedWorkbook loaded = load();
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(cells, 1).toString().size(), 32767);
    }

    void hostileDirectoryIsBounded()
    {
        HandmadeWorkbook().save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        for (int i = 0; i < 60000 / shrink; ++i) {
            const QByteArray name = QByteArray::number(i).rightJustified(200, '0');
            QVERIFY(zip_file_add(archive, name.constData(), zip_source_buffer(archive, "", 0, 0), 0)
                    >= 0);
        }
        QCOMPARE(zip_close(archive), 0);
        QCOMPARE(load().error.reason, LoadError::TooLarge);
    }

    // Lists that take long to compare with what they name, or to choose among.
    void hostileArchiveIsBounded_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray extras = QByteArray(65535, '\0');
        const QByteArray part =
            "PK\3\4" + QByteArray(22, '\0') + le16(1) + le16(65535) + 'a' + extras;
        const auto entries = [](int count, const QByteArray &extra) {
            const QByteArray entry = "PK\1\2" + QByteArray(24, '\0') + le16(1)
                + le16(int(extra.size())) + QByteArray(14, '\0') + 'a' + extra;
            return entry.repeated(count);
        };
        const auto end = [](int count, int size, int offset, int comment) {
            return "PK\5\6" + QByteArray(4, '\0') + le16(count) + le16(count) + le16(size)
                + le16(size / 65536) + le16(offset) + le16(offset / 65536) + le16(comment);
        };
        const auto archive = [&](const QByteArray &list, int count, const QByteArray &comment) {
            return part + list + end(count, int(list.size()), int(part.size()), int(comment.size()))
                + comment;
        };
        QTest::newRow("entries of one part") << archive(entries(65000, {}), 65000, {});
        QTest::newRow("as many as there may be") << archive(entries(22000, {}), 22000, {});
        QTest::newRow("extra fields")
            << archive(entries(15, QByteArray("\1\0\0\0", 4).repeated(16000)), 15, {});
        const QByteArray list = entries(900, {});
        const int inner = int(part.size() + list.size()) + 22;
        QTest::newRow("list in the comment")
            << archive(list, 900, list + end(900, int(list.size()), inner, 0));
        QTest::newRow("end records in the comment")
            << archive(list, 900, QByteArray("PK\5\6").repeated(16000));
    }

    void hostileArchiveIsBounded()
    {
        QFETCH(const QByteArray, bytes);
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
        file.close();
        QVERIFY(load().error);
    }

    void hugeFileIsRefused()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("PK");
        QVERIFY(file.resize(WorkbookLimits().fileSize + 1));
        file.close();
        QCOMPARE(load().error.reason, LoadError::TooLarge);
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
        const auto row = [](const char *name, const Setter &set, qint64 reached) {
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

        row(
            "bytes of the file", [](auto *l, qint64 n) { l->fileSize = n; },
            QFileInfo(path()).size());
        row(
            "bytes of a part", [](auto *l, qint64 n) { l->partSize = n; }, largestPart);
        row(
            "bytes of a list", [](auto *l, qint64 n) { l->listSize = n; }, largestList);
        row(
            "bytes of all parts", [](auto *l, qint64 n) { l->unpackedSize = n; }, allParts);
        // worksheet, sheetData, row, c, v
        row(
            "elements inside each other", [](auto *l, qint64 n) { l->depth = int(n); }, 5);
        // r, t, s
        row(
            "attributes of an element", [](auto *l, qint64 n) { l->attributes = int(n); }, 3);
        row(
            "cell formats", [](auto *l, qint64 n) { l->cellFormats = int(n); }, 4);
        // number formats; there are three relationships and a sheet
        row(
            "entries of a list", [](auto *l, qint64 n) { l->listEntries = int(n); }, 5);
        // Three cells in two rows; texts of three and two letters in the table.
        const WorkbookLimits costs;
        row(
            "memory", [](auto *l, qint64 n) { l->memory = n; },
            3 * costs.cellCost + 2 * costs.rowCost + 2 * costs.textCost + 10);
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
    static QByteArray le16(int value)
    {
        return QByteArray(1, static_cast<char>(value & 0xff))
            + static_cast<char>((value >> 8) & 0xff);
    }

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

    // Where pieces stand in what is around them.
    static QByteArray mark() { return "--here--"; }

    // The workbook with one part in pieces instead of its own.
    void savePart(const HandmadeWorkbook &workbook, const char *part, const char *root,
                  const Pieces &pieces, const QByteArray &around = mark()) const
    {
        const QByteArray frame = workbook.part(root, around);
        Stream stream;
        stream.before = frame.left(frame.indexOf(mark()));
        stream.pieces = pieces;
        stream.after = frame.mid(frame.indexOf(mark()) + mark().size());
        workbook.save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        const zip_int64_t index = zip_file_add(
            archive, part, zip_source_function(archive, &Stream::call, &stream), ZIP_FL_OVERWRITE);
        QVERIFY(index >= 0);
        QCOMPARE(zip_close(archive), 0);
    }

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
