// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/atomicsave.h"

#include "base/filereplacement.h"

bool saveAtomically(const QString &fileName, const ContentWriter &write)
{
    // The system would take the part before the zero as the name.
    return !fileName.isEmpty() && !fileName.contains(QChar(0)) && replaceFile(fileName, write);
}

bool saveAtomically(const QString &fileName, const QByteArray &content)
{
    return saveAtomically(fileName, [&content](QIODevice &device) {
        return writeAll(device, content.constData(), content.size());
    });
}
