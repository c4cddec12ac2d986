// SPDX-License-Identifier: GPL-3.0-or-later
// With the toolkit and the standard library alone, for systems without a source of their own: the
// new file keeps only the old one's permissions.
#include "base/filereplacement.h"

#include <filesystem>
#include <system_error>

#include <QBuffer>
#include <QFile>
#include <QSaveFile>

namespace
{

using std::filesystem::file_type;

// What has that name, also at the end of links. A link that leads back to itself is neither a
// regular file nor nothing.
file_type typeOf(const QString &fileName)
{
    std::error_code error;
    // Systems differ in how they read narrow names, and an unpaired surrogate would throw in
    // UTF-16.
    const std::filesystem::path path = std::filesystem::u8path(fileName.toUtf8().toStdString());
    return std::filesystem::status(path, error).type();
}

bool commitContent(QSaveFile &file, const ContentWriter &write)
{
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    // The commit does not notice that its own last flush fails.
    if (!write(file) || !file.flush()) {
        file.cancelWriting();
    }
    return file.commit();
}

bool writeInPlace(const QString &fileName, const ContentWriter &write)
{
    QFile file(fileName);
    // Opened for reading too, since opening for writing alone empties it.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        return false;
    }
    QBuffer content;
    return content.open(QIODevice::ReadWrite) && write(content)
        && overwrite(file, content, [] { return true; }) == Overwritten::New;
}

} // namespace

bool replaceFile(const QString &fileName, const ContentWriter &write)
{
    // The rename at the end would replace a device node or a pipe by a plain file.
    const file_type type = typeOf(fileName);
    if (type != file_type::regular && type != file_type::not_found) {
        return false;
    }
    QSaveFile file(fileName);
    if (commitContent(file, write)) {
        return true;
    }
    // In some shared folders a file can be made but not renamed over one of another owner.
    const bool folderRefuses =
        file.error() == QFileDevice::OpenError || file.error() == QFileDevice::RenameError;
    return folderRefuses && type == file_type::regular && writeInPlace(fileName, write);
}
