// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sharedstrings.h"

#include "xlsx/celltext.h"
#include "xlsx/reading/richtext.h"

void SharedStrings::read(XmlCursor *xml)
{
    QByteArray utf8;
    utf8.reserve(256); // which stays
    const auto readItem = [&] {
        utf8.resize(0);
        readRichText(xml, &utf8);
        m_texts.append(CellText::decode(utf8));
        if (!m_budget->takeText(m_texts.constLast())) {
            xml->fail(LoadError::TooLarge);
        }
    };
    xml->enter("sst");
    xml->readChildren({"extLst"}, XmlChild{"si", readItem});
}
