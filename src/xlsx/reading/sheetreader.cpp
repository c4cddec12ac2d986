// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetreader.h"

#include <array>
#include <cstring>
#include <optional>

#include <QDateTime>
#include <xlsxcellreference.h>
#include <xlsxworkbook.h>

#include "xlsx/celltext.h"
#include "xlsx/formatlimits.h"
#include "xlsx/reading/richtext.h"

namespace
{

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

// Days from 1900 on through the year 9999, the last one that has a date, and how many less there
// are from 1904 on.
constexpr double firstDayWithoutDate = 2'958'466.0;
constexpr double daysBefore1904 = 1462.0;

constexpr const char *wrongReference =
    QT_TRANSLATE_NOOP("MainWindow", "the number of a row or the address of a cell is wrong");

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
    : m_context(context), m_is1904(context.target->workbook()->isDate1904())
{
    constexpr int builtinDateAndTime = 22;
    m_dateFormat.setNumberFormatIndex(builtinDateAndTime);
    constexpr int usualText = 256; // bytes, which stay reserved
    m_value.reserve(usualText);
    m_inlineText.reserve(usualText);
}

void SheetReader::read(XmlCursor *xml)
{
    bool hasData = false;
    m_xml = xml;
    m_xml->enter("worksheet");
    while (m_xml->nextSection()) {
        if (m_xml->is("sheetData")) {
            m_xml->once(&hasData);
            readRows();
        } else {
            m_xml->skip();
        }
    }
    if (!hasData) {
        m_xml->failElement();
    }
}

void SheetReader::readRows()
{
    m_xml->allowAnyAttributes();
    while (m_xml->nextChild()) {
        if (m_xml->is("row")) {
            readRow();
        } else {
            m_xml->failElement();
        }
    }
}

void SheetReader::readRow()
{
    readRowNumber();
    m_column = 0;
    while (m_xml->nextChild()) {
        if (m_xml->is("c")) {
            readCell();
        } else if (m_xml->is("extLst")) {
            m_xml->skip();
        } else {
            m_xml->failElement();
        }
    }
}

void SheetReader::readRowNumber()
{
    m_xml->allowAttributes({"r"},
                           {"spans", "s", "customFormat", "ht", "customHeight", "hidden",
                            "outlineLevel", "collapsed", "thickTop", "thickBot", "ph"});
    ++m_row;
    if (const char *const number = m_xml->attribute("r"); number != nullptr) {
        bool isNumber = false;
        const qlonglong row = QByteArray(number).toLongLong(&isNumber);
        if (!isNumber || row < 1) {
            m_xml->fail(wrongReference);
        }
        m_row = static_cast<int>(qMin<qlonglong>(row, FormatLimits::rows + 1));
    }
    if (m_row > FormatLimits::rows) {
        m_xml->fail(LoadError::TooLarge);
    }
}

void SheetReader::readCell()
{
    readCellAttributes();
    readContents();
    if (m_xml->hasFailed() && m_column > 0) {
        m_xml->blame(QXlsx::CellReference(m_row, m_column).toString());
    }
}

// Another name for the type or the format would change what the content means.
void SheetReader::readCellAttributes()
{
    m_xml->allowAttributes({"r", "s", "t"}, {"cm", "vm", "ph"});
    const char *const format = m_xml->attribute("s");
    m_format = 0;
    if (!moveTo(m_xml->attribute("r"))) {
        m_xml->fail(wrongReference);
    } else if (m_column > FormatLimits::columns) {
        m_xml->fail(LoadError::TooLarge);
    } else if (!setType(m_xml->attribute("t"))) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "the type of the cell is unknown"));
    } else if (format != nullptr && *format != '\0' && !toIndex(format, &m_format)) {
        m_xml->failIndex();
    }
}

