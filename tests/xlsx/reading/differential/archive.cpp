// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/archive.h"

#include <QtEndian>

#include <zlib.h>

namespace
{

constexpr quint32 localSignature = 0x04034b50;
constexpr quint32 centralSignature = 0x02014b50;
constexpr quint32 endSignature = 0x06054b50;
constexpr quint32 wideEndSignature = 0x06064b50;
constexpr quint32 locatorSignature = 0x07064b50;
constexpr quint32 descriptorSignature = 0x08074b50;
constexpr int localSize = 30;
constexpr int centralSize = 46;
constexpr int endSize = 22;
constexpr int locatorSize = 20;
constexpr quint16 deflateMethod = 8;
constexpr quint16 hasDescriptor = 8;
constexpr quint16 wideField = 0x0001;
constexpr quint16 unicodePathField = 0x7075;
constexpr quint32 seeWideField = 0xffffffff;

template<typename Number>
QByteArray little(Number number)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

quint16 short16(const QByteArray &from, qint64 at)
{
    return at + 2 > from.size() ? quint16(0) : qFromLittleEndian<quint16>(from.constData() + at);
}

quint32 long32(const QByteArray &from, qint64 at)
{
    return at + 4 > from.size() ? 0 : qFromLittleEndian<quint32>(from.constData() + at);
}

quint64 wide64(const QByteArray &from, qint64 at)
{
    return at + 8 > from.size() ? 0 : qFromLittleEndian<quint64>(from.constData() + at);
}

quint32 checksum(const QByteArray &bytes)
{
    return quint32(
        crc32(0, reinterpret_cast<const Bytef *>(bytes.constData()), uInt(bytes.size())));
}

QByteArray deflated(const QByteArray &bytes)
{
    z_stream stream = {};
    // The least memory, which would take most of the time.
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -9, 1, Z_DEFAULT_STRATEGY);
    QByteArray packed(int(deflateBound(&stream, uLong(bytes.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.constData()));
    stream.avail_in = uInt(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(int(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

// Unpacks what begins at \p at; the number of bytes that it took, or -1.
qint64 inflated(const QByteArray &file, qint64 at, QByteArray *bytes)
{
    constexpr int usual = 1 << 14;
    constexpr int largest = 1 << 20;
    z_stream stream = {};
    inflateInit2(&stream, -MAX_WBITS);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(file.constData())) + at;
    stream.avail_in = uInt(file.size() - at);
    bool whole = false;
    for (int size = usual; !whole && size <= largest; size *= 2) {
        bytes->resize(size);
        stream.next_out = reinterpret_cast<Bytef *>(bytes->data()) + stream.total_out;
        stream.avail_out = uInt(size) - uInt(stream.total_out);
        whole = inflate(&stream, Z_NO_FLUSH) == Z_STREAM_END;
    }
    bytes->truncate(int(stream.total_out));
    inflateEnd(&stream);
    return whole ? qint64(stream.total_in) : -1;
}

// The field \p id among the extra fields; null without one.
QByteArray extraField(const QByteArray &fields, quint16 id)
{
    for (int at = 0; at + 4 <= fields.size(); at += 4 + short16(fields, at + 2)) {
        if (short16(fields, at) == id) {
            return fields.mid(at + 4, short16(fields, at + 2));
        }
    }
    return {};
}

struct Placed {
    QByteArray local;
    QByteArray central;
};

Placed placed(const ArchiveEntry &entry, quint32 offset)
{
    const QByteArray packed = entry.deflated ? deflated(entry.content) : entry.content;
    const quint32 sum = checksum(entry.content);
    const auto packedSize = quint32(packed.size());
    const auto size = quint32(entry.content.size());
    const QByteArray version = little<quint16>(entry.wide ? 45 : 20);
    const quint16 method = entry.deflated ? deflateMethod : quint16(0);
    const quint16 flags = entry.descriptor ? hasDescriptor : quint16(0);
    const QByteArray time = little<quint32>(0x58210000);
    const QByteArray localName = entry.localName.isNull() ? entry.name : entry.localName;
    QByteArray localExtra = entry.localExtra;
    if (entry.wide) {
        localExtra.prepend(little(wideField) + little<quint16>(16) + little<quint64>(size)
                           + little<quint64>(packedSize));
    }
    const bool later = entry.descriptor;
    const quint32 localSum = later ? 0 : sum + entry.localChecksumError;
    const quint32 shownPacked = entry.wide ? seeWideField : later ? 0 : packedSize;
    const quint32 shownSize = entry.wide ? seeWideField : later ? 0 : size;
    Placed both;
    both.local = little(localSignature) + version + little(flags) + little(method) + time
        + little(localSum) + little(shownPacked) + little(shownSize)
        + little(quint16(localName.size())) + little(quint16(localExtra.size())) + localName
        + localExtra + packed;
    if (later) {
        both.local += little(descriptorSignature) + little(sum) + little(packedSize) + little(size);
    }
    both.central = little(centralSignature) + version + version
        + little(quint16(flags | entry.centralFlags)) + little(quint16(method + entry.methodError))
        + time + little(sum + entry.checksumError) + little(packedSize + entry.packedSizeError)
        + little(size + entry.sizeError) + little(quint16(entry.name.size()))
        + little(quint16(entry.centralExtra.size())) + QByteArray(10, '\0')
        + little(offset + entry.offsetError) + entry.name + entry.centralExtra;
    return both;
}

} // namespace

QByteArray Archive::bytes() const
{
    QByteArray all = before;
    QByteArray directory;
    quint16 count = countError;
    for (const ArchiveEntry &entry : entries) {
        const Placed both = placed(entry, quint32(all.size()));
        all += both.local;
        directory += entry.unlisted ? QByteArray() : both.central;
        count = quint16(count + (entry.unlisted ? 0 : 1));
    }
    all += beforeDirectory;
    const auto offset = quint32(all.size()) + directoryOffsetError;
    const auto size = quint32(directory.size()) + directorySizeError;
    all += directory + afterDirectory;
    if (wideEnd) {
        const auto end = quint64(all.size());
        all += little(wideEndSignature) + little<quint64>(44) + little<quint16>(45)
            + little<quint16>(45) + QByteArray(8, '\0') + little<quint64>(count)
            + little<quint64>(count) + little<quint64>(size) + little<quint64>(offset);
        all += little(locatorSignature) + little<quint32>(0) + little(end) + little<quint32>(1);
        all += little(endSignature) + QByteArray(4, '\0') + QByteArray(12, '\xff');
    } else {
        all += little(endSignature) + QByteArray(4, '\0') + little(count) + little(count)
            + little(size) + little(offset);
    }
    return all + little(quint16(comment.size())) + comment + after;
}

ArchiveParts unpackedFromStart(const QByteArray &file)
{
    ArchiveParts all;
    qint64 at = 0;
    while (long32(file, at) == localSignature) {
        const bool later = (short16(file, at + 6) & hasDescriptor) != 0;
        const bool packed = short16(file, at + 8) == deflateMethod;
        const quint16 nameSize = short16(file, at + 26);
        const QByteArray name = file.mid(int(at) + localSize, nameSize);
        const QByteArray extra = file.mid(int(at) + localSize + nameSize, short16(file, at + 28));
        const QByteArray wide = extraField(extra, wideField);
        qint64 size = wide.isNull() ? long32(file, at + 18) : qint64(wide64(wide, 8));
        at += localSize + nameSize + extra.size();
        QByteArray content;
        if (at > file.size() || size > file.size() || (later && !packed)) {
            return {};
        }
        if (packed) {
            const qint64 taken = inflated(file, at, &content);
            if (taken < 0 || (!later && taken != size)) {
                return {};
            }
            size = taken;
        } else {
            content = file.mid(int(at), int(size));
        }
        at += size;
        at += later ? (wide.isNull() ? 16 : 24) : 0;
        all.parts.append({name, content});
    }
    all.clear = true;
    return all;
}

namespace
{

// Where the directory begins, and how many entries it has.
struct DirectoryPlace {
    qint64 offset = -1;
    quint64 count = 0;
};

DirectoryPlace directoryOf(const QByteArray &file)
{
    int end = int(file.size()) - endSize;
    while (end >= 0
           && (long32(file, end) != endSignature
               || end + endSize + short16(file, end + 20) != file.size())) {
        --end;
    }
    if (end < 0) {
        return {};
    }
    if (long32(file, end - locatorSize) == locatorSignature) {
        const auto wide = qint64(wide64(file, end - locatorSize + 8));
        return {qint64(wide64(file, wide + 48)), wide64(file, wide + 32)};
    }
    return {long32(file, end + 16), short16(file, end + 10)};
}

// What the entry at \p at leads to; null where nothing is whole.
QByteArray contentOf(const QByteArray &file, qint64 at)
{
    const auto header = qint64(long32(file, at + 42));
    const qint64 start =
        header + localSize + short16(file, header + 26) + short16(file, header + 28);
    QByteArray content;
    if (long32(file, header) != localSignature || start > file.size()) {
        return content;
    }
    if (short16(file, at + 10) == deflateMethod) {
        inflated(file, start, &content);
    } else {
        content = file.mid(int(start), int(qMin(long32(file, at + 24), quint32(file.size()))));
    }
    return checksum(content) == long32(file, at + 16) ? content : QByteArray();
}

} // namespace

ArchiveParts unpackedFromDirectory(const QByteArray &file)
{
    const DirectoryPlace directory = directoryOf(file);
    ArchiveParts all;
    qint64 at = directory.offset;
    all.clear = at >= 0;
    for (quint64 i = 0; i < directory.count && all.clear; ++i) {
        const quint16 nameSize = short16(file, at + 28);
        const quint16 extraSize = short16(file, at + 30);
        QByteArray name = file.mid(int(at) + centralSize, nameSize);
        const QByteArray extra = file.mid(int(at) + centralSize + nameSize, extraSize);
        const QByteArray path = extraField(extra, unicodePathField);
        if (path.size() > 5 && path.at(0) == 1 && long32(path, 1) == checksum(name)) {
            name = path.mid(5);
        }
        all.clear = long32(file, at) == centralSignature;
        all.parts.append({name, contentOf(file, at)});
        at += centralSize + nameSize + extraSize + short16(file, at + 32);
    }
    return all;
}
