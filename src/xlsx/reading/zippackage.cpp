// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zippackage.h"

#include <array>

#include <zip.h>

// The file as the library reads it. Until the list of parts is read the bytes are counted, since
// that list is held in memory.
struct ZipPackage::Source {
    QFile *file = nullptr;
    qint64 largestDirectory = 0;
    zip_error_t error = {};
    qint64 directoryBytes = 0;
    bool listed = false;

    bool isTooLarge() const { return !listed && directoryBytes > largestDirectory; }

    zip_int64_t fail(int code)
    {
        zip_error_set(&error, code, 0);
        return -1;
    }

    zip_int64_t read(void *data, zip_uint64_t length)
    {
        directoryBytes += listed ? 0 : static_cast<qint64>(length);
        if (isTooLarge()) {
            return fail(ZIP_ER_MEMORY);
        }
        const qint64 count = file->read(static_cast<char *>(data), static_cast<qint64>(length));
        return count < 0 ? fail(ZIP_ER_READ) : count;
    }

    zip_int64_t seek(void *data, zip_uint64_t length)
    {
        const zip_int64_t offset = zip_source_seek_compute_offset(
            static_cast<zip_uint64_t>(file->pos()), static_cast<zip_uint64_t>(file->size()), data,
            length, &error);
        if (offset < 0) {
            return -1;
        }
        return file->seek(offset) ? 0 : fail(ZIP_ER_SEEK);
    }

    zip_int64_t describe(void *data)
    {
        auto *const stat = static_cast<zip_stat_t *>(data);
        zip_stat_init(stat);
        stat->size = static_cast<zip_uint64_t>(file->size());
        stat->valid = ZIP_STAT_SIZE;
        return sizeof(zip_stat_t);
    }

    static zip_int64_t call(void *self, void *data, zip_uint64_t length, zip_source_cmd_t command)
    {
        auto *const source = static_cast<Source *>(self);
        switch (command) {
        case ZIP_SOURCE_OPEN:
            return source->file->seek(0) ? 0 : source->fail(ZIP_ER_SEEK);
        case ZIP_SOURCE_READ:
            return source->read(data, length);
        case ZIP_SOURCE_SEEK:
            return source->seek(data, length);
        case ZIP_SOURCE_TELL:
            return source->file->pos();
        case ZIP_SOURCE_STAT:
            return source->describe(data);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&source->error, data, length);
        case ZIP_SOURCE_CLOSE:
        case ZIP_SOURCE_FREE:
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_SEEKABLE;
        default:
            return source->fail(ZIP_ER_OPNOTSUPP);
        }
    }
};

struct ZipPackage::Archive {
    explicit Archive(zip_t *opened) : zip(opened, &zip_discard) { }

    std::unique_ptr<zip_t, decltype(&zip_discard)> zip;
};

namespace
{

// Instead of an index: several parts have that name.
constexpr quint64 ambiguous = ~quint64(0);

using Part = std::unique_ptr<zip_file_t, decltype(&zip_fclose)>;

QByteArray key(QByteArray name)
{
    for (char &character : name) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return name;
}

} // namespace

ZipPackage::ZipPackage(const WorkbookLimits &limits) : m_limits(limits) { }
ZipPackage::~ZipPackage() = default;

LoadError ZipPackage::open(QFile *file)
{
    m_source = std::make_unique<Source>();
    m_source->file = file;
    m_source->largestDirectory = m_limits.directorySize;
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *const source = zip_source_function_create(&Source::call, m_source.get(), &error);
    zip_t *const zip =
        source == nullptr ? nullptr : zip_open_from_source(source, ZIP_RDONLY, &error);
    zip_error_fini(&error);
    if (zip == nullptr) {
        zip_source_free(source);
        return m_source->isTooLarge() ? LoadError(LoadError::TooLarge)
                                      : LoadError(LoadError::Damage::Archive);
    }
    m_source->listed = true;
    m_archive = std::make_unique<Archive>(zip);
    return listParts();
}

// Nobody knows which of two parts with one name is the right one.
LoadError ZipPackage::listParts()
{
    const zip_int64_t count = zip_get_num_entries(m_archive->zip.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        const char *const raw = zip_get_name(m_archive->zip.get(), index, ZIP_FL_ENC_RAW);
        if (raw == nullptr) {
            return LoadError::Damage::Archive;
        }
        QByteArray name(raw);
        name.replace('\\', '/');
        while (name.startsWith('/')) {
            name.remove(0, 1);
        }
        if (name.endsWith('/')) {
            continue; // a folder
        }
        name = key(QByteArray::fromPercentEncoding(name));
        m_parts.insert(name, m_parts.contains(name) ? ambiguous : index);
    }
    return LoadError::None;
}

bool ZipPackage::contains(const QByteArray &name) const
{
    return m_parts.contains(key(name));
}

// Each part has its name in the list at the end of the archive and in front of its bytes, and no
// checksum covers either. The library compares them when asked to.
bool ZipPackage::namesAgree() const
{
    Source source;
    source.file = m_source->file;
    source.listed = true; // as long as the first list, which was not too large
    zip_source_t *const compared = zip_source_function_create(&Source::call, &source, nullptr);
    zip_t *const zip = compared == nullptr
        ? nullptr
        : zip_open_from_source(compared, ZIP_RDONLY | ZIP_CHECKCONS, nullptr);
    if (zip == nullptr) {
        zip_source_free(compared);
        return false;
    }
    zip_discard(zip);
    return true;
}

LoadError ZipPackage::read(const QByteArray &name, qint64 largest, const Consumer &consumer)
{
    const auto found = m_parts.constFind(key(name));
    zip_stat_t stat;
    if (found == m_parts.constEnd()) {
        return LoadError::Damage::Missing;
    }
    if (*found == ambiguous) {
        return LoadError::Damage::Doubled;
    }
    if (zip_stat_index(m_archive->zip.get(), *found, 0, &stat) != 0) {
        return LoadError::Damage::Content;
    }
    if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && stat.encryption_method != ZIP_EM_NONE) {
        return LoadError::PasswordProtected;
    }
    if ((stat.valid & ZIP_STAT_SIZE) != 0 && stat.size > static_cast<zip_uint64_t>(largest)) {
        return LoadError::TooLarge;
    }
    const Part part(zip_fopen_index(m_archive->zip.get(), *found, 0), &zip_fclose);
    if (!part) {
        return LoadError::Damage::Content;
    }

    constexpr int pieceSize = 64 * 1024;
    std::array<char, pieceSize> piece;
    qint64 size = 0;
    for (;;) {
        const zip_int64_t count = zip_fread(part.get(), piece.data(), piece.size());
        if (count <= 0) {
            return count == 0 ? LoadError() : LoadError(LoadError::Damage::Content);
        }
        size += count;
        m_unpacked += count;
        if (size > largest || m_unpacked > m_limits.unpackedSize) {
            return LoadError::TooLarge;
        }
        if (!consumer(piece.data(), static_cast<int>(count))) {
            return LoadError::Damage::Content;
        }
    }
}
