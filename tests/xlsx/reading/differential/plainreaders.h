// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <utility>

#include <QByteArray>
#include <QString>

/// What a cell shows: a number, or the words for a text, a truth or a moment.
struct PlainCell {
    enum Kind { Number, Text, Truth, Moment };

    Kind kind = Number;
    double number = 0.0;
    QString words;

    bool operator==(const PlainCell &other) const
    {
        return kind == other.kind && number == other.number && words == other.words;
    }
    QString toString() const;
};

/// Cells by row and column, each counted from 1.
using PlainCells = std::map<std::pair<int, int>, PlainCell>;

/// The cells of the first visible worksheet of a workbook as one simple reader takes them; `why`
/// says what cannot be clear to it, and then there are no cells.
struct PlainReading {
    QString why;
    PlainCells cells;

    bool isClear() const { return why.isNull(); }
    bool operator==(const PlainReading &other) const
    {
        return isClear() == other.isClear() && cells == other.cells;
    }
};

/// Two readers of the same rules: numbers in column 1 are texts with the digits of the file.
namespace PlainReaders
{

/// Looks for elements by their local names at any depth, and for attributes by local names; takes
/// the archive from its first byte on. With \p resolved the markup for compatibility was taken out
/// before.
PlainReading byLocalNames(const QByteArray &file, bool resolved);

/// Looks for elements in their namespace where the standard has them, without the markup for
/// compatibility; takes the archive by its directory.
PlainReading byNamespaces(const QByteArray &file);

} // namespace PlainReaders
