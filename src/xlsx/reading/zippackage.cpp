// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zippackage.h"

#include <zip.h>

// What libzip reads: the parts as they stand in the file, and the list of them as it was checked.
struct ZipPackage::Source {
    QFile *file = nullptr;
    qint64 partsEnd = 0;
    QByteArray list;
    qint64 position = 0;
    zip_error_t error = {};

    qint64 size() const { return partsEnd + list.size(); }

    zip_int64_t fail(int code)
    {
        zip_error_set(&error, code, 0);
        return -1;
    }

    zip_int64_t read(char *data, qint64 length)
    {
        qint64 count = 0;
        if (position < partsEnd) {
            count = file->seek(position) ? file->read(data, qMin(length, partsEnd - position)) : -1;
        } else {
            count = qMin(length, size() - position);
            std::copy_n(list.constData() + (position - partsEnd), count, data);
        }
        position += qMax<qint64>(count, 0);
        return count < 0 ? fail(ZIP_ER_READ) : count;
    }

    zip_int64_t seek(void *data, zip_uint64_t length)
    {
        const zip_int64_t offset =
            zip_source_seek_compute_offset(static_cast<zip_uint64_t>(position),
                                           static_cast<zip_uint64_t>(size()), data, length, &error);
        position = qMax<qint64>(offset, 0);
        return offset < 0 ? -1 : 0;
    }

    zip_int64_t describe(void *data) const
    {
        auto *const stat = static_cast<zip_stat_t *>(data);
        zip_stat_init(stat);
        stat->size = static_cast<zip_uint64_t>(size());
        stat->valid = ZIP_STAT_SIZE;
        return sizeof(zip_stat_t);
    }

    static zip_int64_t call(void *self, void *data, zip_uint64_t length, zip_source_cmd_t command)
    {
        auto *const source = static_cast<Source *>(self);
        switch (command) {
        case ZIP_SOURCE_OPEN:
            source->position = 0;
            return 0;
        case ZIP_SOURCE_READ:
            return source->read(static_cast<char *>(data), static_cast<qint64>(length));
        case ZIP_SOURCE_SEEK:
            return source->seek(data, length);
        case ZIP_SOURCE_TELL:
            return source->position;
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

struct ZipPart::File {
    explicit File(zip_file_t *opened) : zip(opened, &zip_fclose) { }

    std::unique_ptr<zip_file_t, decltype(&zip_fclose)> zip;
};

namespace
{

// Instead of an index: several parts could have that name.
constexpr int ambiguous = -1;

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

} // namespace

ZipPackage::ZipPackage(const WorkbookLimits &limits) : m_limits(limits) { }
ZipPackage::~ZipPackage() = default;

LoadError ZipPackage::open(QFile *file)
{
    if (LoadError error = m_directory.read(file, m_limits.directorySize); error) {
        return error;
    }
    m_source = std::make_unique<Source>();
    m_source->file = file;
    m_source->partsEnd = m_directory.offset();
    m_source->list = m_directory.rewritten();
    zip_source_t *const source = zip_source_function_create(&Source::call, m_source.get(), nullptr);
    zip_t *const zip =
        source == nullptr ? nullptr : zip_open_from_source(source, ZIP_RDONLY, nullptr);
    if (zip == nullptr) {
        zip_source_free(source);
        return LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "the archive cannot be read"));
    }
    m_archive = std::make_unique<Archive>(zip);
    listParts();
    return LoadError::None;
}

// Nobody knows which of two parts with one name is the right one, nor which of two names is.
void ZipPackage::listParts()
{
    const QVector<ZipDirectory::Entry> &entries = m_directory.entries();
    for (int index = 0; index < entries.size(); ++index) {
        const ZipDirectory::Entry &entry = entries.at(index);
        const QByteArray name = keyInArchive(entry.name);
        if (!entry.otherName.isEmpty()) {
            m_parts.insert(name, ambiguous);
            m_parts.insert(keyInArchive(entry.otherName), ambiguous);
        } else if (!entry.name.endsWith('/')) { // no folder
            m_parts.insert(name, m_parts.contains(name) ? ambiguous : index);
        }
    }
}

bool ZipPackage::contains(const QByteArray &name) const
{
    return m_parts.contains(key(name));
}

ZipPart::ZipPart(ZipPackage *package, const QByteArray &name, qint64 largest)
    : m_package(package), m_largest(largest), m_error(open(name))
{
}

ZipPart::~ZipPart() = default;

LoadError ZipPart::open(const QByteArray &name)
{
    const int index = m_package->m_parts.value(key(name), ambiguous);
    if (!m_package->contains(name)) {
        return LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it is missing"));
    }
    if (index == ambiguous) {
        return LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it occurs twice"));
    }
    const ZipDirectory::Entry &entry = m_package->m_directory.entries().at(index);
    if (entry.encrypted) {
        return LoadError::PasswordProtected;
    }
    if (entry.size > static_cast<quint64>(m_largest)) {
        return LoadError::TooLarge;
    }
    if (entry.plain && m_package->m_directory.isConfirmed(m_package->m_source->file, entry)) {
        m_file = std::make_unique<File>(
            zip_fopen_index(m_package->m_archive->zip.get(), static_cast<zip_uint64_t>(index), 0));
    }
    return m_file && m_file->zip
        ? LoadError()
        : LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "its bytes are damaged"));
}

int ZipPart::read(char *data, int size)
{
    if (m_error) {
        return 0;
    }
    const zip_int64_t count = zip_fread(m_file->zip.get(), data, static_cast<zip_uint64_t>(size));
    if (count < 0) {
        m_error = LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "its bytes are damaged"));
        return 0;
    }
    m_size += count;
    m_package->m_unpacked += count;
    if (m_size > m_largest || m_package->m_unpacked > m_package->m_limits.unpackedSize) {
        m_error = LoadError::TooLarge;
        return 0;
    }
    return static_cast<int>(count);
}
