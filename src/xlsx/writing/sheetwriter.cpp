// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/writing/sheetwriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "xlsx/writing/sharedstringswriter.h"
#include "xlsx/writing/zipwriter.h"

namespace
{

// A reference, a number and the markup around them take 60 bytes at most.
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

// The shortest digits that read back as the same number, the sign of a zero included. Whole numbers
// have no exponent as long as a double can hold each of them.
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
    return std::signbit(number) ? QStringLiteral("-inf") : QStringLiteral("inf");
}

QByteArray reference(int row, int column)
{
    CellXml text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    char *const end = putWhole(putLetters(text.data(), column), row);
    return {text.data(), static_cast<int>(end - text.data())};
}

/// The smallest rectangle that holds all cells.
struct Extent {
    void add(int row, int column)
    {
        firstRow = lastRow == 0 ? row : firstRow;
        lastRow = row;
        firstColumn = std::min(firstColumn, column);
        lastColumn = std::max(lastColumn, column);
    }

    /// The rectangle as a range; A1 without cells.
    QByteArray range() const
    {
        if (lastRow == 0) {
            return "A1";
        }
        const QByteArray first = reference(firstRow, firstColumn);
        const QByteArray last = reference(lastRow, lastColumn);
        return first == last ? first : first + ':' + last;
    }

    int firstRow = 0;
    int lastRow = 0;
    int firstColumn = RowCells::largestColumn;
    int lastColumn = 0;
};

/// Appends the cells of rows to an XML.
class CellWriter : public RowCells
{
public:
    /// Gives the index of a shared text.
    using TextIndex = std::function<int(const QString &text)>;

    CellWriter(QByteArray &xml, TextIndex textIndex) : m_xml(xml), m_textIndex(std::move(textIndex))
    {
    }

    /// Appends the rows after \p row until there is enough XML for a piece; sets \p row to the
    /// last of them.
    void putRows(const SheetRows &rows, int *row)
    {
        const int count = std::min(rows.count, SheetRows::largestCount);
        while (*row < count && m_xml.size() < ZipWriter::pieceSize) {
            ++*row;
            startRow(*row);
            rows.fill(*row, *this);
            endRow();
        }
    }

    const Extent &extent() const { return m_extent; }

    void text(int column, const QString &text) override
    {
        if (column <= largestColumn) {
            CellXml cell; // NOLINT(cppcoreguidelines-pro-type-member-init)
            char *end = put(startCell(cell.data(), column), R"(" t="s"><v>)");
            endCell(cell, putWhole(end, m_textIndex(text)));
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
    void startRow(int row)
    {
        m_row = row;
        m_digits = QByteArray::number(row);
        m_lastColumn = 0;
    }

    void endRow()
    {
        if (m_lastColumn > 0) {
            m_xml.append("</row>");
        }
    }

    char *startCell(char *to, int column)
    {
        Q_ASSERT(column > m_lastColumn);
        if (m_lastColumn == 0) {
            m_xml.append("<row r=\"").append(m_digits).append("\">");
        }
        m_lastColumn = column;
        m_extent.add(m_row, column);
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
    TextIndex m_textIndex;
    Extent m_extent;
    int m_row = 0;
    QByteArray m_digits;
    int m_lastColumn = 0;
};

const QByteArray tail = QByteArrayLiteral("</sheetData></worksheet>");

QByteArray headFor(const Extent &extent)
{
    return R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
           R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
           R"(<dimension ref=")"
        + extent.range()
        + R"("/><sheetViews><sheetView showRuler="0" workbookViewId="0"/></sheetViews>)"
          R"(<sheetFormatPr defaultRowHeight="15"/><sheetData>)";
}

} // namespace

SheetWriter::SheetWriter(const SheetRows &rows, SharedStringsWriter &strings)
    : m_rows(rows), m_strings(strings)
{
    QByteArray xml;
    CellWriter cells(xml, [&strings](const QString &text) { return strings.enter(text); });
    int row = 0;
    do {
        xml.resize(0);
        cells.putRows(rows, &row);
        m_size += xml.size();
    } while (!isLast(row));
    m_head = headFor(cells.extent());
    m_size += m_head.size() + tail.size();
}

bool SheetWriter::isLast(int row) const
{
    return row >= std::min(m_rows.count, SheetRows::largestCount);
}

bool SheetWriter::next(QByteArray *xml)
{
    if (m_stage == Stage::End) {
        return false;
    }
    // Keeps the memory of the piece before.
    xml->resize(0);
    if (m_stage == Stage::Head) {
        xml->append(m_head);
        m_stage = Stage::Rows;
    }
    CellWriter cells(*xml, [this](const QString &text) { return m_strings.indexOf(text); });
    cells.putRows(m_rows, &m_row);
    if (isLast(m_row)) {
        xml->append(tail);
        m_stage = Stage::End;
    }
    return true;
}
