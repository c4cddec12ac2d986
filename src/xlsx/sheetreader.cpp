// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/sheetreader.h"

#include <array>
#include <cstring>

#include <QDateTime>
#include <xlsxcell.h>
#include <xlsxworkbook.h>

#include "xlsx/celltext.h"
#include "xlsx/workbooklimits.h"

namespace
{

enum Node { SheetNode = 1, DataNode, RowNode, CellNode, ValueNode, InlineNode, RunNode, TextNode };

// An unknown element could be a row, a cell or a content, without which all that follow would be
// shifted. Phonetic runs hold texts too, which repeat what the others say.
constexpr std::array<XmlStep, 15> steps = {{
    {"worksheet", XmlReader::document, XmlOutcome::Read, SheetNode},
    {"sheetData", SheetNode, XmlOutcome::Read, DataNode, XmlOutcome::Refused},
    {"row", DataNode, XmlOutcome::Read, RowNode, XmlOutcome::Refused},
    {"c", RowNode, XmlOutcome::Read, CellNode, XmlOutcome::Refused},
    {"extLst", RowNode, XmlOutcome::PassedOver},
    {"v", CellNode, XmlOutcome::Read, ValueNode, XmlOutcome::Refused},
    {"is", CellNode, XmlOutcome::Read, InlineNode, XmlOutcome::Refused},
    {"f", CellNode, XmlOutcome::PassedOver},
    {"extLst", CellNode, XmlOutcome::PassedOver},
    {"t", InlineNode, XmlOutcome::Read, TextNode, XmlOutcome::Refused},
    {"r", InlineNode, XmlOutcome::Read, RunNode, XmlOutcome::Refused},
    {"rPh", InlineNode, XmlOutcome::PassedOver},
    {"phoneticPr", InlineNode, XmlOutcome::PassedOver},
    {"t", RunNode, XmlOutcome::Read, TextNode, XmlOutcome::Refused},
    {"rPr", RunNode, XmlOutcome::PassedOver},
}};

// Another name for the type or the format would change what the content means.
constexpr std::array<const char *, 7> cellAttributes = {"r", "s", "t", "cm", "vm", "ph", nullptr};

struct TypeName {
    const char *name;
    SheetReader::Type type;
};

constexpr std::array<TypeName, 7> typeNames = {{
    {"n", SheetReader::Type::Number},
    {"b", SheetReader::Type::Boolean},
    {"e", SheetReader::Type::Error},
    {"s", SheetReader::Type::SharedString},
    {"str", SheetReader::Type::FormulaString},
    {"inlineStr", SheetReader::Type::InlineString},
    {"d", SheetReader::Type::Date},
}};

// Days from 1900 on through the year 9999, the last one that has a date; from 1904 on somewhat
// less.
constexpr double firstDayWithoutDate = 2'958'466.0;

// What spreadsheets show for a number under a format of dates that is no date.
QString noDate()
{
    return QStringLiteral("########");
}

bool toIndex(const QByteArray &text, int count, int *index)
{
    bool known = false;
    *index = text.trimmed().toInt(&known);
    return known && *index >= 0 && *index < count;
}

// The column and the row that a reference such as "C17" names, each from 1 on; 0 for one that is
// missing. Numbers beyond all sheets are cut.
struct Reference {
    int row = 0;
    int column = 0;
    bool complete = false;
};

Reference parseReference(const char *text)
{
    constexpr int letters = 26;
    constexpr int bound = 10'000'000;
    Reference reference;
    for (; (*text | 0x20) >= 'a' && (*text | 0x20) <= 'z'; ++text) {
        reference.column = qMin(bound, reference.column * letters + ((*text | 0x20) - 'a' + 1));
    }
    for (; *text >= '0' && *text <= '9'; ++text) {
        reference.row = qMin(bound, reference.row * 10 + (*text - '0'));
    }
    reference.complete = *text == '\0' && reference.row > 0 && reference.column > 0;
    return reference;
}

} // namespace

