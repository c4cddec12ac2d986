// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/hostileworkbooks.h"

#include <algorithm>

#include <QFile>

#include <zip.h>
#define ZLIB_CONST // takes what it only reads as such
#include <zlib.h>

#include "support/handmadeworkbook.h"
#include "xlsx/reading/workbooklimits.h"

namespace
{

constexpr int mebibyte = 1024 * 1024;
constexpr int lastRow = 1048576;

// A part that is never held as a whole: pieces by their number up to a null one.
using Pieces = std::function<QByteArray(int)>;

// Small pieces are taken together.
Pieces repeated(const QByteArray &piece, int count)
{
    const int together = qMax(1, mebibyte / int(piece.size()));
    return [piece, together, count](int i) {
        return piece.repeated(qBound(0, count - i * together, together));
    };
}

// Where pieces stand in what is around them.
const QByteArray mark = "--here--";

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

// Writes the workbook with one part in pieces instead of its own.
void savePart(const QString &path, const HandmadeWorkbook &workbook, const QByteArray &part,
              const QByteArray &frame, const Pieces &pieces)
{
    Stream stream;
    stream.before = frame.left(frame.indexOf(mark));
    stream.pieces = pieces;
    stream.after = frame.mid(frame.indexOf(mark) + mark.size());
    workbook.save(path);
    zip_t *const archive = zip_open(qPrintable(path), 0, nullptr);
    if (archive == nullptr
        || zip_file_add(archive, part.constData(),
                        zip_source_function(archive, &Stream::call, &stream), ZIP_FL_OVERWRITE)
            < 0
        || zip_close(archive) != 0) {
        qFatal("%s cannot be written", qPrintable(path));
    }
}

void saveBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || file.write(bytes) != bytes.size()) {
        qFatal("%s cannot be written", qPrintable(path));
    }
}

// A worksheet in pieces, which stand at the mark in \p content.
HostileWorkbook sheet(const char *name, const QByteArray &content, const Pieces &pieces,
                      LoadError::Reason expected)
{
    const auto save = [content, pieces](const QString &path) {
        HandmadeWorkbook workbook;
        workbook.styles = R"(<cellXfs><xf/><xf numFmtId="14"/></cellXfs>)";
        savePart(path, workbook, "xl/worksheets/sheet1.xml", workbook.part("worksheet", content),
                 pieces);
    };
    return {name, save, expected};
}

HostileWorkbook rows(const char *name, const QByteArray &piece, int count,
                     LoadError::Reason expected = LoadError::TooLarge)
{
    return sheet(name, "<sheetData>" + mark + "</sheetData>", repeated(piece, count), expected);
}

// Beside the rows, where everything is passed over.
HostileWorkbook beside(const char *name, const QByteArray &piece, int count)
{
    return sheet(name, "<sheetData/>" + mark, repeated(piece, count), LoadError::TooLarge);
}

HostileWorkbook texts(const char *name, const QByteArray &piece, int count)
{
    const auto save = [piece, count](const QString &path) {
        HandmadeWorkbook workbook;
        workbook.strings = "";
        savePart(path, workbook, "xl/sharedStrings.xml", workbook.part("sst", mark),
                 repeated(piece, count));
    };
    return {name, save, LoadError::TooLarge};
}

QByteArray inlineText(const QByteArray &text)
{
    return R"(<row><c t="inlineStr"><is><t>)" + text + "</t></is></c></row>";
}

QVector<HostileWorkbook> hostileRows(int shrink)
{
    const QByteArray cell = "<c><v>1</v></c>";
    const auto largest = int(WorkbookLimits().partSize / mebibyte / shrink);
    return {
        rows("cell in the last place", R"(<row r="1048576"><c r="XFD1048576"><v>1</v></c></row>)",
             1, LoadError::None),
        rows("blanks over the limit of a part", QByteArray(mebibyte, ' '), largest + 1),
        rows("blanks below the limit of a part", QByteArray(mebibyte, ' '), largest - 1,
             LoadError::None),
        rows("ends of lines", QByteArray(mebibyte, '\n'), 32 / shrink),
        rows("a cell in each row", "<row>" + cell + "</row>", lastRow / shrink),
        rows("full rows", "<row>" + cell.repeated(16384) + "</row>", 80 / shrink),
        rows("dates", "<row>" + QByteArray(R"(<c s="1"><v>40000</v></c>)").repeated(100) + "</row>",
             13000 / shrink),
        rows("numbers in full", "<row><c><v>1e308</v></c></row>", lastRow / shrink),
        rows("long texts", inlineText(QByteArray(32767, 'x')), 5600 / shrink),
        rows("texts of escapes", inlineText(QByteArray("_x0041_").repeated(37000)), 2000 / shrink,
             LoadError::None),
        rows("long attribute", R"(<row spans=")" + QByteArray(2 * mebibyte, '1') + R"("/>)", 1),
        rows("long comment", "<!--" + QByteArray(2 * mebibyte, '1') + "-->", 1),
        rows("long number",
             R"(<row r="1"><c r="B1"><v>)" + QByteArray(2 * mebibyte, '1') + "</v></c></row>", 1,
             LoadError::Damaged),
    };
}

