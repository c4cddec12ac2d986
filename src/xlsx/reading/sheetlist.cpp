// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sheetlist.h"

#include "xlsx/celltext.h"

void SheetList::read(XmlCursor *xml)
{
    bool hasProperties = false;
    bool hasSheets = false;
    xml->enter("workbook");
    while (xml->nextSection()) {
        if (xml->is("workbookPr")) {
            xml->once(&hasProperties);
            readProperties(xml);
        } else if (xml->is("sheets")) {
            xml->once(&hasSheets);
            readSheets(xml);
        } else {
            xml->skip();
        }
    }
}

void SheetList::readProperties(XmlCursor *xml)
{
    xml->allowAnyAttributes({"date1904"});
    if (const char *const value = xml->attribute("date1904"); value != nullptr) {
        const std::optional<bool> isTrue = CellText::toBool(value);
        if (!isTrue) {
            xml->fail(QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false"));
        }
        m_is1904 = isTrue.value_or(false);
    }
    xml->readNothing();
}

void SheetList::readSheets(XmlCursor *xml)
{
    xml->allowAnyAttributes();
    while (xml->nextChild()) {
        if (!xml->is("sheet")) {
            xml->failElement();
        } else if (m_sheets.size() >= xml->limits().listEntries) {
            xml->fail(LoadError::TooLarge);
        } else {
            readSheet(xml);
        }
    }
}

void SheetList::readSheet(XmlCursor *xml)
{
    xml->allowAttributes({"state"}, {"name", "sheetId"}, "id");
    const QByteArray state = xml->attribute("state");
    const bool hidden = state == "hidden" || state == "veryHidden";
    m_sheets.append({xml->relationship("id"), !hidden});
    while (xml->nextChild()) {
        if (xml->is("bookViews")) { // misplaced by one writer
            xml->skip();
        } else {
            xml->failElement();
        }
    }
}
