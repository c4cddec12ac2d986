// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/compoundfile.h"

#include <array>
#include <cstring>

#include <QString>

namespace CompoundFile
{

namespace
{

// A directory entry begins with a name of up to 32 UTF-16 units; entries begin at multiples of
// their size.
constexpr int entrySize = 128;
constexpr int nameSize = 64;

QByteArray entryName(const QString &name)
{
    QByteArray units;
    for (const QChar character : name) {
        units.append(static_cast<char>(character.unicode()));
        units.append('\0');
    }
    return units.leftJustified(nameSize, '\0');
}

} // namespace

QByteArray signature()
{
    return QByteArrayLiteral("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1");
}

bool isEncryptedPackage(QFile *file)
{
    const std::array names = {entryName(QStringLiteral("EncryptionInfo")),
                              entryName(QStringLiteral("EncryptedPackage"))};
    constexpr int pieceSize = 8192 * entrySize;
    file->seek(0);
    QByteArray piece = file->read(pieceSize);
    while (!piece.isEmpty()) {
        for (int start = 0; start + entrySize <= piece.size(); start += entrySize) {
            for (const QByteArray &entry : names) {
                if (std::memcmp(piece.constData() + start, entry.constData(), nameSize) == 0) {
                    return true;
                }
            }
        }
        piece = file->read(pieceSize);
    }
    return false;
}

} // namespace CompoundFile