SheetReader::SheetReader(const SheetContext &context)
    : XmlReader(Vocabulary::Spreadsheet, steps), m_context(context)
{
    constexpr int builtinDateAndTime = 22;
    m_dateFormat.setNumberFormatIndex(builtinDateAndTime);
}

void SheetReader::enter(int node, const XmlAttributes &attributes)
{
    switch (node) {
    case DataNode:
        meetOnce(&m_hasData);
        break;
    case RowNode:
        enterRow(attributes);
        break;
    case CellNode:
        enterCell(attributes);
        break;
    case ValueNode:
    case InlineNode:
        ++m_contents;
        break;
    case RunNode:
        m_text.beginRun();
        break;
    case TextNode:
        if (!m_text.begin()) {
            // Joined they would read as another number.
            refuse(LoadError::Damaged);
        }
        break;
    default:
        break;
    }
}

void SheetReader::leave(int node)
{
    if (node == CellNode) {
        if (const LoadError error = store(); error != LoadError::None) {
            refuse(error);
        }
    } else if (node == SheetNode && !m_hasData) {
        refuse(LoadError::Damaged);
    }
}

void SheetReader::text(int node, const char *data, int size)
{
    if (node == ValueNode || node == TextNode) {
        m_text.append(data, size);
    }
}

void SheetReader::enterRow(const XmlAttributes &attributes)
{
    m_column = 0;
    ++m_row;
    if (const char *const number = attributes.value("r"); number != nullptr) {
        bool known = false;
        const qlonglong row = QByteArray(number).toLongLong(&known);
        if (!known || row < 1) {
            refuse(LoadError::Damaged);
            return;
        }
        m_row = static_cast<int>(qMin<qlonglong>(row, workbookLimits.rows + 1));
    }
    if (m_row > workbookLimits.rows) {
        refuse(LoadError::TooLarge);
    }
}

void SheetReader::enterCell(const XmlAttributes &attributes)
{
    m_text.clear();
    m_contents = 0;
    if (!attributes.areAmong(cellAttributes.data()) || !moveTo(attributes.value("r"))
        || !setType(attributes.value("t")) || !setFormat(attributes.value("s"))) {
        refuse(LoadError::Damaged);
    } else if (m_column > workbookLimits.columns) {
        refuse(LoadError::TooLarge);
    }
}

bool SheetReader::moveTo(const char *reference)
{
    if (reference == nullptr) {
        ++m_column;
        return true;
    }
    const Reference parsed = parseReference(reference);
    m_column = parsed.column;
    return parsed.complete && parsed.row == m_row;
}

bool SheetReader::setType(const char *name)
{
    if (name == nullptr) {
        m_type = Type::Number;
        return true;
    }
    for (const TypeName &known : typeNames) {
        if (std::strcmp(known.name, name) == 0) {
            m_type = known.type;
            return true;
        }
    }
    return false;
}

bool SheetReader::setFormat(const char *index)
{
    m_format = 0;
    return index == nullptr || toIndex(index, m_context.formats->count(), &m_format);
}

LoadError SheetReader::store()
{
    if (m_contents > 1) {
        return LoadError::Damaged;
    }
    const QByteArray &text = m_text.utf8();
    if (text.isEmpty()) {
        return LoadError::None;
    }
    switch (m_type) {
    case Type::Number:
        return storeNumber(text);
    case Type::Boolean:
        return storeBoolean(text);
    case Type::Error:
        return storeError(CellText::decode(text));
    case Type::SharedString:
        return storeSharedString(text);
    case Type::Date:
        return storeIsoDate(text);
    default:
        return storeText(CellText::decode(text));
    }
}

