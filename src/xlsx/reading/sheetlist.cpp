// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetlist.h"

#include "xlsx/celltext.h"

void SheetList::read(XmlCursor *xml)
{
    const auto readSheets = [&] {
        xml->readChildren({}, XmlChild{"sheet", [&] { readSheet(xml); }});
    };
    xml->enter("workbook");
    xml->readSections({XmlCursor::any}, XmlChild{"workbookPr", [&] { readProperties(xml); }},
                      XmlChild{"sheets", readSheets});
}

void SheetList::readProperties(XmlCursor *xml)
{
    xml->allowAttributes({"date1904"}, {XmlCursor::any});
    if (const char *const value = xml->attribute("date1904"); value != nullptr) {
        const std::optional<bool> isTrue = CellText::toBool(value);
        if (!isTrue) {
            xml->fail(QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false"));
        }
        m_is1904 = isTrue.value_or(false);
    }
    xml->readNothing();
}

void SheetList::readSheet(XmlCursor *xml)
{
    xml->limitList(int(m_sheets.size()));
    xml->allowAttributes({"state"}, {"name", "sheetId"}, "id");
    const QByteArray state = xml->attribute("state");
    const bool isHidden = state == "hidden" || state == "veryHidden";
    m_sheets.append({xml->attribute("id", XmlCursor::Space::Relationships), !isHidden});
    xml->readChildren({"bookViews"}); // misplaced by one writer
}
