// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/handmadearchive.h"

#include <QtEndian>

namespace
{

template<typename Number>
QByteArray le(quint64 value)
{
    QByteArray bytes(int(sizeof(Number)), '\0');
    qToLittleEndian(static_cast<Number>(value), bytes.data());
    return bytes;
}

quint32 checksum(const QByteArray &bytes)
{
    quint32 sum = 0xffffffff;
    for (const char byte : bytes) {
        sum ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
        }
    }
    return ~sum;
}

// The toolkit puts a length and a header of zlib before it, and another checksum after it.
QByteArray deflated(const QByteArray &bytes)
{
    return qCompress(bytes).mid(6).chopped(4);
}

constexpr quint32 wide = 0xffffffff;

} // namespace

QByteArray HandmadeArchive::extra(quint16 id, const QByteArray &content)
{
    return le<quint16>(id) + le<quint16>(quint64(content.size())) + content;
}

QByteArray HandmadeArchive::unicodePath(const QByteArray &name, const QByteArray &other)
{
    return extra(0x7075, '\1' + le<quint32>(checksum(name)) + other);
}

QByteArray HandmadeArchive::bytes() const
{
    QByteArray archive;
    QByteArray list;
    const QByteArray sizes = zip64 ? le<quint32>(wide) + le<quint32>(wide) : QByteArray();
    for (const auto &[path, content] : parts) {
        const QByteArray name = path.toUtf8();
        const bool hasExtra = path == extraPart;
        QByteArray packed = deflated ? ::deflated(content) : content;
        packed = hasExtra ? packed.chopped(qMin(missing, int(packed.size()))) + surplus : packed;
        const auto size = quint64(content.size());
        const auto packedSize = quint64(packed.size());
        const QByteArray both = le<quint64>(size) + le<quint64>(packedSize);
        const QByteArray usual = le<quint32>(packedSize) + le<quint32>(size);
        const QByteArray sum = le<quint32>(checksum(content));
        const QByteArray offset = le<quint32>(base + quint32(archive.size()));
        const QByteArray longOffset = le<quint64>(base + quint64(archive.size()));
        const QByteArray known = sum + (zip64 ? sizes : usual);
        const QByteArray common = le<quint16>(20) + le<quint16>(descriptors ? 8 : 0)
            + le<quint16>(deflated ? 8 : 0) + QByteArray(4, '\0');
        const QByteArray local =
            (zip64 ? extra(1, both) : QByteArray()) + (hasExtra ? localExtra : QByteArray());
        const QByteArray central = (zip64 ? extra(1, both + longOffset) : QByteArray())
            + (hasExtra ? listExtra : QByteArray());
        archive += "PK\3\4" + common + (descriptors ? QByteArray(12, '\0') : known)
            + le<quint16>(quint64(name.size())) + le<quint16>(quint64(local.size())) + name + local
            + packed;
        archive += descriptors
            ? "PK\7\10" + sum + (zip64 ? le<quint64>(packedSize) + le<quint64>(size) : usual)
            : QByteArray();
        list += "PK\1\2" + le<quint16>(20) + common + known + le<quint16>(quint64(name.size()))
            + le<quint16>(quint64(central.size())) + QByteArray(10, '\0')
            + (zip64 ? le<quint32>(wide) : offset) + name + central;
    }
    return archive + list + end(base + quint64(archive.size()), quint64(list.size()));
}

// What follows the list of \p size bytes at \p offset.
QByteArray HandmadeArchive::end(quint64 offset, quint64 size) const
{
    const QByteArray count = le<quint16>(quint64(parts.size()));
    QByteArray records;
    QByteArray numbers = count + count + le<quint32>(size) + le<quint32>(offset);
    if (zip64) {
        const QByteArray longCount = le<quint64>(quint64(parts.size()));
        records = "PK\6\6" + le<quint64>(44) + le<quint32>(0) + le<quint64>(0) + longCount
            + longCount + le<quint64>(size) + le<quint64>(offset) + "PK\6\7" + le<quint32>(0)
            + le<quint64>(offset + size) + le<quint32>(1);
        numbers = QByteArray(12, '\xff');
    }
    return records + "PK\5\6" + le<quint32>(0) + numbers + le<quint16>(quint64(comment.size()))
        + comment;
}
