// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sharedstrings.h"

#include <array>

#include "xlsx/celltext.h"

namespace
{

enum Node { TableNode, ItemNode, RunNode, TextNode };

// An unknown element among the items would shift all that follow. Phonetic runs hold texts too,
// which repeat what the others say.
constexpr std::array<XmlStep, 9> steps = {{
    {"sst", XmlReader::document, XmlOutcome::Read, TableNode, XmlOutcome::Refused},
    {"si", TableNode, XmlOutcome::Read, ItemNode, XmlOutcome::Refused},
    {"extLst", TableNode, XmlOutcome::PassedOver},
    {"t", ItemNode, XmlOutcome::Read, TextNode, XmlOutcome::Refused},
    {"r", ItemNode, XmlOutcome::Read, RunNode, XmlOutcome::Refused},
    {"rPh", ItemNode, XmlOutcome::PassedOver},
    {"phoneticPr", ItemNode, XmlOutcome::PassedOver},
    {"t", RunNode, XmlOutcome::Read, TextNode, XmlOutcome::Refused},
    {"rPr", RunNode, XmlOutcome::PassedOver},
}};

} // namespace

SharedStrings::SharedStrings(MemoryBudget *budget)
    : XmlReader(Vocabulary::Spreadsheet, steps), m_budget(budget)
{
}

void SharedStrings::enter(int node, const XmlAttributes & /*attributes*/)
{
    if (node == ItemNode) {
        m_text.clear();
    } else if (node == RunNode) {
        m_text.beginRun();
    } else if (node == TextNode && !m_text.begin()) {
        // Joined they would read as another number.
        refuse(LoadError::Damage::TwoContents);
    }
}

void SharedStrings::leave(int node)
{
    if (node != ItemNode) {
        return;
    }
    const QString text = CellText::decode(m_text.utf8());
    if (m_budget->takeText(text)) {
        m_texts.append(text);
    } else {
        refuse(LoadError::TooLarge);
    }
}

void SharedStrings::text(int node, const char *data, int size)
{
    if (node == TextNode) {
        m_text.append(data, size);
    }
}
