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
        xml->readChildren({{"numFmt", [&] { readNumberFormat(xml); }}});
    };
    xml->enter("styleSheet");
    xml->readSections({{"numFmts", readNumberFormats}, {"cellXfs", [&] { readCellFormats(xml); }}},
                      {"fonts", "fills", "borders", "cellStyleXfs", "cellStyles", "dxfs",
                       "tableStyles", "colors", "extLst"});
}

// Without a number no cell can name it; without a code it is missing for those that do.
void CellFormats::readNumberFormat(XmlCursor *xml)
{
    xml->require(m_custom.size() < xml->limits().listEntries, LoadError::TooLarge);
    xml->allowAttributes({"numFmtId", "formatCode"});
    const char *const id = xml->attribute("numFmtId");
    const char *const code = xml->attribute("formatCode");
    if (id != nullptr) {
        bool isNumber = false;
        const int number = QByteArray(id).toInt(&isNumber);
        const Kind kind =
            code == nullptr ? Kind::Missing : NumberFormats::customKind(QString::fromUtf8(code));
        xml->require(isNumber, LoadError::noIndex);
        xml->require(m_custom.value(number, kind) == kind, LoadError::doubled);
        m_custom.insert(number, kind);
    }
    xml->readNothing();
}

void CellFormats::readCellFormats(XmlCursor *xml)
{
    xml->allowAttributes({}, {XmlCursor::any});
    xml->readChildren({{"xf", [&] { readCellFormat(xml); }},
                       {"mc:AlternateContent", [&] { readAlternatives(xml); }}});
}

// Whatever else a format holds says nothing of dates, but a format in it could be its neighbour.
void CellFormats::readCellFormat(XmlCursor *xml)
{
    xml->allowAttributes({"numFmtId"}, {XmlCursor::any});
    const QByteArray text = xml->attribute("numFmtId");
    bool isNumber = true;
    m_formats.append(text.isEmpty() ? 0 : text.toInt(&isNumber));
    xml->require(isNumber, LoadError::noIndex);
    xml->require(m_formats.size() <= xml->limits().cellFormats, LoadError::TooLarge);
    xml->readSections({{"xf", [&] { xml->failElement(); }}}, {XmlCursor::any});
}

// The first choice that asks for nothing unknown counts, or else the fallback, which comes last.
// It holds one format, and all of them count as that one.
void CellFormats::readAlternatives(XmlCursor *xml)
{
    const int before = int(m_formats.size());
    bool hasChoice = false;
    bool hasFallback = false;
    bool isTaken = false;
    const auto readOne = [&](bool isAllowed, bool counts) {
        if (hasFallback || !isAllowed) {
            xml->failElement();
        } else if (isTaken || !counts) {
            xml->skip();
        } else {
            isTaken = true;
            xml->readChildren({{"xf", [&] { readCellFormat(xml); }}});
        }
    };
    const auto readChoice = [&] {
        xml->allowAttributes({"Requires"});
        readOne(xml->isMet().has_value(), xml->isMet().value_or(false));
        hasChoice = true;
    };
    const auto readFallback = [&] {
        xml->allowAttributes({});
        readOne(hasChoice, true);
        hasFallback = true;
    };
    xml->allowAttributes({});
    xml->readChildren({{"mc:Choice", readChoice}, {"mc:Fallback", readFallback}});
    if (m_formats.size() != before + 1) {
        xml->failElement();
    }
}
