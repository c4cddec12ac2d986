// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <vector>

#include <QByteArray>
#include <QIODevice>
#include <QSet>

/// Packs parts into a ZIP archive:
///
///     50 4b 03 04  14 00  00 00  08 00  00 00  21 00    a part: ZIP 2.0, no flags, deflated,
///                                                       0:00 on 1 January 1980
///     crc32, packed size, size, 18 00 00 00             four bytes each; the name has 24 bytes,
///     "xl/worksheets/sheet3.xml"                        and there are no extra fields
///     8d 50 4d ...                                      the content
///     50 4b 01 02 ...                                   after all parts an entry for each of them
///     50 4b 05 06 ...                                   the end of the archive
///
/// The same parts give the same bytes, as every part has the same date.
class ZipWriter
{
public:
    /// Replaces what \p piece holds by the next piece of a part; false, and no piece, after the
    /// last one.
    using Pieces = std::function<bool(QByteArray *piece)>;
    /// About how many bytes a piece should have: enough that asking for it costs next to nothing,
    /// and few enough to be held.
    static constexpr int pieceSize = 64 * 1024;

    /// Adds the part \p name, whose pieces are asked for while the archive is written. Together
    /// they have \p size bytes; otherwise writing fails.
    void add(const QByteArray &name, qint64 size, const Pieces &pieces);
    void add(const QByteArray &name, const QByteArray &content);

    /// Adds the parts of the ZIP archive \p archive except those named in \p without. False if one
    /// cannot be unpacked.
    bool addPartsOf(const QByteArray &archive, const QSet<QByteArray> &without);

    /// Writes the archive to \p target, which is open for writing and seekable: part after part in
    /// the order of adding, with no more than a piece in memory. False if a step fails; the target
    /// is useless then.
    bool write(QIODevice &target);

private:
    struct Part {
        QByteArray name;
        qint64 size;
        Pieces pieces;
    };

    std::vector<Part> m_parts;
};
