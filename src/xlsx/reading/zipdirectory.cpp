// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zipdirectory.h"

#include <algorithm>
#include <limits>

#include <QtEndian>

namespace
{

constexpr const char *unreadable = QT_TRANSLATE_NOOP("MainWindow", "the archive cannot be read");

constexpr int headerSize = 30;
constexpr int entrySize = 46;
constexpr int endSize = 22;
constexpr int locatorSize = 20;
constexpr int zip64EndSize = 56;
constexpr int longestComment = 0xffff;
constexpr quint32 inZip64 = 0xffffffff;
enum Method { stored = 0, deflated = 8 };
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

template<typename Number>
void put(QByteArray *bytes, int at, quint64 value)
{
    constexpr quint64 largest = std::numeric_limits<Number>::max() - 1;
    qToLittleEndian(static_cast<Number>(qMin(value, largest)), bytes->data() + at);
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

// What an end record says, and whether a list touches it where it says so.
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
    const quint64 count = number<quint64>(record, 32);
    const quint64 size = number<quint64>(record, 40);
    const quint64 offset = number<quint64>(record, 48);
    const bool agrees = (end->count == 0xffff || end->count == count)
        && (end->size == inZip64 || end->size == size)
        && (end->offset == inZip64 || end->offset == offset);
    end->at = at;
    end->count = count;
    end->size = size;
    end->offset = offset;
    return agrees && isSigned(record, "\6\6") && number<quint64>(record, 24) == count
        && number<quint64>(record, 16) == 0 && at + 12 + number<quint64>(record, 4) == locatorAt;
}

End readEnd(QFile *file, quint64 at)
{
    const QByteArray record = bytesAt(file, at, endSize);
    End end = {at, number<quint32>(record, 12), number<quint32>(record, 16),
               number<quint16>(record, 10)};
    end.reachesEnd = at + endSize + number<quint16>(record, 20) == quint64(file->size());
    const bool isWhole = number<quint32>(record, 4) == 0 && number<quint16>(record, 8) == end.count;
    const bool isZip64 = at >= locatorSize && isSigned(bytesAt(file, at - locatorSize, 4), "\6\7");
    const bool isRead = isWhole && (!isZip64 || readZip64(file, at - locatorSize, &end));
    end.fits = isRead && end.offset <= end.at && end.size == end.at - end.offset
        && (end.size == 0 || isSigned(bytesAt(file, end.offset, 4), "\1\2"));
    return end;
}

// Whether an archive of its own ends at \p end, with offsets that count from its own beginning.
bool isOwnArchive(QFile *file, const End &end)
{
    return end.size <= end.at
        && (end.size == 0 || isSigned(bytesAt(file, end.at - end.size, 4), "\1\2"));
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
        return LoadError::damaged(unreadable);
    }
    const End end = ends.first();
    if (end.size > quint64(largest)) {
        return LoadError::TooLarge;
    }
    m_offset = qint64(end.offset);
    return readEntries(bytesAt(file, end.offset, int(end.size)), end.count);
}

LoadError ZipDirectory::readEntries(const QByteArray &list, quint64 count)
{
    int at = 0;
    bool beginsAtFirstByte = false;
    while (at < list.size()) {
        Entry entry;
        entry.fixed = list.mid(at, entrySize);
        const int nameSize = int(number<quint16>(entry.fixed, 28));
        const int extraSize = int(number<quint16>(entry.fixed, 30));
        entry.name = list.mid(at + entrySize, nameSize);
        const QByteArray extras = list.mid(at + entrySize + nameSize, extraSize);
        at += entrySize + nameSize + extraSize + int(number<quint16>(entry.fixed, 32));
        entry.otherName = otherNameIn(extras, entry.name);
        entry.encrypted = (number<quint16>(entry.fixed, 8) & 1U) != 0;
        const quint64 method = number<quint16>(entry.fixed, 10);
        entry.plain = !entry.encrypted && (method == stored || method == deflated);
        const QByteArray wide = extraFields(extras, Zip64Extra).value(0);
        int wideAt = 0;
        for (const auto &[value, place] :
             {std::pair(&entry.size, 24), {&entry.packedSize, 20}, {&entry.offset, 42}}) {
            *value = number<quint32>(entry.fixed, place);
            if (*value == inZip64) {
                *value = number<quint64>(wide, wideAt);
                wideAt += int(sizeof *value);
            }
        }
        if (at > list.size() || !isSigned(entry.fixed, "\1\2") || wideAt > wide.size()
            || entry.name.contains('\0')) {
            return LoadError::damaged(unreadable);
        }
        beginsAtFirstByte = beginsAtFirstByte || entry.offset == 0;
        m_entries.append(entry);
    }
    return beginsAtFirstByte && count == quint64(m_entries.size()) ? LoadError()
                                                                   : LoadError::damaged(unreadable);
}

bool ZipDirectory::isConfirmed(QFile *file, const Entry &entry) const
{
    const QByteArray header = bytesAt(file, entry.offset, headerSize);
    const int nameSize = int(number<quint16>(header, 26));
    const int extraSize = int(number<quint16>(header, 28));
    const QByteArray rest = bytesAt(file, entry.offset + headerSize, nameSize + extraSize);
    const quint64 begin = entry.offset + headerSize + quint64(rest.size());
    return isSigned(header, "\3\4") && rest.left(nameSize) == entry.name
        && otherNameIn(rest.mid(nameSize), entry.name).isEmpty() && begin <= quint64(m_offset)
        && entry.packedSize <= quint64(m_offset) - begin;
}

QByteArray ZipDirectory::rewritten() const
{
    QByteArray list;
    for (const Entry &entry : m_entries) {
        QByteArray fixed = entry.fixed;
        if (!entry.plain) {
            put<quint32>(&fixed, 8, stored); // what is never read
        }
        put<quint32>(&fixed, 20, entry.packedSize);
        put<quint32>(&fixed, 24, entry.size);
        put<quint32>(&fixed, 30, 0); // neither extra fields nor a comment
        put<quint32>(&fixed, 42, entry.offset);
        list += fixed + entry.name;
    }
    QByteArray end = QByteArray("PK\5\6") + QByteArray(endSize - 4, '\0');
    put<quint16>(&end, 8, quint64(m_entries.size()));
    put<quint16>(&end, 10, quint64(m_entries.size()));
    put<quint32>(&end, 12, quint64(list.size()));
    put<quint32>(&end, 16, quint64(m_offset));
    return list + QByteArray(longestComment + 1024, '\0') + end;
}
