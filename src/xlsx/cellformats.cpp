// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/cellformats.h"

#include <array>

#include "xlsx/workbooklimits.h"

namespace
{

enum Node { SheetNode = 1, NumberFormatsNode, NumberFormatNode, CellFormatsNode, CellFormatNode };

// An unknown element among the formats would shift all that follow.
constexpr std::array<XmlStep, 5> steps = {{
    {"styleSheet", XmlReader::document, XmlOutcome::Read, SheetNode},
    {"numFmts", SheetNode, XmlOutcome::Read, NumberFormatsNode, XmlOutcome::Refused},
    {"numFmt", NumberFormatsNode, XmlOutcome::Read, NumberFormatNode},
    {"cellXfs", SheetNode, XmlOutcome::Read, CellFormatsNode, XmlOutcome::Refused},
    {"xf", CellFormatsNode, XmlOutcome::Read, CellFormatNode},
}};

} // namespace

CellFormats::CellFormats() : XmlReader(Vocabulary::Spreadsheet, steps) { }

NumberFormats::Kind CellFormats::kind(int index) const
{
    const int number = m_formats.value(index, 0);
    const auto custom = m_custom.constFind(number);
    return custom == m_custom.constEnd() ? NumberFormats::builtinKind(number) : *custom;
}

void CellFormats::enter(int node, const XmlAttributes &attributes)
{
    if (node == NumberFormatNode) {
        addNumberFormat(attributes);
    } else if (node == CellFormatNode) {
        addCellFormat(attributes);
    } else if (node == CellFormatsNode) {
        meetOnce(&m_hasFormats);
    }
}

void CellFormats::addNumberFormat(const XmlAttributes &attributes)
{
    bool known = false;
    const int number = QByteArray(attributes.value("numFmtId")).toInt(&known);
    const char *const code = attributes.value("formatCode");
    if (!known || number < 0 || code == nullptr) {
        refuse(LoadError::Damaged);
    } else if (m_custom.size() >= workbookLimits.listEntries) {
        refuse(LoadError::TooLarge);
    } else {
        m_custom.insert(number,
                        NumberFormats::isDateCode(QString::fromUtf8(code))
                            ? NumberFormats::Kind::Date
                            : NumberFormats::Kind::Number);
    }
}

void CellFormats::addCellFormat(const XmlAttributes &attributes)
{
    bool known = true;
    const char *const text = attributes.value("numFmtId");
    const int number = text == nullptr ? 0 : QByteArray(text).toInt(&known);
    if (!known || number < 0) {
        refuse(LoadError::Damaged);
    } else if (m_formats.size() >= workbookLimits.cellFormats) {
        refuse(LoadError::TooLarge);
    } else {
        m_formats.append(number);
    }
}
