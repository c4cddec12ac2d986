#include "atomicsave.h"

#include <filesystem>
#include <system_error>

#include <QFile>

namespace
{

// A device may take fewer bytes than it is offered; ignoring that would commit a cut file.
bool writeAll(QIODevice &device, const QByteArray &content)
{
    qint64 written = 0;
    while (written < content.size()) {
        const qint64 taken = device.write(content.constData() + written, content.size() - written);
        if (taken <= 0) {
            return false;
        }
        written += taken;
    }
    return true;
}

// Whether a regular file stands under that name, or nothing yet, also at the end of links. A link
// that leads back to itself is neither.
bool isPlaceOfAFile(const QString &fileName)
{
    using std::filesystem::file_type;
    std::error_code error;
    const QByteArray name = QFile::encodeName(fileName);
    const file_type type = std::filesystem::status(name.constData(), error).type();
    return type == file_type::regular || type == file_type::not_found;
}

} // namespace

bool saveAtomically(const QString &fileName, const QByteArray &content)
{
    // The rename at the end would replace a device node or a pipe by a plain file.
    if (fileName.isEmpty() || !isPlaceOfAFile(fileName)) {
        return false;
    }
    QSaveFile file(fileName);
    return commitContent(file, content);
}

bool commitContent(QSaveFile &file, const QByteArray &content)
{
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    // The commit does not notice that its own last flush fails.
    if (!writeAll(file, content) || !file.flush()) {
        file.cancelWriting();
    }
    return file.commit();
}
