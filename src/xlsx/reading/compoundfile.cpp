// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/compoundfile.h"

#include <cstring>

namespace CompoundFile
{

namespace
{

// A directory entry begins with a name of up to 32 UTF-16 units; entries begin at multiples of
// their size.
constexpr int entrySize = 128;
constexpr int nameSize = 64;

QByteArray entryName(const QByteArray &name)
{
    QByteArray units(nameSize, '\0');
    for (int i = 0; i < name.size(); ++i) {
        units[2 * i] = name.at(i);
    }
    return units;
}

} // namespace

QByteArray signature()
{
    return QByteArrayLiteral("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1");
}

bool isEncryptedPackage(QFile *file)
{
    constexpr int pieceSize = 8192 * entrySize;
    const QByteArray info = entryName("EncryptionInfo");
    const QByteArray content = entryName("EncryptedPackage");
    file->seek(0);
    for (QByteArray piece = file->read(pieceSize); !piece.isEmpty();
         piece = file->read(pieceSize)) {
        for (int at = 0; at + entrySize <= piece.size(); at += entrySize) {
            const char *const entry = piece.constData() + at;
            if (std::memcmp(entry, info.constData(), nameSize) == 0
                || std::memcmp(entry, content.constData(), nameSize) == 0) {
                return true;
            }
        }
    }
    return false;
}

} // namespace CompoundFile
