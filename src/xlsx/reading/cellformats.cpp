// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/cellformats.h"

using NumberFormats::Kind;

Kind CellFormats::kind(int index) const
{
    constexpr int firstCustom = 164;
    if (index >= m_formats.size()) {
        return index == 0 ? Kind::Number : Kind::Missing;
    }
    const int number = m_formats.at(index);
    const auto custom = m_custom.constFind(number);
    if (custom != m_custom.constEnd()) {
        return *custom;
    }
    return number < 0 || number >= firstCustom ? Kind::Missing : NumberFormats::builtinKind(number);
}

// An unknown section could hold the formats.
void CellFormats::read(XmlCursor *xml)
{
    const auto readNumberFormats = [&] {
        xml->readChildren({}, XmlChild{"numFmt", [&] { readNumberFormat(xml); }});
    };
    xml->enter("styleSheet");
    xml->readSections({"fonts", "fills", "borders", "cellStyleXfs", "cellStyles", "dxfs",
                       "tableStyles", "colors", "extLst"},
                      XmlChild{"numFmts", readNumberFormats},
                      XmlChild{"cellXfs", [&] { readCellFormats(xml); }});
}

// Without a number no cell can name it; without a code it is missing for those that do.
void CellFormats::readNumberFormat(XmlCursor *xml)
{
    xml->limitList(int(m_custom.size()));
    xml->allowAttributes({"numFmtId", "formatCode"});
    const char *const id = xml->attribute("numFmtId");
    const char *const code = xml->attribute("formatCode");
    if (id != nullptr) {
        bool isNumber = false;
        const int number = QByteArray(id).toInt(&isNumber);
        const Kind kind =
            code == nullptr ? Kind::Missing : NumberFormats::customKind(QString::fromUtf8(code));
        if (!isNumber) {
            xml->failIndex();
        } else if (m_custom.value(number, kind) != kind) {
            xml->fail(LoadError::doubled);
        }
        m_custom.insert(number, kind);
    }
    xml->readNothing();
}

void CellFormats::readCellFormats(XmlCursor *xml)
{
    xml->allowAttributes({}, {XmlCursor::any});
    while (xml->nextChildOrMarkup()) {
        if (xml->is("AlternateContent", XmlCursor::Space::Compatibility)) {
            readAlternatives(xml);
        } else if (xml->is("xf")) {
            readCellFormat(xml);
        } else {
            xml->failElement();
        }
    }
}

// Whatever else a format holds says nothing of dates, but a format in it could be its neighbour.
void CellFormats::readCellFormat(XmlCursor *xml)
{
    xml->allowAttributes({"numFmtId"}, {XmlCursor::any});
    const QByteArray text = xml->attribute("numFmtId");
    bool isNumber = true;
    m_formats.append(text.isEmpty() ? 0 : text.toInt(&isNumber));
    if (!isNumber) {
        xml->failIndex();
    } else if (m_formats.size() > xml->limits().cellFormats) {
        xml->fail(LoadError::TooLarge);
    }
    xml->readSections({XmlCursor::any}, XmlChild{"xf", [&] { xml->failElement(); }});
}

// The first choice that asks for nothing unknown counts, or else the fallback, which comes last.
// It holds one format, and all of them count as that one.
void CellFormats::readAlternatives(XmlCursor *xml)
{
    const int before = int(m_formats.size());
    bool hasChoice = false;
    bool hasFallback = false;
    bool isTaken = false;
    xml->allowAttributes({});
    while (xml->nextChildOrMarkup()) {
        const bool isChoice = xml->is("Choice", XmlCursor::Space::Compatibility);
        const bool isFallback = xml->is("Fallback", XmlCursor::Space::Compatibility) && hasChoice;
        xml->allowAttributes({isChoice ? "Requires" : ""});
        if (hasFallback || !(isChoice ? xml->isMet().has_value() : isFallback)) {
            xml->failElement();
        } else if (isTaken || (isChoice && !*xml->isMet())) {
            xml->skip();
        } else {
            isTaken = true;
            xml->readChildren({}, XmlChild{"xf", [&] { readCellFormat(xml); }});
        }
        hasChoice = true;
        hasFallback = isFallback;
    }
    if (m_formats.size() != before + 1) {
        xml->failElement();
    }
}
