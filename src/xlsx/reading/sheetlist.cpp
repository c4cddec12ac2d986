// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetlist.h"

#include <array>

#include "xlsx/reading/workbooklimits.h"

namespace
{

enum Node { BookNode, PropertiesNode, SheetsNode, SheetNode };

// An unknown element among the sheets could be the first visible one.
constexpr std::array<XmlStep, 4> steps = {{
    {"workbook", XmlReader::document, XmlOutcome::Read, BookNode},
    {"workbookPr", BookNode, XmlOutcome::Read, PropertiesNode},
    {"sheets", BookNode, XmlOutcome::Read, SheetsNode, XmlOutcome::Refused},
    {"sheet", SheetsNode, XmlOutcome::Read, SheetNode},
}};

} // namespace

SheetList::SheetList() : XmlReader(Vocabulary::Spreadsheet, steps) { }

void SheetList::enter(int node, const XmlAttributes &attributes)
{
    if (node == PropertiesNode) {
        const QByteArray value = attributes.value("date1904");
        m_is1904 = value == "1" || value == "true";
    } else if (node == SheetNode) {
        addSheet(attributes);
    } else if (node == SheetsNode) {
        meetOnce(&m_hasSheets);
    }
}

void SheetList::addSheet(const XmlAttributes &attributes)
{
    const QByteArray state = attributes.value("state");
    const bool hidden = state == "hidden" || state == "veryHidden";
    if (m_sheets.size() >= limits().listEntries) {
        refuse(LoadError::TooLarge);
    } else {
        m_sheets.append({attributes.relationship("id"), !hidden});
    }
}
