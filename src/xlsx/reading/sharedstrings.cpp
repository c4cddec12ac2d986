// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sharedstrings.h"

#include "xlsx/celltext.h"
#include "xlsx/reading/richtext.h"

void SharedStrings::read(XmlCursor *xml)
{
    QByteArray utf8;
    utf8.reserve(256); // which stays
    xml->enter("sst");
    xml->allowAnyAttributes();
    while (xml->nextChild()) {
        if (xml->is("extLst")) {
            xml->skip();
        } else if (xml->is("si")) {
            utf8.resize(0);
            readRichText(xml, &utf8);
            m_texts.append(CellText::decode(utf8));
            if (!m_budget->takeText(m_texts.constLast())) {
                xml->fail(LoadError::TooLarge);
            }
        } else {
            xml->failElement();
        }
    }
}
