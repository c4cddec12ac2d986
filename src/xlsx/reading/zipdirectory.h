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
    struct Entry {
        QByteArray name;
        /// Another name, which an extra field gives; empty without one.
        QByteArray otherName;
        /// Where the header of the part is.
        quint64 offset = 0;
        quint64 packedSize = 0;
        quint64 size = 0;
        bool encrypted = false;
        /// Whether it is neither encrypted nor packed in a way that workbooks do not know.
        bool plain = false;
        /// The 46 bytes of the entry.
        QByteArray fixed;
    };

    /// Reads the list of \p file, which has at most \p largest bytes.
    LoadError read(QFile *file, qint64 largest);

    const QVector<Entry> &entries() const { return m_entries; }
    /// Where the list begins and the parts end.
    qint64 offset() const { return m_offset; }

    /// Whether the header of the part has the name of \p entry and its bytes end before the list.
    bool isConfirmed(QFile *file, const Entry &entry) const;

    /// What ends an archive of the same parts that nobody can read in two ways: the list written
    /// anew, without anything optional, and an end record so far from it that no other is found.
    QByteArray rewritten() const;

private:
    LoadError readEntries(const QByteArray &list, quint64 count);

    QVector<Entry> m_entries;
    qint64 m_offset = 0;
};
