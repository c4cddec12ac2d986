// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QByteArray>
#include <QString>

#include "xlsx/formatlimits.h"

class SharedStringsWriter;

/// Takes the cells of one row from left to right, each column once at most; they count from 1. What
/// lies beyond the last column of a worksheet is left out.
class RowCells
{
public:
    static constexpr int largestColumn = FormatLimits::columns;

    RowCells() = default;
    virtual ~RowCells() = default;
    Q_DISABLE_COPY_MOVE(RowCells)

    /// Puts \p text into a cell as text, whatever it looks like (a formula, an address, a number).
    virtual void text(int column, const QString &text) = 0;

    /// Puts \p number into a cell to its last digit; what is not finite becomes "nan", "inf" or
    /// "-inf", as text.
    virtual void number(int column, double number) = 0;
};

/// The cells of a worksheet, described row by row, so that none has to be kept.
struct SheetRows {
    static constexpr int largestCount = FormatLimits::rows;

    /// How many rows to ask for; those beyond the last row of a worksheet are left out.
    int count = 0;
    /// Gives the cells of \p row, counted from 1. It is asked for each row in ascending order,
    /// twice, and gives the same each time.
    std::function<void(int row, RowCells &cells)> fill;
};

/// A worksheet with cells.
struct CellSheet {
    QString name;
    SheetRows rows;
};

/// The XML of a worksheet, made piece by piece. All rows are asked for twice: first for the size,
/// the rectangle that the cells fill and the shared texts, then for what is written.
class SheetWriter
{
public:
    /// Enters the texts into \p strings. Refers to both as long as it lives.
    SheetWriter(const SheetRows &rows, SharedStringsWriter &strings);

    /// Bytes of all pieces together.
    qint64 size() const { return m_size; }

    /// Puts the next piece, of some rows, in place of what \p xml holds; false behind the last one.
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
