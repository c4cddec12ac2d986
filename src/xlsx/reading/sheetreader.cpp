// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetreader.h"

#include <array>
#include <cstring>

#include <QDateTime>
#include <xlsxcellreference.h>
#include <xlsxworkbook.h>

#include "xlsx/celltext.h"
#include "xlsx/formatlimits.h"
#include "xlsx/reading/workbooklimits.h"

namespace
{

enum Node { SheetNode, DataNode, RowNode, CellNode, ValueNode, InlineNode, RunNode, TextNode };

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

bool toIndex(const QByteArray &text, int *index)
{
    bool known = false;
    *index = text.trimmed().toInt(&known);
    return known && *index >= 0;
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
        ++m_values;
        break;
    case InlineNode:
        ++m_inlineTexts;
        break;
    case RunNode:
        m_inlineText.beginRun();
        break;
    case TextNode:
        if (!m_inlineText.begin()) {
            // Joined they would read as another number.
            refuse(LoadError::Damage::TwoContents);
        }
        break;
    default:
        break;
    }
}

void SheetReader::leave(int node)
{
    if (node == CellNode) {
        store();
        m_inCell = isRefused();
    } else if (node == SheetNode && !m_hasData) {
        refuse(LoadError::Damage::Element);
    }
}

void SheetReader::text(int node, const char *data, int size)
{
    if (node == ValueNode) {
        m_value.append(data, size);
    } else if (node == TextNode) {
        m_inlineText.append(data, size);
    }
}

QString SheetReader::currentCell() const
{
    return m_inCell && m_column > 0 ? QXlsx::CellReference(m_row, m_column).toString() : QString();
}

void SheetReader::enterRow(const XmlAttributes &attributes)
{
    m_column = 0;
    ++m_row;
    if (const char *const number = attributes.value("r"); number != nullptr) {
        bool known = false;
        const qlonglong row = QByteArray(number).toLongLong(&known);
        if (!known || row < 1) {
            refuse(LoadError::Damage::Reference);
            return;
        }
        m_row = static_cast<int>(qMin<qlonglong>(row, FormatLimits::rows + 1));
    }
    if (m_row > FormatLimits::rows) {
        refuse(LoadError::TooLarge);
    }
}

