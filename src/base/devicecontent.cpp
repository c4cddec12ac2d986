// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/devicecontent.h"

#include <QBuffer>

namespace
{

bool copy(QIODevice &from, QIODevice &to, qint64 begin, qint64 end)
{
    constexpr qint64 pieceSize = qint64(64) * 1024;
    if (!from.seek(begin) || !to.seek(begin)) {
        return false;
    }
    while (begin < end) {
        const QByteArray piece = from.read(qMin(end - begin, pieceSize));
        if (piece.isEmpty() || !writeAll(to, piece.constData(), piece.size())) {
            return false;
        }
        begin += piece.size();
    }
    return true;
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

Overwritten overwrite(QFileDevice &file, QIODevice &content, const std::function<bool()> &sync)
{
    QByteArray old = file.readAll();
    if (old.size() != file.size()) {
        return Overwritten::Old;
    }
    const qint64 size = content.size();
    const qint64 common = qMin<qint64>(old.size(), size);
    // Write what extends past the old content first: only that can run out of space.
    const bool hasRoom = copy(content, file, common, size);
    if (hasRoom && copy(content, file, 0, common) && file.resize(size) && sync()) {
        return Overwritten::New;
    }
    QBuffer oldContent(&old);
    const bool isThere =
        !hasRoom || (oldContent.open(QIODevice::ReadOnly) && copy(oldContent, file, 0, old.size()));
    return isThere && file.resize(old.size()) && sync() ? Overwritten::Old : Overwritten::Mixture;
}
