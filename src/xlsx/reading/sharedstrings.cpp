// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/sharedstrings.h"

#include "xlsx/celltext.h"

// Two texts where one belongs would read as another number when joined.
void readRichText(XmlCursor *xml, QByteArray *text)
{
    bool hasText = false;
    const auto readText = [&] {
        xml->once(&hasText);
        xml->readText(text);
    };
    const auto readRun = [&] {
        hasText = false;
        xml->readChildren({{"t", std::ref(readText)}}, {"rPr"});
        hasText = true;
    };
    xml->readChildren({{"t", std::ref(readText)},
                       {"r", std::ref(readRun)},
                       {"phoneticPr", [&] { xml->readNothing(); }}},
                      {"rPh"});
}

QVector<QString> readSharedStrings(XmlCursor *xml)
{
    QVector<QString> texts;
    QByteArray utf8;
    utf8.reserve(256); // which stays
    const auto readItem = [&] {
        utf8.resize(0);
        readRichText(xml, &utf8);
        texts.append(CellText::decode(utf8));
        xml->takeMemory(xml->limits().memoryOf(texts.constLast()));
    };
    xml->enter("sst");
    xml->readChildren({{"si", readItem}}, {"extLst"});
    return texts;
}
