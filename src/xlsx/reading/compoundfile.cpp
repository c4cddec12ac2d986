// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/compoundfile.h"

#include <QVector>

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
    QByteArray units;
    for (const char character : name) {
        units.append(character).append('\0');
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
    constexpr int pieceSize = 8192 * entrySize;
    const QVector<QByteArray> names = {entryName("EncryptionInfo"), entryName("EncryptedPackage")};
    file->seek(0);
    for (QByteArray piece = file->read(pieceSize); !piece.isEmpty();
         piece = file->read(pieceSize)) {
        for (int at = 0; at + entrySize <= piece.size(); at += entrySize) {
            if (names.contains(QByteArray::fromRawData(piece.constData() + at, nameSize))) {
                return true;
            }
        }
    }
    return false;
}

} // namespace CompoundFile
