#include "xlsx/sharedstrings.h"

#include <array>

#include "xlsx/celltext.h"

namespace
{

enum Place { TablePlace = 1, ItemPlace, RunPlace, TextPlace };

// Phonetic runs hold texts too, which repeat what the others say.
constexpr std::array<XmlStep, 9> steps = {{
    {"sst", XmlReader::outside, TablePlace},
    {"si", TablePlace, ItemPlace},
    {"extLst", TablePlace, XmlReader::ignored},
    {"t", ItemPlace, TextPlace},
    {"r", ItemPlace, RunPlace},
    {"rPh", ItemPlace, XmlReader::ignored},
    {"phoneticPr", ItemPlace, XmlReader::ignored},
    {"t", RunPlace, TextPlace},
    {"rPr", RunPlace, XmlReader::ignored},
}};

// An item by another name would shift all that follow.
constexpr int firstStrict = TablePlace;

} // namespace

SharedStrings::SharedStrings(MemoryBudget *budget)
    : XmlReader(Vocabulary::Spreadsheet, steps, firstStrict), m_budget(budget)
{
}

void SharedStrings::enter(int place, const XmlAttributes & /*attributes*/)
{
    if (place == ItemPlace) {
        m_text.clear();
    } else if (place == RunPlace) {
        m_text.beginRun();
    } else if (place == TextPlace && !m_text.begin()) {
        // Joined they would read as another number.
        refuse(LoadError::Damaged);
    }
}

void SharedStrings::leave(int place)
{
    if (place != ItemPlace) {
        return;
    }
    const QString text = CellText::decode(m_text.utf8());
    if (m_budget->takeText(text)) {
        m_texts.append(text);
    } else {
        refuse(LoadError::TooLarge);
    }
}

void SharedStrings::text(int place, const char *data, int size)
{
    if (place == TextPlace) {
        m_text.append(data, size);
    }
}
