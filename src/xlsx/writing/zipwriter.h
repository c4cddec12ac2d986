// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <vector>

#include <QByteArray>
#include <QIODevice>
#include <QSet>

/// Packs parts into a ZIP archive. The same parts give the same bytes: every part carries the same
/// date, none the time of day.
class ZipWriter
{
public:
    /// Puts the next piece of a part in place of what \p piece holds; false, and no piece, behind
    /// the last one.
    using Pieces = std::function<bool(QByteArray *piece)>;
    /// About how many bytes a piece should have: enough that asking for it costs nothing, and few
    /// enough that it stays small.
    static constexpr int pieceSize = 64 * 1024;

    /// Adds the part \p name, whose content is asked for while the archive is written. The pieces
    /// have \p size bytes together, or the archive cannot be written.
    void add(const QByteArray &name, qint64 size, const Pieces &pieces);
    void add(const QByteArray &name, const QByteArray &content);

    /// Adds the parts of the ZIP archive \p archive but those named in \p without. False if it
    /// cannot be unpacked.
    bool addPartsOf(const QByteArray &archive, const QSet<QByteArray> &without);

    /// Writes the archive to \p target, which is open for writing and can be sought in. The parts
    /// are asked for in the order in which they were added, one to its end before the next, and no
    /// more than a piece of it is held. False if one step fails; what the target holds then is
    /// of no use.
    bool write(QIODevice &target);

private:
    struct Part {
        QByteArray name;
        qint64 size;
        Pieces pieces;
    };

    std::vector<Part> m_parts;
};
