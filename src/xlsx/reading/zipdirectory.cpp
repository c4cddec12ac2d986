// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zipdirectory.h"

#include <QtEndian>

namespace
{

constexpr const char *unreadable = QT_TRANSLATE_NOOP("MainWindow", "it cannot be read");

constexpr int headerSize = 30;
constexpr int entrySize = 46;
constexpr int endSize = 22;
constexpr int locatorSize = 20;
constexpr int zip64EndSize = 56;
constexpr int longestComment = 0xffff;
constexpr quint32 inZip64 = 0xffffffff;
enum Extra { Zip64Extra = 0x0001, UnicodePathExtra = 0x7075 };

QByteArray bytesAt(QFile *file, quint64 at, int size)
{
    const bool inFile = at <= quint64(file->size()) && file->seek(qint64(at));
    const QByteArray bytes = inFile ? file->read(size) : QByteArray();
    return bytes.size() == size ? bytes : QByteArray(size, '\0');
}

template<typename Number>
quint64 number(const QByteArray &bytes, int at)
{
    return at + int(sizeof(Number)) > bytes.size()
        ? 0
        : qFromLittleEndian<Number>(bytes.constData() + at);
}

bool isSigned(const QByteArray &bytes, const char *signature)
{
    return bytes.startsWith("PK") && bytes.mid(2, 2) == signature;
}

// The contents of the extra fields \p kind among \p extras.
QVector<QByteArray> extraFields(const QByteArray &extras, Extra kind)
{
    QVector<QByteArray> found;
    for (int at = 0; at + 4 <= extras.size(); at += 4 + int(number<quint16>(extras, at + 2))) {
        if (number<quint16>(extras, at) == kind) {
            found.append(extras.mid(at + 4, int(number<quint16>(extras, at + 2))));
        }
    }
    return found;
}

// A name in Unicode that differs from \p name; empty without one.
QByteArray otherNameIn(const QByteArray &extras, const QByteArray &name)
{
    constexpr int nameAt = 5; // after a version and a checksum
    for (const QByteArray &field : extraFields(extras, UnicodePathExtra)) {
        if (field.mid(nameAt) != name) {
            return field.size() > nameAt ? field.mid(nameAt) : QByteArray("?");
        }
    }
    return {};
}

// The content of an end record, and whether a list touches it where it says so.
struct End {
    quint64 at = 0;
    quint64 size = 0;
    quint64 offset = 0;
    quint64 count = 0;
    bool reachesEnd = false;
    bool fits = false;
};

// Numbers of the zip64 record replace those of the end record, which are the same or all ones.
bool readZip64(QFile *file, quint64 locatorAt, End *end)
{
    const quint64 at = number<quint64>(bytesAt(file, locatorAt, locatorSize), 8);
    const QByteArray record = bytesAt(file, at, zip64EndSize);
    const End wide = {at, number<quint64>(record, 40), number<quint64>(record, 48),
                      number<quint64>(record, 32), end->reachesEnd};
    const bool agrees = (end->count == 0xffff || end->count == wide.count)
        && (end->size == inZip64 || end->size == wide.size)
        && (end->offset == inZip64 || end->offset == wide.offset);
    *end = wide;
    return agrees && isSigned(record, "\6\6") && number<quint64>(record, 24) == wide.count
        && number<quint64>(record, 16) == 0 && at + 12 + number<quint64>(record, 4) == locatorAt;
}

bool isListAt(QFile *file, quint64 at, quint64 size)
{
    return size == 0 || isSigned(bytesAt(file, at, 4), "\1\2");
}

End readEnd(QFile *file, quint64 at)
{
    const QByteArray record = bytesAt(file, at, endSize);
    End end = {at, number<quint32>(record, 12), number<quint32>(record, 16),
               number<quint16>(record, 10),
               at + endSize + number<quint16>(record, 20) == quint64(file->size())};
    const bool isWhole = number<quint32>(record, 4) == 0 && number<quint16>(record, 8) == end.count;
    const bool isZip64 = at >= locatorSize && isSigned(bytesAt(file, at - locatorSize, 4), "\6\7");
    const bool isRead = isWhole && (!isZip64 || readZip64(file, at - locatorSize, &end));
    end.fits = isRead && end.offset <= end.at && end.size == end.at - end.offset
        && isListAt(file, end.offset, end.size);
    return end;
}

// Whether an archive of its own ends at \p end, with offsets that count from its own beginning.
bool isOwnArchive(QFile *file, const End &end)
{
    return end.size <= end.at && isListAt(file, end.at - end.size, end.size);
}

} // namespace

