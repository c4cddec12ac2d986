// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetlist.h"

#include "xlsx/celltext.h"

void SheetList::read(XmlCursor *xml)
{
    const auto readSheets = [&] { xml->readChildren({{"sheet", [&] { readSheet(xml); }}}); };
    xml->enter("workbook");
    xml->readSections({{"workbookPr", [&] { readProperties(xml); }}, {"sheets", readSheets}},
                      {XmlCursor::any});
}

void SheetList::readProperties(XmlCursor *xml)
{
    xml->allowAttributes({"date1904"}, {XmlCursor::any});
    if (const char *const value = xml->attribute("date1904"); value != nullptr) {
        const std::optional<bool> isTrue = CellText::toBool(value);
        xml->require(isTrue.has_value(),
                     QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false"));
        m_is1904 = isTrue.value_or(false);
    }
    xml->readNothing();
}

void SheetList::readSheet(XmlCursor *xml)
{
    xml->require(m_sheets.size() < xml->limits().listEntries, LoadError::TooLarge);
    xml->allowAttributes({"state", "r:id"}, {"name", "sheetId"});
    const QByteArray state = xml->attribute("state");
    const bool isHidden = state == "hidden" || state == "veryHidden";
    m_sheets.append({xml->attribute("r:id"), !isHidden});
    xml->readChildren({}, {"bookViews"}); // misplaced by one writer
}
