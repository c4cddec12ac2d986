// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QVector>

#include "xlsx/reading/loaderror.h"

/// The list of parts at the end of an archive, checked so that no two readers could take different
/// lists from the file:
///
///     PK\3\4 header, name, bytes      each part, the first of them at the first byte of the file
///     PK\1\2 entry, name, extras      each part again: the list, which touches what follows it
///     PK\6\6 record PK\6\7 locator    only in archives of the kind zip64
///     PK\5\6 end record, comment      to the last byte of the file
class ZipDirectory
{
public:
    enum Method { Stored = 0, Deflated = 8 };

    struct Entry {
        QByteArray name;
        /// Another name, which an extra field gives; empty without one.
        QByteArray otherName;
        /// Where the header of the part is.
        quint64 offset = 0;
        quint64 packedSize = 0;
        quint64 size = 0;
        quint32 checksum = 0;
        /// How it is packed: a Method, or one that workbooks do not know.
        quint64 method = Stored;
        bool isEncrypted = false;
    };

    /// Reads the list of \p file, which has at most \p largest bytes.
    LoadError read(QFile *file, qint64 largest);

    const QVector<Entry> &entries() const { return m_entries; }

    /// Where the bytes of the part \p entry begin in \p file. 0 unless its header has the same name
    /// and its bytes end before the list.
    quint64 begin(QFile *file, const Entry &entry) const;

private:
    LoadError readEntries(const QByteArray &list, quint64 count);

    QVector<Entry> m_entries;
    quint64 m_offset = 0; // of the list, where the parts end
};
