// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zippackage.h"

#include <zlib.h>

namespace
{

constexpr const char *damagedBytes = QT_TRANSLATE_NOOP("MainWindow", "its bytes are damaged");

// What equal names have in common.
QByteArray key(QByteArray name)
{
    for (char &character : name) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return name;
}

QByteArray keyInArchive(QByteArray name)
{
    name.replace('\\', '/');
    while (name.startsWith('/')) {
        name.remove(0, 1);
    }
    return key(QByteArray::fromPercentEncoding(name));
}

Bytef *bytes(char *data)
{
    return reinterpret_cast<Bytef *>(data);
}

} // namespace

// Nobody knows which of two parts with one name is the right one, nor which of two names is.
LoadError ZipPackage::open(QFile *file)
{
    m_file = file;
    LoadError error = m_directory.read(file, m_left.directorySize);
    for (const ZipDirectory::Entry &entry : m_directory.entries()) {
        const QByteArray name = keyInArchive(entry.name);
        if (!entry.otherName.isEmpty()) {
            m_parts.insert(name, nullptr);
            m_parts.insert(keyInArchive(entry.otherName), nullptr);
        } else if (!entry.name.endsWith('/')) { // no folder
            m_parts.insert(name, m_parts.contains(name) ? nullptr : &entry);
        }
    }
    return error;
}

bool ZipPackage::contains(const QByteArray &name) const
{
    return m_parts.contains(key(name));
}

ZipPart::ZipPart(ZipPackage *package, const QByteArray &name, qint64 largest)
    : m_package(package), m_error(open(name, largest))
{
}

ZipPart::~ZipPart()
{
    inflateEnd(m_stream.get()); // which may be null
}

LoadError ZipPart::open(const QByteArray &name, qint64 largest)
{
    if (!m_package->contains(name)) {
        return QT_TRANSLATE_NOOP("MainWindow", "it is missing");
    }
    m_entry = m_package->m_parts.value(key(name));
    if (m_entry == nullptr) {
        return LoadError::doubled;
    }
    if (m_entry->isEncrypted) {
        return LoadError::PasswordProtected;
    }
    if (m_entry->size > quint64(largest)) {
        return LoadError::TooLarge;
    }
    m_next = qint64(m_package->m_directory.begin(m_package->m_file, *m_entry));
    m_end = m_next + qint64(m_entry->packedSize);
    m_isUnpacked = m_entry->method == ZipDirectory::Stored;
    if (m_entry->method == ZipDirectory::Deflated) {
        constexpr int usualPiece = 16 * 1024;
        m_packed.resize(usualPiece);
        m_stream = std::make_unique<z_stream_s>();
        inflateInit2(m_stream.get(), -MAX_WBITS); // without a header of its own
    }
    return m_next > 0 && (m_isUnpacked || m_stream) ? LoadError() : LoadError(damagedBytes);
}

int ZipPart::read(char *data, int size)
{
    if (m_error) {
        return 0;
    }
    const int count = m_stream ? unpack(data, size) : fetch(data, size);
    m_size += quint64(count);
    m_checksum = quint32(crc32(m_checksum, bytes(data), uInt(count)));
    m_package->m_left.unpackedSize -= count;
    const bool isWhole = m_isUnpacked && m_next == m_end && m_size == m_entry->size
        && m_checksum == m_entry->checksum;
    if (m_package->m_left.unpackedSize < 0) {
        m_error = LoadError::TooLarge;
    } else if (m_size > m_entry->size || (count == 0 && !isWhole)) {
        m_error = damagedBytes;
    }
    return m_error ? 0 : count;
}

// The bytes as the file has them.
int ZipPart::fetch(char *data, int size)
{
    QFile *const file = m_package->m_file;
    const qint64 wanted = qMin<qint64>(size, m_end - m_next);
    const qint64 count = file->seek(m_next) ? qMax<qint64>(0, file->read(data, wanted)) : 0;
    m_next += count;
    return int(count);
}

int ZipPart::unpack(char *data, int size)
{
    m_stream->next_out = bytes(data);
    m_stream->avail_out = uInt(size);
    for (int result = Z_OK; result == Z_OK && m_stream->avail_out > 0;) {
        if (m_stream->avail_in == 0) {
            m_stream->next_in = bytes(m_packed.data());
            m_stream->avail_in = uInt(fetch(m_packed.data(), int(m_packed.size())));
        }
        result = inflate(m_stream.get(), Z_NO_FLUSH);
        m_isUnpacked = result == Z_STREAM_END && m_stream->avail_in == 0;
    }
    return size - int(m_stream->avail_out);
}
