// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/cellformats.h"

#include <array>

#include "xlsx/reading/workbooklimits.h"

namespace
{

enum Node { SheetNode, NumberFormatsNode, NumberFormatNode, CellFormatsNode, CellFormatNode };

// An unknown element could hold the formats, and one among them would shift all that follow.
constexpr std::array<XmlStep, 14> steps = {{
    {"styleSheet", XmlReader::document, XmlOutcome::Read, SheetNode, XmlOutcome::Refused},
    {"numFmts", SheetNode, XmlOutcome::Read, NumberFormatsNode, XmlOutcome::Refused},
    {"numFmt", NumberFormatsNode, XmlOutcome::Read, NumberFormatNode},
    {"cellXfs", SheetNode, XmlOutcome::Read, CellFormatsNode, XmlOutcome::Refused},
    {"xf", CellFormatsNode, XmlOutcome::Read, CellFormatNode},
    {"fonts", SheetNode, XmlOutcome::PassedOver},
    {"fills", SheetNode, XmlOutcome::PassedOver},
    {"borders", SheetNode, XmlOutcome::PassedOver},
    {"cellStyleXfs", SheetNode, XmlOutcome::PassedOver},
    {"cellStyles", SheetNode, XmlOutcome::PassedOver},
    {"dxfs", SheetNode, XmlOutcome::PassedOver},
    {"tableStyles", SheetNode, XmlOutcome::PassedOver},
    {"colors", SheetNode, XmlOutcome::PassedOver},
    {"extLst", SheetNode, XmlOutcome::PassedOver},
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
    // Without a number or a code it says nothing of any cell.
    if (!known || code == nullptr) {
        return;
    }
    if (m_custom.size() >= limits().listEntries) {
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
    const QByteArray text = attributes.value("numFmtId");
    bool known = true;
    const int number = text.isEmpty() ? 0 : text.toInt(&known);
    if (!known) {
        refuse(LoadError::Damage::Index);
    } else if (m_formats.size() >= limits().cellFormats) {
        refuse(LoadError::TooLarge);
    } else {
        m_formats.append(number);
    }
}
