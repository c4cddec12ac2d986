// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QByteArray>
#include <QString>

#include "xlsx/formatlimits.h"

class SharedStringsWriter;

/// Takes the cells of one row from left to right, each column at most once; columns count from 1.
/// Cells beyond the last column of a worksheet are left out.
class RowCells
{
public:
    static constexpr int largestColumn = FormatLimits::columns;

    RowCells() = default;
    virtual ~RowCells() = default;
    Q_DISABLE_COPY_MOVE(RowCells)

    /// Puts \p text into a cell as a text, even if it looks like a formula, an address or a number.
    virtual void text(int column, const QString &text) = 0;

    /// Puts \p number into a cell with all its digits; one that is not finite becomes the text
    /// "nan", "inf" or "-inf".
    virtual void number(int column, double number) = 0;
};

/// The cells of a worksheet, described row by row, so that none has to be kept.
struct SheetRows {
    static constexpr int largestCount = FormatLimits::rows;

    /// How many rows there are; those beyond the last row of a worksheet are left out.
    int count = 0;
    /// Puts the cells of \p row, counted from 1. It is called for all rows in ascending order, and
    /// once more for all of them, with the same result.
    std::function<void(int row, RowCells &cells)> fill;
};

/// A worksheet with cells.
struct CellSheet {
    QString name;
    SheetRows rows;
};

/// The XML of a worksheet, made piece by piece:
///
///     <?xml version="1.0" encoding="UTF-8" standalone="yes"?>
///     <worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">
///       <dimension ref="A1:C2"/>
///       <sheetViews><sheetView showRuler="0" workbookViewId="0"/></sheetViews>
///       <sheetFormatPr defaultRowHeight="15"/>
///       <sheetData>
///         <row r="1"><c r="B1" t="n"><v>1</v></c><c r="C1" t="n"><v>2</v></c></row>
///         <row r="2"><c r="A2" t="s"><v>0</v></c><c r="B2" t="n"><v>50.5</v></c></row>
///       </sheetData>
///     </worksheet>
///
/// It is one line; \c t="s" marks the index of a shared text. The rectangle of all cells and
/// the size of the whole come before the first row, and no row is kept: hence all rows are asked
/// for twice, first to count and to collect the texts, then to write.
class SheetWriter
{
public:
    /// Enters the texts into \p strings. Both have to outlive the writer.
    SheetWriter(const SheetRows &rows, SharedStringsWriter &strings);

    /// Bytes of all pieces together.
    qint64 size() const { return m_size; }

    /// Replaces what \p xml holds by the next piece, which has some of the rows; false after the
    /// last one.
    bool next(QByteArray *xml);

private:
    enum class Stage { Head, Rows, End };

    bool isLast(int row) const;

    const SheetRows &m_rows;
    SharedStringsWriter &m_strings;
    QByteArray m_head;
    qint64 m_size = 0;
    int m_row = 0;
    Stage m_stage = Stage::Head;
};
