// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/filereplacement.h"

#include <string>

#include <io.h>
#include <windows.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

namespace
{

using Path = std::wstring;

// The file at the end of symbolic links; empty if they lead nowhere.
QString behindLinks(const QString &fileName)
{
    constexpr int mostLinks = 63; // as the system has it
    QFileInfo info(fileName);
    for (int i = 0; i < mostLinks; ++i) {
        if (!info.isSymLink()) {
            return info.filePath();
        }
        info.setFile(info.symLinkTarget());
    }
    return {};
}

// The absolute path, in the form that can be longer than 260 characters; empty for a device.
Path wholePath(const QString &fileName)
{
    constexpr DWORD longest = 32768;
    const Path native = QDir::toNativeSeparators(fileName).toStdWString();
    Path whole(longest, L'\0');
    whole.resize(GetFullPathNameW(native.c_str(), longest, whole.data(), nullptr));
    const auto startsWith = [&whole](const Path &start) {
        return whole.compare(0, start.size(), start) == 0;
    };
    if (whole.empty() || startsWith(LR"(\\.\)")) {
        return {};
    }
    if (startsWith(LR"(\\?\)")) {
        return whole;
    }
    return startsWith(LR"(\\)") ? LR"(\\?\UNC)" + whole.substr(1) : LR"(\\?\)" + whole;
}

enum class Target { Nothing, File, Other };

Target targetAt(const Path &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return GetLastError() == ERROR_FILE_NOT_FOUND ? Target::Nothing : Target::Other;
    }
    constexpr DWORD unfit =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_READONLY;
    return (attributes & unfit) == 0 ? Target::File : Target::Other;
}

// Errors of a folder that takes no new file, or of a file whose rights cannot be given to another.
bool isRefusal(DWORD error)
{
    return error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT;
}

// Why no other file can take the place of the one at \p path: it cannot be moved away, or another
// name would go on showing the old content. 0 if one can. Asked beforehand because Wine, when it
// cannot replace a file, leaves one of its own.
DWORD whyNotReplaceable(const Path &path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    BY_HANDLE_FILE_INFORMATION information = {};
    const bool known = GetFileInformationByHandle(file, &information) != 0;
    CloseHandle(file);
    return known && information.nNumberOfLinks == 1 ? 0 : ERROR_ACCESS_DENIED;
}

// Not every drive offers that.
bool bringToDisk(const QFile &file)
{
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()));
    return FlushFileBuffers(handle) != 0 || GetLastError() == ERROR_INVALID_FUNCTION
        || GetLastError() == ERROR_NOT_SUPPORTED;
}

/// The file for the new content, in the folder of the old one. It is gone at the end unless it is
/// put into place or kept. Steps return 0 or the error.
class NewFile
{
public:
    explicit NewFile(const QString &folder) : m_folder(folder) { }
    ~NewFile()
    {
        m_file.close();
        if (!m_path.empty()) {
            DeleteFileW(m_path.c_str());
        }
    }
    Q_DISABLE_COPY_MOVE(NewFile)

    DWORD make()
    {
        constexpr int tries = 16;
        DWORD error = ERROR_FILE_EXISTS;
        for (int i = 0; i < tries && error == ERROR_FILE_EXISTS; ++i) {
            m_file.setFileName(m_folder
                               + QStringLiteral("/glymark-%1.tmp")
                                     .arg(QRandomGenerator::global()->generate(), 0, 16));
            m_path = wholePath(m_file.fileName());
            error = makeEmpty();
        }
        if (error != 0) {
            m_path.clear();
        }
        return error;
    }

    bool fill(const ContentWriter &write)
    {
        const bool filled = m_file.open(QIODevice::ReadWrite) && write(m_file) && m_file.flush()
            && bringToDisk(m_file);
        // It could not be renamed otherwise.
        m_file.close();
        return filled;
    }

    DWORD rename(const Path &path)
    {
        constexpr DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        return done(MoveFileExW(m_path.c_str(), path.c_str(), flags));
    }

    /// Keeps what the system keeps of the old file: its access list and its attributes.
    DWORD replace(const Path &path)
    {
        const DWORD error =
            done(ReplaceFileW(path.c_str(), m_path.c_str(), nullptr, 0, nullptr, nullptr));
        if (error != ERROR_UNABLE_TO_MOVE_REPLACEMENT || targetAt(path) != Target::Nothing) {
            return error;
        }
        // The old file is gone already.
        const DWORD renameError = rename(path);
        if (renameError != 0) {
            keep();
        }
        return renameError;
    }

    void keep() { m_path.clear(); }
    QFile &device() { return m_file; }

private:
    DWORD makeEmpty() const
    {
        const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return GetLastError();
        }
        CloseHandle(file);
        return 0;
    }

    DWORD done(BOOL succeeded)
    {
        if (succeeded == 0) {
            return GetLastError();
        }
        m_path.clear();
        return 0;
    }

    const QString m_folder;
    QFile m_file;
    Path m_path;
};

Overwritten overwriteWith(QIODevice &content, const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered)) {
        return Overwritten::Old;
    }
    return overwrite(file, content, [&file] { return bringToDisk(file); });
}

bool overwriteFromMemory(const QString &fileName, const ContentWriter &write)
{
    QBuffer content;
    return content.open(QIODevice::ReadWrite) && write(content)
        && overwriteWith(content, fileName) == Overwritten::New;
}

bool overwriteFromBeside(const QString &fileName, NewFile &fresh)
{
    if (!fresh.device().open(QIODevice::ReadOnly)) {
        return false;
    }
    const Overwritten result = overwriteWith(fresh.device(), fileName);
    if (result == Overwritten::Mixture) {
        fresh.keep();
    }
    return result == Overwritten::New;
}

} // namespace

bool replaceFile(const QString &fileName, const ContentWriter &write)
{
    const QString name = behindLinks(fileName);
    const Path path = wholePath(name);
    const Target target = targetAt(path);
    if (target == Target::Other) {
        return false;
    }
    NewFile fresh(QFileInfo(name).path());
    DWORD error = fresh.make();
    if (isRefusal(error) && target == Target::File) {
        return overwriteFromMemory(name, write);
    }
    if (error != 0 || !fresh.fill(write)) {
        return false;
    }
    if (target == Target::Nothing) {
        return fresh.rename(path) == 0;
    }
    error = whyNotReplaceable(path);
    if (error == 0) {
        error = fresh.replace(path);
    }
    return error == 0 || (isRefusal(error) && overwriteFromBeside(name, fresh));
}