LoadError ZipDirectory::read(QFile *file, qint64 largest)
{
    const int tailSize = int(qMin<qint64>(file->size(), endSize + longestComment));
    const auto tailAt = quint64(file->size() - tailSize);
    const QByteArray tail = bytesAt(file, tailAt, tailSize);
    QVector<End> ends;
    for (int at = int(tail.indexOf("PK\5\6")); at >= 0; at = int(tail.indexOf("PK\5\6", at + 1))) {
        const End end = readEnd(file, tailAt + quint64(at));
        const bool inComment = !ends.isEmpty() && ends.first().reachesEnd;
        if (end.fits || (inComment && isOwnArchive(file, end))) {
            ends.append(end);
        }
    }
    if (ends.size() != 1 || !ends.first().reachesEnd || !isSigned(bytesAt(file, 0, 4), "\3\4")) {
        return unreadable;
    }
    const End end = ends.first();
    if (end.size > quint64(largest)) {
        return LoadError::TooLarge;
    }
    m_offset = end.offset;
    return readEntries(bytesAt(file, end.offset, int(end.size)), end.count);
}

LoadError ZipDirectory::readEntries(const QByteArray &list, quint64 count)
{
    bool beginsAtFirstByte = false;
    for (int at = 0; at < list.size();) {
        const QByteArray fixed = list.mid(at, entrySize);
        const int nameSize = int(number<quint16>(fixed, 28));
        const int extraSize = int(number<quint16>(fixed, 30));
        const QByteArray extras = list.mid(at + entrySize + nameSize, extraSize);
        at += entrySize;
        Entry entry;
        entry.name = list.mid(at, nameSize);
        at += nameSize + extraSize + int(number<quint16>(fixed, 32));
        entry.otherName = otherNameIn(extras, entry.name);
        entry.isEncrypted = (number<quint16>(fixed, 8) & 1U) != 0;
        entry.method = number<quint16>(fixed, 10);
        entry.checksum = quint32(number<quint32>(fixed, 16));
        const QByteArray wide = extraFields(extras, Zip64Extra).value(0);
        int wideAt = 0;
        for (const auto &[value, place] :
             {std::pair(&entry.size, 24), {&entry.packedSize, 20}, {&entry.offset, 42}}) {
            *value = number<quint32>(fixed, place);
            if (*value == inZip64) {
                *value = number<quint64>(wide, wideAt);
                wideAt += int(sizeof *value);
            }
        }
        if (at > list.size() || !isSigned(fixed, "\1\2") || wideAt > wide.size()
            || entry.name.contains('\0')) {
            return unreadable;
        }
        beginsAtFirstByte = beginsAtFirstByte || entry.offset == 0;
        m_entries.append(entry);
    }
    return beginsAtFirstByte && count == quint64(m_entries.size()) ? LoadError()
                                                                   : LoadError(unreadable);
}

quint64 ZipDirectory::begin(QFile *file, const Entry &entry) const
{
    const QByteArray header = bytesAt(file, entry.offset, headerSize);
    const int nameSize = int(number<quint16>(header, 26));
    const int extraSize = int(number<quint16>(header, 28));
    const QByteArray rest = bytesAt(file, entry.offset + headerSize, nameSize + extraSize);
    const quint64 begin = entry.offset + headerSize + quint64(rest.size());
    const bool isConfirmed = isSigned(header, "\3\4") && rest.left(nameSize) == entry.name
        && otherNameIn(rest.mid(nameSize), entry.name).isEmpty();
    return isConfirmed && begin <= m_offset && entry.packedSize <= m_offset - begin ? begin : 0;
}
