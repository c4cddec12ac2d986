// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstring>
#include <vector>

#include <QByteArray>
#include <sys/xattr.h>

/// Access lists and other attributes of files, in the form that the system takes.
namespace AccessLists
{

constexpr auto ofFile = "system.posix_acl_access";
/// What a folder gives its new files.
constexpr auto ofNewFiles = "system.posix_acl_default";

/// Read and written by the owner and by \p user, and closed to the group and to others.
inline QByteArray closedToTheGroup(quint32 user)
{
    struct Entry {
        quint16 tag;
        quint16 permissions;
        quint32 id;
    };
    enum Tag : quint16 { Owner = 1, User = 2, Group = 4, Mask = 16, Other = 32 };
    constexpr quint16 readAndWrite = 6;
    constexpr quint32 nobody = 0xffffffff;
    const std::vector<Entry> entries = {{Owner, readAndWrite, nobody},
                                        {User, readAndWrite, user},
                                        {Group, 0, nobody},
                                        {Mask, readAndWrite, nobody},
                                        {Other, 0, nobody}};
    // The version comes first.
    QByteArray list("\2\0\0\0", 4);
    for (const Entry &entry : entries) {
        std::array<char, sizeof(Entry)> bytes = {};
        std::memcpy(bytes.data(), &entry, sizeof entry);
        list.append(bytes.data(), int(bytes.size()));
    }
    return list;
}

/// False if the file system has no such attribute.
inline bool set(const char *file, const char *name, const QByteArray &value)
{
    return setxattr(file, name, value.constData(), size_t(value.size()), 0) == 0;
}

/// "none" if the file has no such attribute.
inline QByteArray get(const char *file, const char *name)
{
    QByteArray value(1000, '\0');
    const ssize_t length = getxattr(file, name, value.data(), size_t(value.size()));
    return length < 0 ? QByteArray("none") : value.left(int(length));
}

} // namespace AccessLists
