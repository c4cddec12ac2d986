// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/filereplacement.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QFile>
#include <QMap>
#include <QRandomGenerator>

namespace
{

constexpr mode_t forTheSaver = S_IRUSR | S_IWUSR;
constexpr mode_t forAll = forTheSaver | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
constexpr mode_t allPermissions = 07777;

// Signals end some calls early, on some file systems.
template<typename Call>
int uninterrupted(Call call)
{
    int result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// An open file or folder, closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) { }
    ~Descriptor()
    {
        if (isOpen()) {
            close(m_number);
        }
    }
    Descriptor(Descriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) { }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Q_DISABLE_COPY(Descriptor)

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    int m_number;
};

Descriptor opened(int folder, const char *path, int flags, mode_t mode = 0)
{
    return Descriptor(uninterrupted([=] { return openat(folder, path, flags | O_CLOEXEC, mode); }));
}

/// A name in a folder: where a file is, or will be.
struct Place {
    Descriptor folder;
    QByteArray name;
};

// The place at the end of symbolic links. No path is made absolute: the path of the working folder
// can be unreadable.
std::optional<Place> placeOf(QByteArray path)
{
    constexpr int mostLinks = 40; // as the system has it
    Place place{Descriptor(AT_FDCWD), {}};
    for (int i = 0; i < mostLinks; ++i) {
        const int nameStart = int(path.lastIndexOf('/')) + 1;
        const QByteArray folder = nameStart == 0 ? "." : path.left(nameStart);
        place.folder = opened(place.folder.number(), folder.constData(), O_PATH | O_DIRECTORY);
        place.name = path.mid(nameStart);
        if (!place.folder.isOpen() || place.name.isEmpty()) {
            return {};
        }
        std::array<char, PATH_MAX> target; // NOLINT(cppcoreguidelines-pro-type-member-init)
        const ssize_t length =
            readlinkat(place.folder.number(), place.name.constData(), target.data(), target.size());
        if (length < 0) {
            const bool isNoLink = errno == EINVAL || errno == ENOENT;
            return isNoLink ? std::optional(std::move(place)) : std::nullopt;
        }
        path = QByteArray(target.data(), int(length));
    }
    return {};
}

enum class Target { Nothing, File, Other };

Target targetAt(const Place &place)
{
    struct stat status = {};
    if (fstatat(place.folder.number(), place.name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return S_ISREG(status.st_mode) ? Target::File : Target::Other;
    }
    return errno == ENOENT ? Target::Nothing : Target::Other;
}

// Errors of a folder that takes no new file, or does not let an old one be replaced.
bool isRefusal(int error)
{
    return error == EACCES || error == EPERM || error == EROFS;
}

// A network drive may report only at a close that it did not take everything; closing any copy will
// do. Not every file system offers a sync.
bool bringToDisk(int file)
{
    if (uninterrupted([file] { return fsync(file); }) != 0 && errno != EINVAL && errno != ENOTSUP) {
        return false;
    }
    const int copy = dup(file);
    return copy >= 0 && close(copy) == 0;
}

void bringNamesToDisk(const Place &place)
{
    const Descriptor folder = opened(place.folder.number(), ".", O_RDONLY | O_DIRECTORY);
    if (folder.isOpen()) {
        fsync(folder.number());
    }
}

using Attributes = QMap<QByteArray, QByteArray>;

// Access lists, labels and whatever else the file carries by name; nothing if they cannot be read.
std::optional<Attributes> attributesOf(int file)
{
    Attributes attributes;
    const ssize_t size = flistxattr(file, nullptr, 0);
    if (size <= 0) {
        return size == 0 || errno == ENOTSUP ? std::optional(attributes) : std::nullopt;
    }
    QByteArray names(int(size), '\0');
    if (flistxattr(file, names.data(), size_t(size)) != size) {
        return {};
    }
    // Each of them ends with a zero.
    names.chop(1);
    for (const QByteArray &name : names.split('\0')) {
        QByteArray value(XATTR_SIZE_MAX, '\0');
        const ssize_t length =
            fgetxattr(file, name.constData(), value.data(), size_t(value.size()));
        if (length < 0) {
            return {};
        }
        attributes.insert(name, value.left(int(length)));
    }
    return attributes;
}

// Gives the file \p fresh the permissions of \p old, unless they would mean something else there.
// False if something still differs; then only the saver can read it.
bool becomesLike(int fresh, int old)
{
    struct stat given = {};
    struct stat wanted = {};
    const std::optional<Attributes> attributes = attributesOf(old);
    const std::optional<Attributes> own = attributesOf(fresh);
    if (fstat(fresh, &given) != 0 || fstat(old, &wanted) != 0 || given.st_uid != wanted.st_uid
        || given.st_gid != wanted.st_gid || wanted.st_nlink > 1 || !attributes || !own
        || own->keys() != attributes->keys()) {
        return false;
    }
    // Some file systems refuse that even to files that have these permissions already.
    fchmod(fresh, wanted.st_mode & allPermissions);
    const bool alike = fstat(fresh, &given) == 0 && given.st_mode == wanted.st_mode
        && attributesOf(fresh) == attributes;
    if (!alike) {
        fchmod(fresh, forTheSaver);
    }
    return alike;
}

// Calls \p make with names until one is not taken yet, and keeps that one. 0 or the error.
template<typename Make>
int makeFreeName(QByteArray *name, Make make)
{
    constexpr int tries = 16;
    for (int i = 0; i < tries; ++i) {
        *name =
            "glymark-" + QByteArray::number(QRandomGenerator::global()->generate(), 16) + ".tmp";
        if (make(name->constData())) {
            return 0;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    const int error = errno;
    name->clear();
    return error;
}

/// The file for the new content, in the folder of the old one. It is gone at the end unless it is
/// renamed or kept. Steps return 0 or the error.
class NewFile
{
public:
    explicit NewFile(const Place &place) : m_place(place) { }
    ~NewFile()
    {
        if (!m_name.isEmpty()) {
            unlinkat(m_place.folder.number(), m_name.constData(), 0);
        }
    }
    Q_DISABLE_COPY_MOVE(NewFile)

    /// Without a name, so that a kill leaves nothing; with one where the system offers no other.
    int make(mode_t mode)
    {
        if (faccessat(AT_FDCWD, descriptors, F_OK, 0) == 0) {
            m_file = opened(m_place.folder.number(), ".", O_RDWR | O_TMPFILE, mode);
        }
        if (m_file.isOpen()) {
            return 0;
        }
        return makeFreeName(&m_name, [&](const char *name) {
            m_file = opened(m_place.folder.number(), name, O_RDWR | O_CREAT | O_EXCL, mode);
            return m_file.isOpen();
        });
    }

    /// If the folder takes no file.
    int makeInMemory()
    {
        m_file = Descriptor(memfd_create("glymark", MFD_CLOEXEC));
        m_inMemory = m_file.isOpen();
        return m_inMemory ? 0 : errno;
    }

    bool fill(const ContentWriter &write)
    {
        return m_device.open(m_file.number(), QIODevice::ReadWrite) && write(m_device)
            && m_device.flush();
    }

    int giveName()
    {
        if (m_inMemory) {
            return EACCES;
        }
        if (!m_name.isEmpty()) {
            return 0;
        }
        const QByteArray self = descriptors + QByteArray::number(m_file.number());
        return makeFreeName(&m_name, [&](const char *name) {
            return linkat(AT_FDCWD, self.constData(), m_place.folder.number(), name,
                          AT_SYMLINK_FOLLOW)
                == 0;
        });
    }

    int rename()
    {
        const int folder = m_place.folder.number();
        if (renameat(folder, m_name.constData(), folder, m_place.name.constData()) != 0) {
            return errno;
        }
        m_name.clear();
        return 0;
    }

    void keep() { m_name.clear(); }

    int number() const { return m_file.number(); }
    QIODevice &device() { return m_device; }

private:
    static constexpr auto descriptors = "/proc/self/fd/";

    const Place &m_place;
    Descriptor m_file;
    QFile m_device;
    QByteArray m_name;
    bool m_inMemory = false;
};

bool isRegular(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

bool overwriteWith(NewFile &fresh, int old)
{
    QFile file;
    if (!file.open(old, QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        return false;
    }
    const Overwritten result = overwrite(file, fresh.device(), [old] { return bringToDisk(old); });
    if (result == Overwritten::Mixture) {
        fresh.keep();
    }
    return result == Overwritten::New;
}

// By a rename if that changes nothing but the content, otherwise in place.
bool putIntoPlace(NewFile &fresh, const Place &place)
{
    // Opened late, because another program may have replaced it meanwhile.
    const Descriptor old =
        opened(place.folder.number(), place.name.constData(), O_RDWR | O_NOFOLLOW);
    const bool isNew = !old.isOpen() && errno == ENOENT;
    if (!isNew && !isRegular(old.number())) {
        return false;
    }
    const bool canBeRenamed = isNew || becomesLike(fresh.number(), old.number());
    if (!bringToDisk(fresh.number())) {
        return false;
    }
    int error = fresh.giveName();
    if (error == 0 && canBeRenamed) {
        error = fresh.rename();
    }
    bringNamesToDisk(place);
    if (error == 0 && canBeRenamed) {
        return true;
    }
    return !isNew && (error == 0 || isRefusal(error)) && overwriteWith(fresh, old.number());
}

} // namespace

bool replaceFile(const QString &fileName, const ContentWriter &write)
{
    const std::optional<Place> place = placeOf(QFile::encodeName(fileName));
    const Target target = place ? targetAt(*place) : Target::Other;
    if (target == Target::Other) {
        return false;
    }
    NewFile fresh(*place);
    int error = fresh.make(target == Target::File ? forTheSaver : forAll);
    if (isRefusal(error) && target == Target::File) {
        error = fresh.makeInMemory();
    }
    return error == 0 && fresh.fill(write) && putIntoPlace(fresh, *place);
}
