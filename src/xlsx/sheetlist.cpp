#include "xlsx/sheetlist.h"

#include <array>

#include "xlsx/workbooklimits.h"

namespace
{

enum Place { BookPlace = 1, PropertiesPlace, SheetsPlace, SheetPlace };

constexpr std::array<XmlStep, 4> steps = {{
    {"workbook", XmlReader::outside, BookPlace},
    {"workbookPr", BookPlace, PropertiesPlace},
    {"sheets", BookPlace, SheetsPlace},
    {"sheet", SheetsPlace, SheetPlace},
}};

// A sheet or its state by another name would make another sheet the first visible one.
constexpr int firstStrict = SheetsPlace;
constexpr std::array<const char *, 4> sheetAttributes = {"name", "sheetId", "state", nullptr};

} // namespace

SheetList::SheetList() : XmlReader(Vocabulary::Spreadsheet, steps, firstStrict) { }

void SheetList::enter(int place, const XmlAttributes &attributes)
{
    if (place == PropertiesPlace) {
        const QByteArray value = attributes.value("date1904");
        m_is1904 = value == "1" || value == "true";
    } else if (place == SheetPlace) {
        addSheet(attributes);
    } else if (place == SheetsPlace) {
        meetOnce(&m_hasSheets);
    }
}

void SheetList::addSheet(const XmlAttributes &attributes)
{
    const QByteArray relationship = attributes.relationship("id");
    const QByteArray state = attributes.value("state");
    const bool visible = state.isEmpty() || state == "visible";
    const bool hidden = state == "hidden" || state == "veryHidden";
    if (relationship.isEmpty() || !(visible || hidden)
        || !attributes.areAmong(sheetAttributes.data())) {
        refuse(LoadError::Damaged);
    } else if (m_sheets.size() >= workbookLimits.listEntries) {
        refuse(LoadError::TooLarge);
    } else {
        m_sheets.append({relationship, visible});
    }
}
