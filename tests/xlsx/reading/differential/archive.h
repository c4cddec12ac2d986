// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

/// A part in an archive whose headers a test writes itself, so that what an archive says twice can
/// differ.
struct ArchiveEntry {
    QByteArray name;
    QByteArray content;
    bool deflated = true;
    /// Checksum and sizes stand after the bytes, not before them.
    bool descriptor = false;
    /// The local header has the sizes in a field of 64 bits.
    bool wide = false;
    QByteArray localExtra;
    QByteArray centralExtra;
    /// The name in the local header, when it is another one.
    QByteArray localName;
    /// Added to what the local header (the first) or the directory says.
    quint32 localChecksumError = 0;
    quint32 checksumError = 0;
    quint32 sizeError = 0;
    quint32 packedSizeError = 0;
    quint32 offsetError = 0;
    quint16 centralFlags = 0;
    quint16 methodError = 0;
    bool unlisted = false;
};

struct Archive {
    QVector<ArchiveEntry> entries;
    QByteArray before;
    QByteArray beforeDirectory;
    QByteArray afterDirectory;
    QByteArray comment;
    QByteArray after;
    quint16 countError = 0;
    quint32 directoryOffsetError = 0;
    quint32 directorySizeError = 0;
    /// With the end record of 64 bits before the usual one.
    bool wideEnd = false;

    QByteArray bytes() const;
};

/// Names and contents, not `clear` when nobody can know them.
struct ArchiveParts {
    bool clear = false;
    QVector<QPair<QByteArray, QByteArray>> parts;
};

/// As a reader finds them that goes from local header to local header, from the first byte on.
ArchiveParts unpackedFromStart(const QByteArray &file);
/// As a reader finds them in the directory that the last end record names.
ArchiveParts unpackedFromDirectory(const QByteArray &file);
