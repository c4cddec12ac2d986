// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/sheetwriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "xlsx/sharedstringswriter.h"

namespace
{

// Enough rows at a time that asking costs nothing, and few enough that they stay small.
constexpr int pieceSize = 64 * 1024;

// A place, a number and what stands around them take 60 bytes at most.
using CellXml = std::array<char, 96>;

char *put(char *to, std::string_view text)
{
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

// The letters that name a column.
char *putLetters(char *to, int column)
{
    constexpr int letters = 26;
    const int rest = (column - 1) / letters;
    char *const end = rest > 0 ? putLetters(to, rest) : to;
    *end = static_cast<char>('A' + (column - 1) % letters);
    return end + 1;
}

char *putWhole(char *to, qint64 number)
{
    return std::to_chars(to, to + 20, number).ptr;
}

// The shortest digits that read back as the same number, the sign of a zero included; whole numbers
// without an exponent as long as each of them has a double of its own.
char *putNumber(char *to, double number)
{
    constexpr double wholeNumbersEnd = 1e15;
    const bool isNegativeZero = number == 0.0 && std::signbit(number);
    if (std::abs(number) < wholeNumbersEnd && std::trunc(number) == number && !isNegativeZero) {
        return putWhole(to, static_cast<qint64>(number));
    }
    return std::to_chars(to, to + 32, number).ptr;
}

QString nonFiniteText(double number)
{
    if (std::isnan(number)) {
        return QStringLiteral("nan");
    }
    return number > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
}

QByteArray reference(int row, int column)
{
    CellXml text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    char *const end = putWhole(putLetters(text.data(), column), row);
    return {text.data(), static_cast<int>(end - text.data())};
}

/// Finds the smallest rectangle that holds all cells.
class Extent : public RowCells
{
public:
    explicit Extent(const SheetRows &rows)
    {
        const int count = std::min(rows.count, SheetRows::largestCount);
        for (m_row = 1; m_row <= count; ++m_row) {
            rows.fill(m_row, *this);
        }
    }

    void text(int column, const QString & /*text*/) override { add(column); }
    void number(int column, double /*number*/) override { add(column); }

    /// The rectangle as a range; the first cell where there is none.
    QByteArray range() const
    {
        if (m_lastRow == 0) {
            return "A1";
        }
        const QByteArray first = reference(m_firstRow, m_firstColumn);
        const QByteArray last = reference(m_lastRow, m_lastColumn);
        return first == last ? first : first + ':' + last;
    }

private:
    void add(int column)
    {
        if (column <= largestColumn) {
            m_firstRow = m_lastRow == 0 ? m_row : m_firstRow;
            m_lastRow = m_row;
            m_firstColumn = std::min(m_firstColumn, column);
            m_lastColumn = std::max(m_lastColumn, column);
        }
    }

    int m_row = 0;
    int m_firstRow = 0;
    int m_lastRow = 0;
    int m_firstColumn = largestColumn;
    int m_lastColumn = 0;
};

/// Writes the cells of rows behind an XML.
class CellWriter : public RowCells
{
public:
    CellWriter(QByteArray &xml, SharedStringsWriter &strings) : m_xml(xml), m_strings(strings) { }

    void startRow(int row)
    {
        m_digits = QByteArray::number(row);
        m_lastColumn = 0;
    }

    void endRow()
    {
        if (m_lastColumn > 0) {
            m_xml.append("</row>");
        }
    }

    void text(int column, const QString &text) override
    {
        if (column <= largestColumn) {
            CellXml cell; // NOLINT(cppcoreguidelines-pro-type-member-init)
            char *end = put(startCell(cell.data(), column), R"(" t="s"><v>)");
            endCell(cell, putWhole(end, m_strings.indexOf(text)));
        }
    }

    void number(int column, double number) override
    {
        if (!std::isfinite(number)) {
            text(column, nonFiniteText(number));
        } else if (column <= largestColumn) {
            CellXml cell; // NOLINT(cppcoreguidelines-pro-type-member-init)
            endCell(cell, putNumber(put(startCell(cell.data(), column), R"(" t="n"><v>)"), number));
        }
    }

private:
    char *startCell(char *to, int column)
    {
        Q_ASSERT(column > m_lastColumn);
        if (m_lastColumn == 0) {
            m_xml.append("<row r=\"").append(m_digits).append("\">");
        }
        m_lastColumn = column;
        char *const end = putLetters(put(to, "<c r=\""), column);
        std::memcpy(end, m_digits.constData(), static_cast<size_t>(m_digits.size()));
        return end + m_digits.size();
    }

    void endCell(const CellXml &cell, char *end)
    {
        end = put(end, "</v></c>");
        m_xml.append(cell.data(), static_cast<int>(end - cell.data()));
    }

    QByteArray &m_xml;
    SharedStringsWriter &m_strings;
    QByteArray m_digits;
    int m_lastColumn = 0;
};

} // namespace

SheetWriter::SheetWriter(const SheetRows &rows, SharedStringsWriter &strings)
    : m_rows(rows), m_strings(strings)
{
}

bool SheetWriter::next(QByteArray *xml)
{
    if (m_stage == Stage::End) {
        return false;
    }
    // Keeps what the piece before has reserved.
    xml->resize(0);
    if (m_stage == Stage::Head) {
        putHead(xml);
        m_stage = Stage::Rows;
    }
    putRows(xml);
    if (m_row >= std::min(m_rows.count, SheetRows::largestCount)) {
        xml->append("</sheetData></worksheet>");
        m_stage = Stage::End;
    }
    return true;
}

void SheetWriter::putHead(QByteArray *xml) const
{
    xml->append(R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
                R"(<dimension ref=")")
        .append(Extent(m_rows).range())
        .append(R"("/><sheetViews><sheetView showRuler="0" workbookViewId="0"/></sheetViews>)"
                R"(<sheetFormatPr defaultRowHeight="15"/><sheetData>)");
}

void SheetWriter::putRows(QByteArray *xml)
{
    CellWriter cells(*xml, m_strings);
    const int count = std::min(m_rows.count, SheetRows::largestCount);
    while (m_row < count && xml->size() < pieceSize) {
        ++m_row;
        cells.startRow(m_row);
        m_rows.fill(m_row, cells);
        cells.endRow();
    }
}
