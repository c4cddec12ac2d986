// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/atomicsave.h"

#include <filesystem>
#include <system_error>

#include <QBuffer>
#include <QFile>

namespace
{

using std::filesystem::file_type;

// What stands under that name, also at the end of links. A link that leads back to itself is
// neither a regular file nor nothing.
file_type typeOf(const QString &fileName)
{
    std::error_code error;
    // Systems differ in how they read narrow names; and half a letter would throw in UTF-16.
    const std::filesystem::path path = std::filesystem::u8path(fileName.toUtf8().toStdString());
    return std::filesystem::status(path, error).type();
}

// The bytes behind the old content go first: room for them is what can be missing.
bool overwrite(QFileDevice &file, qint64 oldSize, const QByteArray &content)
{
    const qint64 common = qMin(oldSize, qint64(content.size()));
    return file.seek(common)
        && writeAll(file, content.constData() + common, content.size() - common) && file.seek(0)
        && writeAll(file, content.constData(), common) && file.resize(content.size());
}

bool writeInPlace(const QString &fileName, const ContentWriter &write)
{
    QFile file(fileName);
    // Opened for reading too, since opening for writing alone empties it.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        return false;
    }
    QBuffer content;
    return content.open(QIODevice::WriteOnly) && write(content)
        && replaceContent(file, content.data());
}

} // namespace

bool writeAll(QIODevice &device, const char *data, qint64 length)
{
    qint64 written = 0;
    while (written < length) {
        const qint64 taken = device.write(data + written, length - written);
        if (taken <= 0) {
            return false;
        }
        written += taken;
    }
    return true;
}

bool saveAtomically(const QString &fileName, const ContentWriter &write)
{
    // The rename at the end would replace a device node or a pipe by a plain file.
    const file_type type = typeOf(fileName);
    if (fileName.isEmpty() || (type != file_type::regular && type != file_type::not_found)) {
        return false;
    }
    QSaveFile file(fileName);
    if (commitContent(file, write)) {
        return true;
    }
    // In a folder of others, a file can be made but not renamed over one of theirs.
    const bool folderRefuses =
        file.error() == QFileDevice::OpenError || file.error() == QFileDevice::RenameError;
    return folderRefuses && type == file_type::regular && writeInPlace(fileName, write);
}

bool saveAtomically(const QString &fileName, const QByteArray &content)
{
    return saveAtomically(fileName, [&content](QIODevice &device) {
        return writeAll(device, content.constData(), content.size());
    });
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

bool replaceContent(QFileDevice &file, const QByteArray &content)
{
    const QByteArray old = file.readAll();
    if (old.size() != file.size()) {
        return false;
    }
    if (overwrite(file, old.size(), content)) {
        return true;
    }
    // What was not reached still is the old content.
    file.seek(0);
    writeAll(file, old.constData(), old.size());
    file.resize(old.size());
    return false;
}
