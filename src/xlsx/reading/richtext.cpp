// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/richtext.h"

namespace
{

// Two texts where one belongs would read as another number when joined.
void readOnlyText(XmlCursor *xml, bool *met, QByteArray *text)
{
    xml->once(met, QT_TRANSLATE_NOOP("MainWindow", "there are two contents"));
    xml->allowAnyAttributes();
    xml->readText(text);
}

void readRun(XmlCursor *xml, QByteArray *text)
{
    bool hasText = false;
    while (xml->nextChild()) {
        if (xml->is("t")) {
            readOnlyText(xml, &hasText, text);
        } else if (xml->is("rPr")) {
            xml->skip();
        } else {
            xml->failElement();
        }
    }
}

} // namespace

void readRichText(XmlCursor *xml, QByteArray *text)
{
    bool hasText = false;
    while (xml->nextChild()) {
        if (xml->is("t")) {
            readOnlyText(xml, &hasText, text);
        } else if (xml->is("r")) {
            hasText = true;
            readRun(xml, text);
        } else if (xml->is("rPh")) {
            xml->skip();
        } else if (xml->is("phoneticPr")) {
            xml->readNothing();
        } else {
            xml->failElement();
        }
    }
}
