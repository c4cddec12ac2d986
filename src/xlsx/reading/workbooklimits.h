// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// How large a workbook may be that is loaded. Below these limits loading a file takes at most
/// 512 MiB of memory and 5 seconds, whatever the file holds.
struct WorkbookLimits {
    /// Bytes of the file: twenty times a workbook of 50,000 rows with 200 numbers each.
    qint64 fileSize = 256 * mebibyte;
    /// Bytes of the list of parts, which is held in memory: 10,000 parts, where an ordinary
    /// workbook has a dozen.
    qint64 directorySize = mebibyte;
    /// Bytes of one part, unpacked: the sheet of 50,000 rows with 200 numbers each has 400 MiB.
    qint64 partSize = 512 * mebibyte;
    /// Bytes of the list of sheets and of each list of relationships, unpacked, which are mostly
    /// held in memory: a thousand sheets and names for each of them have less than 1 MiB.
    qint64 listSize = 16 * mebibyte;
    /// Bytes of all parts that are read, unpacked: one of the largest and what goes with it.
    qint64 unpackedSize = 640 * mebibyte;
    /// Bytes without an end of a tag, a comment or the like. The parser holds such a piece whole;
    /// the longest in workbooks are list-like attributes of a few kilobytes.
    qint64 tokenSize = mebibyte;
    /// Elements inside each other: the format itself nests less than 30.
    int depth = 128;
    /// Attributes of one element: the format itself has elements with some 40.
    int attributes = 256;
    /// Namespaces that are declared, or may be ignored, at one place: the largest programs declare
    /// some 40.
    int namespaces = 256;
    /// Tags, attributes, pieces of text and the like in all parts that are read, each of which
    /// takes time, and long tags and names more: the cells that fit into memory have 18 million,
    /// indented and with a formula each.
    int xmlItems = 24000000;
    /// Bytes that the XML parser may take, which keeps each name that it meets once.
    qint64 parserMemory = 64 * mebibyte;
    /// Cell formats, as in the format (65,490), rounded up.
    int cellFormats = 1 << 16;
    /// Entries of each other list: sheets, number formats, relationships of a part.
    int listEntries = 1 << 16;
    /// Bytes that cells and texts may take by the measures below: 1,200,000 numbers, or 56,000
    /// rows of a text and 20 numbers. Storing them takes most of the time, too.
    qint64 memory = 320 * mebibyte;
    /// Bytes that a cell takes in the document, its number included (measured, rounded up).
    qint64 cellCost = 272;
    /// Bytes that a row with cells takes beside them (measured, rounded up).
    qint64 rowCost = 144;
    /// Bytes that a text takes beside its characters (measured, rounded up).
    qint64 textCost = 64;

    /// Bytes that \p text takes by these measures.
    qint64 memoryOf(const QString &text) const
    {
        return textCost + text.size() * static_cast<qint64>(sizeof(QChar));
    }

    static constexpr qint64 mebibyte = 1 << 20;
};