void SheetReader::enterCell(const XmlAttributes &attributes)
{
    m_inCell = true;
    m_value.clear();
    m_inlineText.clear();
    m_values = 0;
    m_inlineTexts = 0;
    if (!moveTo(attributes.value("r"))) {
        refuse(LoadError::Damage::Reference);
    } else if (m_column > FormatLimits::columns) {
        refuse(LoadError::TooLarge);
    } else if (!attributes.areAmong(cellAttributes.data())) {
        refuse(LoadError::Damage::Attribute);
    } else if (!setType(attributes.value("t"))) {
        refuse(LoadError::Damage::CellType);
    } else if (!setFormat(attributes.value("s"))) {
        refuse(LoadError::Damage::Index);
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
    return index == nullptr || *index == '\0' || toIndex(index, &m_format);
}

void SheetReader::store()
{
    const bool isInline = m_inlineTexts > 0;
    const bool both = isInline && m_values > 0 && m_type != Type::InlineString;
    if (m_values > 1 || m_inlineTexts > 1 || both) {
        refuse(LoadError::Damage::TwoContents);
        return;
    }
    const QByteArray &text = isInline ? m_inlineText.utf8() : m_value.utf8();
    if (text.isEmpty()) {
        return;
    }
    switch (m_type) {
    case Type::Number:
        storeNumber(text);
        break;
    case Type::Boolean:
        storeBoolean(text);
        break;
    case Type::Error:
        storeError(CellText::decode(text));
        break;
    case Type::SharedString:
        storeSharedString(text);
        break;
    case Type::Date:
        storeIsoDate(text);
        break;
    case Type::FormulaString:
    case Type::InlineString:
        storeText(CellText::decode(text));
        break;
    }
}

// A cell that should hold a number and does not is an error. Passed over it would end the values of
// its row or join its neighbours, and nobody would know.
void SheetReader::storeNumber(const QByteArray &text)
{
    if (text.trimmed().isEmpty()) {
        return;
    }
    double value = 0.0;
    if (!CellText::toNumber(text, &value)) {
        refuse(LoadError::Damage::Number);
    } else if (m_context.formats->kind(m_format) == NumberFormats::Kind::Date) {
        storeDate(value);
    } else if (m_column == m_context.textColumn) {
        storeText(CellText::plainDigits(text));
    } else {
        write({QXlsx::Cell::NumberType, value, {}, false});
    }
}

void SheetReader::storeDate(double days)
{
    if (days >= 0.0 && days < firstDayWithoutDate) {
        write({QXlsx::Cell::NumberType, days, {}, true});
    } else {
        storeText(noDate());
    }
}

void SheetReader::storeIsoDate(const QByteArray &text)
{
    const QString iso = QString::fromUtf8(text.trimmed());
    const QDateTime moment = QDateTime::fromString(iso, Qt::ISODateWithMs);
    const QTime time = QTime::fromString(iso, Qt::ISODateWithMs);
    constexpr double millisecondsOfDay = 86'400'000.0;
    if (moment.isValid()) {
        // The days of the workbook count from here on, but for the first two months of 1900.
        const QDate start =
            m_context.target->workbook()->isDate1904() ? QDate(1904, 1, 1) : QDate(1899, 12, 30);
        storeDate(static_cast<double>(start.daysTo(moment.date()))
                  + moment.time().msecsSinceStartOfDay() / millisecondsOfDay);
    } else if (time.isValid()) {
        storeDate(time.msecsSinceStartOfDay() / millisecondsOfDay);
    } else {
        storeText(noDate());
    }
}

void SheetReader::storeBoolean(const QByteArray &text)
{
    const QByteArray name = text.trimmed();
    const bool isTrue = name == "1" || name == "true";
    if (isTrue || name == "0" || name == "false") {
        write({QXlsx::Cell::BooleanType, isTrue ? 1.0 : 0.0, {}, false});
    } else {
        refuse(LoadError::Damage::TruthValue);
    }
}

// A number would count as a value, which the text of an error never does.
void SheetReader::storeError(const QString &text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    if (isNumber) {
        refuse(LoadError::Damage::ErrorValue);
    } else {
        storeText(text);
    }
}

void SheetReader::storeSharedString(const QByteArray &index)
{
    int number = 0;
    if (!toIndex(index, &number) || number >= m_context.sharedStrings->size()) {
        refuse(LoadError::Damage::TextIndex);
    } else if (const QString &text = m_context.sharedStrings->at(number); !text.isEmpty()) {
        write({QXlsx::Cell::InlineStringType, 0.0, text, false});
    }
}

void SheetReader::storeText(const QString &text)
{
    if (!m_context.budget->takeText(text)) {
        refuse(LoadError::TooLarge);
    } else if (!text.isEmpty()) {
        write({QXlsx::Cell::InlineStringType, 0.0, text, false});
    }
}

void SheetReader::write(const Content &content)
{
    const bool newRow = m_row != m_lastRow;
    if (!isInOrder()) {
        if (const QXlsx::Cell *const before = m_context.target->cellAt(m_row, m_column)) {
            if (!isSame(*before, content)) {
                refuse(LoadError::Damage::CellTwice);
            }
            return;
        }
    }
    if (!m_context.budget->takeCell(newRow)) {
        refuse(LoadError::TooLarge);
        return;
    }
    QXlsx::Worksheet *const target = m_context.target;
    if (content.type == QXlsx::Cell::InlineStringType) {
        // The general write takes some texts for formulas or addresses.
        target->writeInlineString(m_row, m_column, content.text);
    } else if (content.type == QXlsx::Cell::BooleanType) {
        target->writeBool(m_row, m_column, content.number != 0.0);
    } else {
        target->writeNumeric(m_row, m_column, content.number,
                             content.isDate ? m_dateFormat : QXlsx::Format());
    }
}

bool SheetReader::isSame(const QXlsx::Cell &cell, const Content &content)
{
    const bool isText = content.type == QXlsx::Cell::InlineStringType;
    return cell.cellType() == content.type && cell.isDateTime() == content.isDate
        && (isText ? cell.value().toString() == content.text
                   : cell.value().toDouble() == content.number);
}

// Whether the cell follows all that were written, so that nothing can be there yet.
bool SheetReader::isInOrder()
{
    if (m_row < m_lastRow || (m_row == m_lastRow && m_column <= m_lastColumn)) {
        return false;
    }
    m_lastRow = m_row;
    m_lastColumn = m_column;
    return true;
}
