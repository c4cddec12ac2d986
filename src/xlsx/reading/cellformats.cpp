// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/cellformats.h"

#include <algorithm>
#include <array>

using NumberFormats::Kind;

namespace
{

constexpr std::array<const char *, 9> others = {"fonts",        "fills",      "borders",
                                                "cellStyleXfs", "cellStyles", "dxfs",
                                                "tableStyles",  "colors",     "extLst"};

} // namespace

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
    bool hasNumberFormats = false;
    bool hasCellFormats = false;
    xml->enter("styleSheet");
    while (xml->nextSection()) {
        if (xml->is("numFmts")) {
            xml->once(&hasNumberFormats);
            readNumberFormats(xml);
        } else if (xml->is("cellXfs")) {
            xml->once(&hasCellFormats);
            readCellFormats(xml);
        } else if (std::any_of(others.begin(), others.end(),
                               [xml](const char *name) { return xml->is(name); })) {
            xml->skip();
        } else {
            xml->failElement();
        }
    }
}

void CellFormats::readNumberFormats(XmlCursor *xml)
{
    xml->allowAnyAttributes();
    while (xml->nextChild()) {
        if (!xml->is("numFmt")) {
            xml->failElement();
        } else if (m_custom.size() >= xml->limits().listEntries) {
            xml->fail(LoadError::TooLarge);
        } else {
            addNumberFormat(xml);
            xml->readNothing();
        }
    }
}

// Without a number no cell can name it; without a code it is not there for those that do.
void CellFormats::addNumberFormat(XmlCursor *xml)
{
    xml->allowAttributes({"numFmtId", "formatCode"}, {});
    const char *const id = xml->attribute("numFmtId");
    const char *const code = xml->attribute("formatCode");
    if (id == nullptr) {
        return;
    }
    bool isNumber = false;
    const int number = QByteArray(id).toInt(&isNumber);
    if (!isNumber) {
        xml->failIndex();
        return;
    }
    const Kind kind = code == nullptr                        ? Kind::Missing
        : NumberFormats::isDateCode(QString::fromUtf8(code)) ? Kind::Date
                                                             : Kind::Number;
    if (m_custom.value(number, kind) != kind) {
        xml->fail(QT_TRANSLATE_NOOP("MainWindow", "it occurs twice"));
    }
    m_custom.insert(number, kind);
}

void CellFormats::readCellFormats(XmlCursor *xml)
{
    xml->allowAnyAttributes();
    while (xml->nextChildOrMarkup()) {
        if (xml->isMarkup() && xml->is("AlternateContent")) {
            readAlternatives(xml);
        } else if (!xml->isMarkup() && xml->is("xf")) {
            readCellFormat(xml);
        } else {
            xml->failElement();
        }
    }
}

// Whatever else a format holds says nothing of dates, but a format in it could be its neighbour.
void CellFormats::readCellFormat(XmlCursor *xml)
{
    xml->allowAnyAttributes({"numFmtId"});
    const QByteArray text = xml->attribute("numFmtId");
    bool isNumber = true;
    const int number = text.isEmpty() ? 0 : text.toInt(&isNumber);
    if (!isNumber) {
        xml->failIndex();
    } else if (m_formats.size() >= xml->limits().cellFormats) {
        xml->fail(LoadError::TooLarge);
    }
    m_formats.append(number);
    while (xml->nextSection()) {
        if (xml->is("xf")) {
            xml->failElement();
        } else {
            xml->skip();
        }
    }
}

// The first choice that asks for nothing unknown counts, or else the fallback, which comes last.
void CellFormats::readAlternatives(XmlCursor *xml)
{
    bool isTaken = false;
    bool hasChoice = false;
    bool hasFallback = false;
    xml->allowAttributes({}, {});
    while (xml->nextMarkup()) {
        const bool isChoice = xml->is("Choice");
        const bool isFallback = xml->is("Fallback");
        xml->allowAttributes({isChoice ? "Requires" : ""}, {});
        if (hasFallback || (!isChoice && !(isFallback && hasChoice))
            || (isChoice && xml->requirement() == XmlCursor::Broken)) {
            xml->failElement();
        } else if (isTaken || (isChoice && xml->requirement() == XmlCursor::Unmet)) {
            xml->skip();
        } else {
            isTaken = true;
            readBranch(xml);
        }
        hasChoice = hasChoice || isChoice;
        hasFallback = isFallback;
    }
    if (!isTaken) {
        xml->failElement();
    }
}

// Both branches count as one format.
void CellFormats::readBranch(XmlCursor *xml)
{
    const int before = int(m_formats.size());
    while (xml->nextChild()) {
        if (xml->is("xf")) {
            readCellFormat(xml);
        } else {
            xml->failElement();
        }
    }
    if (m_formats.size() != before + 1) {
        xml->failElement();
    }
}