void SheetReader::readContents()
{
    bool hasValue = false;
    bool hasInlineText = false;
    m_value.resize(0);
    m_inlineText.resize(0);
    m_formula.resize(0);
    while (m_xml->nextChild()) {
        if (m_xml->is("v")) {
            takeContent(&hasValue);
            m_xml->allowAnyAttributes();
            m_xml->readText(&m_value);
        } else if (m_xml->is("is") && m_type == Type::InlineString) {
            takeContent(&hasInlineText);
            readRichText(m_xml, &m_inlineText);
        } else if (m_xml->is("f")) {
            m_xml->readText(&m_formula);
        } else if (m_xml->is("extLst")) {
            m_xml->skip();
        } else {
            m_xml->failElement();
        }
    }
    if (!m_xml->hasFailed()) {
        store(hasInlineText ? m_inlineText : m_value);
    }
}

void SheetReader::takeContent(bool *met)
{
    if (*met) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "there are two contents"));
    }
    *met = true;
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

void SheetReader::store(const QByteArray &text)
{
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
    const bool isWhole = text.size() < XmlCursor::longestText;
    if (isWhole && text.trimmed().isEmpty()) {
        return;
    }
    double value = 0.0;
    const NumberFormats::Kind kind = m_context.formats->kind(m_format);
    if (!isWhole || !CellText::toNumber(text, &value)) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "this is not a number"));
    } else if (kind == NumberFormats::Kind::Missing) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "there is no such format"));
    } else if (kind == NumberFormats::Kind::Date) {
        storeDate(value);
    } else if (m_column == m_context.textColumn) {
        storeText(CellText::plainDigits(text));
    } else {
        write({QXlsx::Cell::NumberType, value, {}, false});
    }
}

void SheetReader::storeDate(double days)
{
    const double end = firstDayWithoutDate - (m_is1904 ? daysBefore1904 : 0.0);
    if (days >= 0.0 && days < end) {
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
        storeDate(daysOf(moment.date()) + moment.time().msecsSinceStartOfDay() / millisecondsOfDay);
    } else if (time.isValid()) {
        storeDate(time.msecsSinceStartOfDay() / millisecondsOfDay);
    } else {
        storeText(noDate());
    }
}

// Spreadsheets count from 1900-01-01 on, a 29th of February in that year included, and put times
// without a date on 1899-12-30.
double SheetReader::daysOf(const QDate &date) const
{
    constexpr int leapDay = 60;
    if (m_is1904) {
        return static_cast<double>(QDate(1904, 1, 1).daysTo(date));
    }
    const auto days = static_cast<double>(QDate(1899, 12, 31).daysTo(date));
    if (date == QDate(1899, 12, 30)) {
        return 0.0;
    }
    return days < 1 ? -1.0 : days < leapDay ? days : days + 1;
}

void SheetReader::storeBoolean(const QByteArray &text)
{
    if (const std::optional<bool> isTrue = CellText::toBool(text)) {
        write({QXlsx::Cell::BooleanType, *isTrue ? 1.0 : 0.0, {}, false});
    } else {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false"));
    }
}

// A number would count as a value, which the text of an error never does.
void SheetReader::storeError(const QString &text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    if (isNumber) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "an error value is stored as a number"));
    } else {
        storeText(text);
    }
}

void SheetReader::storeSharedString(const QByteArray &index)
{
    int number = 0;
    if (!toIndex(index, &number) || number >= m_context.sharedStrings->size()) {
        m_xml->fail(QT_TRANSLATE_NOOP("MainWindow", "there is no such shared text"));
    } else if (const QString &text = m_context.sharedStrings->at(number); !text.isEmpty()) {
        write({QXlsx::Cell::InlineStringType, 0.0, text, false});
    }
}

void SheetReader::storeText(const QString &text)
{
    if (!m_context.budget->takeText(text)) {
        m_xml->fail(LoadError::TooLarge);
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
                m_xml->fail(QT_TRANSLATE_NOOP("MainWindow",
                                              "the cell is there twice with different contents"));
            }
            return;
        }
    }
    if (!m_context.budget->takeCell(newRow)) {
        m_xml->fail(LoadError::TooLarge);
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
