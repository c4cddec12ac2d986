// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/handmadeworkbook.h"

/// A ZIP archive that a test writes itself, down to the bytes. Its default is one as every program
/// writes it, but for that nothing in it is compressed.
struct HandmadeArchive {
    HandmadeWorkbook::Parts parts;
    /// Sizes and places in fields of eight bytes, with the records that belong to them.
    bool zip64 = false;
    /// Sizes and checksums after the bytes of each part instead of before them.
    bool descriptors = false;
    bool deflated = false;
    /// What follows the bytes of the part \c extraPart and counts as more of them, and how many are
    /// missing at their end.
    QByteArray surplus;
    int missing = 0;
    /// Extra fields of the part \c extraPart in the list and before its bytes.
    QString extraPart;
    QByteArray listExtra;
    QByteArray localExtra;
    QByteArray comment;
    /// Where the first byte of the archive counts as.
    quint32 base = 0;

    QByteArray bytes() const;

    /// An extra field of the kind \p id.
    static QByteArray extra(quint16 id, const QByteArray &content);
    /// The extra field that gives a part named \p name the name \p other.
    static QByteArray unicodePath(const QByteArray &name, const QByteArray &other);

private:
    QByteArray end(quint64 offset, quint64 size) const;
};