// An element with \p count attributes whose names begin with \p prefix.
QByteArray attributes(const QByteArray &prefix, int count)
{
    QByteArray list;
    for (int i = 0; i < count; ++i) {
        list += ' ' + prefix + QByteArray::number(i) + "=\"\"";
    }
    return list;
}

// The parser keeps each name that it meets.
HostileWorkbook differentNames(int shrink)
{
    const auto names = [shrink](int i) {
        constexpr int inPiece = 1000;
        QByteArray piece;
        for (int name = i * inPiece; name < (i + 1) * inPiece; ++name) {
            piece += "<x" + QByteArray::number(name) + "/>";
        }
        return i < 1600 / shrink ? piece : QByteArray();
    };
    return sheet("different names", "<sheetData/>" + mark, names, LoadError::TooLarge);
}

QVector<HostileWorkbook> hostileMarkup(int shrink)
{
    const QByteArray many = "<x" + attributes("a", 250);
    const QByteArray prefixed =
        "<x xmlns:x='" + QByteArray(92, 'u') + "'" + attributes("x:a", 250) + "/>";
    const int megabytes = 500 / shrink;
    return {
        differentNames(shrink),
        beside("elements", QByteArray(R"(<x xmlns="urn:x"/>)").repeated(1024), 8400 / shrink),
        beside("elements inside each other", QByteArray("<x>").repeated(200), 1),
        beside("elements full of attributes", (many + "/>").repeated(100), 1000 / shrink),
        beside("elements full of prefixed attributes", prefixed.repeated(100), 1000 / shrink),
        beside("more attributes than there may be", many + attributes("b", 250) + "/>", 1),
        beside("attributes of a megabyte", "<x a='" + QByteArray(1000000, 'x') + "'/>", megabytes),
        beside("attributes of references", "<x a='" + QByteArray("&lt;").repeated(250000) + "'/>",
               megabytes),
        beside("attributes of line feeds", "<x a='" + QByteArray(1000000, '\n') + "'/>", megabytes),
        beside("comments of a megabyte", "<!--" + QByteArray(1000000, 'x') + "-->", megabytes),
    };
}

QByteArray le16(int value)
{
    return QByteArray(1, static_cast<char>(value & 0xff)) + static_cast<char>((value >> 8) & 0xff);
}

// Entries of a list that all lead to one part.
QByteArray entries(int count, const QByteArray &extra = {})
{
    const QByteArray entry = "PK\1\2" + QByteArray(24, '\0') + le16(1) + le16(int(extra.size()))
        + QByteArray(14, '\0') + 'a' + extra;
    return entry.repeated(count);
}

QByteArray end(int count, int size, int offset, int comment)
{
    return "PK\5\6" + QByteArray(4, '\0') + le16(count) + le16(count) + le16(size)
        + le16(size / 65536) + le16(offset) + le16(offset / 65536) + le16(comment);
}

// Lists that take long to compare with what they name, or to choose among.
HostileWorkbook list(const char *name, const QByteArray &list, int count,
                     const QByteArray &comment = {})
{
    const QByteArray part =
        "PK\3\4" + QByteArray(22, '\0') + le16(1) + le16(65535) + 'a' + QByteArray(65535, '\0');
    const QByteArray bytes =
        part + list + end(count, int(list.size()), int(part.size()), int(comment.size())) + comment;
    return {name, [bytes](const QString &path) { saveBytes(path, bytes); }, {}};
}

void saveLongNames(const QString &path, int count)
{
    HandmadeWorkbook().save(path);
    zip_t *const archive = zip_open(qPrintable(path), 0, nullptr);
    for (int i = 0; i < count; ++i) {
        const QByteArray name = QByteArray::number(i).rightJustified(200, '0');
        zip_file_add(archive, name.constData(), zip_source_buffer(archive, "", 0, 0), 0);
    }
    if (zip_close(archive) != 0) {
        qFatal("%s cannot be written", qPrintable(path));
    }
}

void saveHugeFile(const QString &path)
{
    saveBytes(path, "PK");
    QFile::resize(path, WorkbookLimits().fileSize + 1);
}

QVector<HostileWorkbook> hostileArchives(int shrink)
{
    const QByteArray few = entries(900);
    const int inner = 30 + 1 + 65535 + int(few.size()) + 22; // where the comment begins
    return {
        {"huge file", saveHugeFile, LoadError::TooLarge},
        {"parts with long names",
         [shrink](const QString &path) { saveLongNames(path, 60000 / shrink); },
         LoadError::TooLarge},
        list("entries of one part", entries(65000), 65000),
        list("as many entries as there may be", entries(22000), 22000),
        list("extra fields", entries(15, QByteArray("\1\0\0\0", 4).repeated(16000)), 15),
        list("list in the comment", few, 900, few + end(900, int(few.size()), inner, 0)),
        list("end records in the comment", few, 900, QByteArray("PK\5\6").repeated(16000)),
    };
}

} // namespace

QVector<HostileWorkbook> hostileWorkbooks(int shrink)
{
    return hostileRows(shrink) + hostileMarkup(shrink)
        + QVector<HostileWorkbook>{
            texts("empty texts of the table", "<si/>", 5600000 / shrink),
            texts("long texts of the table",
                  "<si><t>" + QByteArray(30000, 'x') + "</t></si>", 5800 / shrink),
        }
        + hostileArchives(shrink);
}