// A cell that should hold a number and does not is an error. Passed over it would end the values of
// its row or join its neighbours, and nobody would know.
LoadError SheetReader::storeNumber(const QByteArray &text)
{
    if (text.trimmed().isEmpty()) {
        return LoadError::None;
    }
    double value = 0.0;
    const NumberFormats::Kind kind = m_context.formats->kind(m_format);
    if (kind == NumberFormats::Kind::Unknown || !CellText::toNumber(text, &value)) {
        return LoadError::Damaged;
    }
    if (kind == NumberFormats::Kind::Date) {
        return storeDate(value);
    }
    if (m_column == m_context.textColumn) {
        return storeText(CellText::plainDigits(text));
    }
    const LoadError error = claimCell();
    if (error == LoadError::None) {
        m_context.target->writeNumeric(m_row, m_column, value);
    }
    return error;
}

LoadError SheetReader::storeDate(double days)
{
    if (!(days >= 0.0 && days < firstDayWithoutDate)) {
        return storeText(noDate());
    }
    const LoadError error = claimCell();
    if (error == LoadError::None) {
        m_context.target->writeNumeric(m_row, m_column, days, m_dateFormat);
    }
    return error;
}

LoadError SheetReader::storeIsoDate(const QByteArray &text)
{
    const QString iso = QString::fromUtf8(text.trimmed());
    const QDateTime moment = QDateTime::fromString(iso, Qt::ISODateWithMs);
    const QTime time = QTime::fromString(iso, Qt::ISODateWithMs);
    constexpr double millisecondsOfDay = 86'400'000.0;
    if (!moment.isValid()) {
        return time.isValid() ? storeDate(time.msecsSinceStartOfDay() / millisecondsOfDay)
                              : storeText(noDate());
    }
    // The days of the workbook count from here on, but for the first two months of 1900.
    const QDate start =
        m_context.target->workbook()->isDate1904() ? QDate(1904, 1, 1) : QDate(1899, 12, 30);
    return storeDate(static_cast<double>(start.daysTo(moment.date()))
                     + moment.time().msecsSinceStartOfDay() / millisecondsOfDay);
}

LoadError SheetReader::storeBoolean(const QByteArray &text)
{
    const QByteArray name = text.trimmed();
    const bool isTrue = name == "1" || name == "true";
    if (!isTrue && name != "0" && name != "false") {
        return LoadError::Damaged;
    }
    const LoadError error = claimCell();
    if (error == LoadError::None) {
        m_context.target->writeBool(m_row, m_column, isTrue);
    }
    return error;
}

// A number would count as a value, which the text of an error never does.
LoadError SheetReader::storeError(const QString &text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    return isNumber ? LoadError::Damaged : storeText(text);
}

LoadError SheetReader::storeSharedString(const QByteArray &index)
{
    int number = 0;
    if (!toIndex(index, m_context.sharedStrings->size(), &number)) {
        return LoadError::Damaged;
    }
    return writeText(m_context.sharedStrings->at(number));
}

LoadError SheetReader::storeText(const QString &text)
{
    return m_context.budget->takeText(text) ? writeText(text) : LoadError::TooLarge;
}

// As an inline string: the general write takes some texts for formulas or addresses.
LoadError SheetReader::writeText(const QString &text)
{
    if (text.isEmpty()) {
        return LoadError::None;
    }
    const LoadError error = claimCell();
    if (error == LoadError::None) {
        m_context.target->writeInlineString(m_row, m_column, text);
    }
    return error;
}

// Takes the current cell for contents. Only cells out of order are looked up.
LoadError SheetReader::claimCell()
{
    const bool newRow = m_row != m_lastRow;
    if (m_row < m_lastRow || (m_row == m_lastRow && m_column <= m_lastColumn)) {
        if (m_context.target->cellAt(m_row, m_column) != nullptr) {
            return LoadError::Damaged;
        }
    } else {
        m_lastRow = m_row;
        m_lastColumn = m_column;
    }
    return m_context.budget->takeCell(newRow) ? LoadError::None : LoadError::TooLarge;
}
