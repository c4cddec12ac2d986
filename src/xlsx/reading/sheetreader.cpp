// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetreader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include <QDateTime>
#include <QRegularExpression>
#include <xlsxcellreference.h>
#include <xlsxworkbook.h>

#include "xlsx/celltext.h"
#include "xlsx/formatlimits.h"
#include "xlsx/reading/sharedstrings.h"

namespace
{

// Days from 1900 on through the year 9999, the last one that has a date, and how many less there
// are from 1904 on.
constexpr double firstDayWithoutDate = 2'958'466.0;
constexpr double daysBefore1904 = 1462.0;

constexpr const char *wrongReference =
    QT_TRANSLATE_NOOP("MainWindow", "the number of a row or the address of a cell is wrong");
constexpr const char *notANumber = QT_TRANSLATE_NOOP("MainWindow", "this is not a number");

bool toIndex(const QByteArray &text, int *index)
{
    bool known = false;
    *index = text.trimmed().toInt(&known);
    return known && *index >= 0;
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
    const auto readRows = [&] {
        hasData = true;
        xml->readChildren({{"row", [&] { readRow(); }}});
    };
    m_xml = xml;
    m_xml->enter("worksheet");
    m_xml->readSections({{"sheetData", readRows}}, {XmlCursor::any});
    if (!hasData) {
        m_xml->failElement();
    }
}

void SheetReader::readRow()
{
    m_xml->allowAttributes({"r"},
                           {"spans", "s", "customFormat", "ht", "customHeight", "hidden",
                            "outlineLevel", "collapsed", "thickTop", "thickBot", "ph"});
    ++m_row;
    m_column = 0;
    if (const char *const number = m_xml->attribute("r"); number != nullptr) {
        bool isNumber = false;
        const qlonglong row = QByteArray(number).toLongLong(&isNumber);
        m_xml->require(isNumber && row >= 1, wrongReference);
        m_row = static_cast<int>(qMin<qlonglong>(row, FormatLimits::rows + 1));
    }
    m_xml->require(m_row <= FormatLimits::rows, LoadError::TooLarge);
    m_xml->readChildren({{"c", [&] { readCell(); }}}, {"extLst"});
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
    m_xml->require(moveTo(m_xml->attribute("r")), wrongReference);
    m_xml->require(m_column <= FormatLimits::columns, LoadError::TooLarge);
    m_xml->require(setType(m_xml->attribute("t")),
                   QT_TRANSLATE_NOOP("MainWindow", "the type of the cell is unknown"));
    m_xml->require(format == nullptr || *format == '\0' || toIndex(format, &m_format),
                   LoadError::noIndex);
}

void SheetReader::readContents()
{
    bool hasValue = false;
    bool hasInlineText = false;
    m_value.resize(0);
    m_inlineText.resize(0);
    m_formula.resize(0);
    const auto readValue = [&] {
        m_xml->once(&hasValue);
        m_xml->readText(&m_value);
        checkLength();
    };
    const auto readInlineText = [&] {
        if (!m_isInline) {
            m_xml->failElement();
        }
        m_xml->once(&hasInlineText);
        readRichText(m_xml, &m_inlineText);
    };
    m_xml->readChildren(
        {{"v", readValue}, {"is", readInlineText}, {"f", [&] { m_xml->readText(&m_formula); }}},
        {"extLst"});
    const QByteArray &text = hasInlineText ? m_inlineText : m_value;
    if (!m_xml->hasFailed() && !text.isEmpty()) {
        (this->*m_store)(text);
    }
}

// Of texts the end may be missing, which are cut then; what is left of anything else could be
// wrong.
void SheetReader::checkLength()
{
    const bool isText = m_store == &SheetReader::storeString || m_store == &SheetReader::storeError;
    if (m_value.size() >= XmlCursor::longestText && !isText) {
        m_xml->require(!m_value.trimmed().isEmpty(), LoadError::TooLarge);
        m_xml->fail(notANumber);
    }
}

// Goes to the place that \p reference names, such as "C17", or on by one without it. Numbers beyond
// all sheets are cut.
bool SheetReader::moveTo(const char *reference)
{
    constexpr int letters = 26;
    constexpr int bound = 10'000'000;
    if (reference == nullptr) {
        ++m_column;
        return true;
    }
    int row = 0;
    m_column = 0;
    for (; (*reference | 0x20) >= 'a' && (*reference | 0x20) <= 'z'; ++reference) {
        m_column = qMin(bound, m_column * letters + ((*reference | 0x20) - 'a' + 1));
    }
    for (; *reference >= '0' && *reference <= '9'; ++reference) {
        row = qMin(bound, row * 10 + (*reference - '0'));
    }
    return *reference == '\0' && m_column > 0 && row == m_row;
}

bool SheetReader::setType(const char *name)
{
    struct Type {
        const char *name;
        Store store;
    };
    static constexpr std::array<Type, 7> types = {{{"n", &SheetReader::storeNumber},
                                                   {"b", &SheetReader::storeBoolean},
                                                   {"e", &SheetReader::storeError},
                                                   {"s", &SheetReader::storeSharedString},
                                                   {"d", &SheetReader::storeIsoDate},
                                                   {"str", &SheetReader::storeString},
                                                   {"inlineStr", &SheetReader::storeString}}};
    const auto *const type = std::find_if(types.begin(), types.end(), [name](const Type &known) {
        return std::strcmp(known.name, name == nullptr ? "n" : name) == 0;
    });
    m_isInline = type == types.end() - 1;
    m_store = type == types.end() ? nullptr : type->store;
    return m_store != nullptr;
}

// A cell that should hold a number and does not is an error. Passed over it would end the values of
// its row or join its neighbours, and nobody would know.
void SheetReader::storeNumber(const QByteArray &text)
{
    const NumberFormats::Kind kind = m_context.formats->kind(m_format);
    double value = 0.0;
    if (text.trimmed().isEmpty()) {
        return;
    }
    const bool isNumber = m_xml->require(CellText::toNumber(text, &value), notANumber)
        && m_xml->require(kind != NumberFormats::Kind::Missing,
                          QT_TRANSLATE_NOOP("MainWindow", "there is no such format"));
    if (isNumber && kind == NumberFormats::Kind::Date) {
        storeDate(value);
    } else if (isNumber && m_column == m_context.textColumn) {
        storeText(CellText::plainDigits(text));
    } else if (isNumber) {
        write(value);
    }
}

void SheetReader::storeDate(double days)
{
    const double end = firstDayWithoutDate - (m_is1904 ? daysBefore1904 : 0.0);
    if (days >= 0.0 && days < end) {
        write(days, true);
    } else {
        // What spreadsheets show for a number under a format of dates that is no date.
        storeText(QStringLiteral("########"));
    }
}

// The toolkit also takes for dates and times what only begins like them.
void SheetReader::storeIsoDate(const QByteArray &text)
{
    static const QString day = QStringLiteral(R"(\d{4}-\d\d-\d\d)");
    static const QString clock = QStringLiteral(R"(([01]\d|2[0-3]):\d\d(:\d\d(\.\d+)?)?)");
    static const QRegularExpression shape(
        QStringLiteral("^(%1(T%2(Z|[+-]\\d\\d:\\d\\d)?)?|%2)$").arg(day, clock));
    constexpr double millisecondsOfDay = 86'400'000.0;
    const QString iso = QString::fromLatin1(text.trimmed());
    const QDateTime moment = QDateTime::fromString(iso, Qt::ISODateWithMs);
    const QTime time = moment.isValid() ? moment.time() : QTime::fromString(iso, Qt::ISODateWithMs);
    const double days = moment.isValid() ? daysOf(moment.date()) : 0.0;
    const bool isKnown = time.isValid() && shape.match(iso).hasMatch();
    storeDate(isKnown ? days + time.msecsSinceStartOfDay() / millisecondsOfDay : -1.0);
}

// Spreadsheets count from 1900-01-01 on, a 29th of February in that year included, and put times
// without a date on 1899-12-30.
double SheetReader::daysOf(const QDate &date) const
{
    constexpr int leapDay = 60;
    const qint64 days = (m_is1904 ? QDate(1904, 1, 1) : QDate(1899, 12, 30)).daysTo(date);
    const bool isBeforeLeapDay = !m_is1904 && days > 0 && days <= leapDay;
    return days == 1 && isBeforeLeapDay ? -1.0 : double(isBeforeLeapDay ? days - 1 : days);
}

void SheetReader::storeBoolean(const QByteArray &text)
{
    const std::optional<bool> isTrue = CellText::toBool(text);
    if (m_xml->require(isTrue.has_value(),
                       QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false"))) {
        write(*isTrue);
    }
}

// A number would count as a value, which the text of an error never does.
void SheetReader::storeError(const QByteArray &utf8)
{
    const QString text = CellText::decode(utf8);
    bool isNumber = false;
    text.toDouble(&isNumber);
    if (m_xml->require(!isNumber,
                       QT_TRANSLATE_NOOP("MainWindow", "an error value is stored as a number"))) {
        storeText(text);
    }
}

void SheetReader::storeSharedString(const QByteArray &index)
{
    int number = 0;
    const bool isThere =
        m_xml->require(toIndex(index, &number) && number < m_context.sharedStrings->size(),
                       QT_TRANSLATE_NOOP("MainWindow", "there is no such shared text"));
    if (isThere && !m_context.sharedStrings->at(number).isEmpty()) {
        write(m_context.sharedStrings->at(number));
    }
}

void SheetReader::storeString(const QByteArray &utf8)
{
    storeText(CellText::decode(utf8));
}

void SheetReader::storeText(const QString &text)
{
    if (m_xml->takeMemory(m_xml->limits().memoryOf(text))) {
        write(text);
    }
}

void SheetReader::write(const QVariant &value, bool isDate)
{
    QXlsx::Worksheet *const target = m_context.target;
    const std::pair place(m_row, m_column);
    const bool isText = value.userType() == QMetaType::QString;
    const WorkbookLimits &limits = m_xml->limits();
    const qint64 cost = limits.cellCost + (m_row == m_last.first ? 0 : limits.rowCost);
    const QXlsx::Cell *const before = place > m_last ? nullptr : target->cellAt(m_row, m_column);
    if (before != nullptr) {
        const QVariant known = before->value();
        m_xml->require(
            known.userType() == value.userType() && before->isDateTime() == isDate
                && (isText ? known.toString() == value.toString()
                           : known.toDouble() == value.toDouble()),
            QT_TRANSLATE_NOOP("MainWindow", "the cell is there twice with different contents"));
    } else if (!m_xml->takeMemory(cost)) {
        return;
    } else if (isText) {
        // The general write takes some texts for formulas or addresses.
        target->writeInlineString(m_row, m_column, value.toString());
    } else if (value.userType() == QMetaType::Bool) {
        target->writeBool(m_row, m_column, value.toBool());
    } else {
        target->writeNumeric(m_row, m_column, value.toDouble(),
                             isDate ? m_dateFormat : QXlsx::Format());
    }
    m_last = qMax(m_last, place);
}
