// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/richtext.h"

namespace
{

// Two texts where one belongs would read as another number when joined.
void readOnlyText(XmlCursor *xml, bool *met, QByteArray *text)
{
    xml->once(met);
    xml->readText(text);
}

} // namespace

void readRichText(XmlCursor *xml, QByteArray *text)
{
    bool hasText = false;
    const auto readRun = [&] {
        bool hasOwnText = false;
        hasText = true;
        xml->readChildren({"rPr"}, XmlChild{"t", [&] { readOnlyText(xml, &hasOwnText, text); }});
    };
    xml->readChildren({"rPh"}, XmlChild{"t", [&] { readOnlyText(xml, &hasText, text); }},
                      XmlChild{"r", readRun}, XmlChild{"phoneticPr", [&] { xml->readNothing(); }});
}
