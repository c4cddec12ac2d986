// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlcursor.h"

#include <algorithm>
#include <array>

namespace
{

// Elements that count only directly in the first one.
constexpr std::array<const char *, 5> reserved = {"sheetData", "sheets", "cellXfs", "numFmts",
                                                  "workbookPr"};

constexpr std::array<const char *, 2> spreadsheets = {
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main\n",
    "http://purl.oclc.org/ooxml/spreadsheetml/main\n"};
constexpr std::array<const char *, 1> packages = {
    "http://schemas.openxmlformats.org/package/2006/relationships\n"};

template<typename List>
bool contains(const List &names, const char *name)
{
    return std::any_of(names.begin(), names.end(),
                       [name](const char *known) { return qstrcmp(known, name) == 0; });
}

bool isBlank(const char *text, int size)
{
    return std::all_of(text, text + size, [](char character) {
        return character == ' ' || character == '\t' || character == '\n' || character == '\r';
    });
}

} // namespace

bool XmlCursor::next()
{
    const bool found = !hasFailed() && m_events.next();
    m_isOpen = found && event().type == XmlEvent::Start;
    if (!found && m_events.error()) {
        fail(m_events.error());
    }
    return found;
}

void XmlCursor::enter(const char *name, Vocabulary vocabulary)
{
    const bool found = next();
    const char *const space = m_events.mainNamespace().c_str();
    const bool isKnown =
        vocabulary == Spreadsheet ? contains(spreadsheets, space) : contains(packages, space);
    m_isOther = found ? !isKnown || !is(name) : m_events.isMalformed();
    if (m_isOther || (found && event().needsExtension)) {
        failElement();
    }
}

void XmlCursor::enterPlace(const char *name, Vocabulary vocabulary)
{
    enter(name, vocabulary);
    if (!hasFailed()) {
        checkPlace();
    }
}

bool XmlCursor::nextSection()
{
    while (next() && event().type != XmlEvent::End) {
        if (event().type == XmlEvent::Text) {
            continue;
        }
        const bool isMain = event().space == XmlSpace::Main;
        if (isMain && isReserved()) {
            checkPlace();
        } else if (!isMain) {
            checkElsewhere(false);
        }
        if (isMain) {
            return !hasFailed();
        }
        skip();
    }
    return false;
}

bool XmlCursor::nextChild(XmlSpace space, XmlSpace other, QByteArray *text)
{
    while (next() && event().type != XmlEvent::End) {
        if (event().type == XmlEvent::Text) {
            takeText(text);
            continue;
        }
        checkPlace();
        if (event().space == XmlSpace::Ignorable) {
            passOver();
        } else if (event().space == space || event().space == other) {
            return !hasFailed();
        } else {
            failElement();
        }
    }
    return false;
}

void XmlCursor::takeText(QByteArray *text)
{
    const char *const data = m_events.string(event().string);
    if (text != nullptr) {
        text->append(data, qMin(event().size, longestText - text->size()));
    } else if (!isBlank(data, event().size)) {
        fail(QT_TRANSLATE_NOOP("MainWindow", "text does not belong there"));
    }
}

void XmlCursor::readText(QByteArray *text)
{
    while (nextChild(XmlSpace::Main, XmlSpace::Main, text)) {
        failElement();
    }
}

void XmlCursor::skipText()
{
    QByteArray text;
    readText(&text);
}

void XmlCursor::readNothing()
{
    readText(nullptr);
}

void XmlCursor::skip()
{
    if (isOpen() && event().space == XmlSpace::Ignorable) {
        passOver();
    } else if (isOpen()) {
        skip(false);
    }
}

void XmlCursor::skip(bool inExtension)
{
    inExtension = inExtension || (event().space == XmlSpace::Main && is("extLst"));
    while (next() && event().type != XmlEvent::End) {
        if (event().type == XmlEvent::Start && event().space == XmlSpace::Ignorable) {
            passOver();
        } else if (event().type == XmlEvent::Start) {
            checkElsewhere(inExtension);
            skip(inExtension);
        }
    }
}

void XmlCursor::passOver()
{
    for (int open = 1; open > 0 && next();) {
        open += event().type == XmlEvent::Start ? 1 : event().type == XmlEvent::End ? -1 : 0;
    }
}

// What an element must not ask for where values are read.
void XmlCursor::checkPlace()
{
    if (event().needsExtension || event().unwraps) {
        failExtension();
    }
    for (int i = 0; i < event().attributes && event().space != XmlSpace::Ignorable; ++i) {
        if (m_events.attribute(i).space == XmlSpace::Main) {
            failAttribute();
        }
    }
}

// The same elsewhere. Extensions have words of their own that look like those of the format.
void XmlCursor::checkElsewhere(bool inExtension)
{
    if (event().space == XmlSpace::Ignorable) {
        return;
    }
    if (event().needsExtension) {
        failExtension();
    } else if (isReserved() && (event().space == XmlSpace::Main || !inExtension)) {
        failElement();
    }
}

bool XmlCursor::isReserved() const
{
    return contains(reserved, localName());
}

const char *XmlCursor::attribute(XmlSpace space, const char *name) const
{
    for (int i = 0; isOpen() && i < event().attributes; ++i) {
        const XmlAttribute &attribute = m_events.attribute(i);
        if (attribute.space == space && qstrcmp(m_events.string(attribute.name), name) == 0) {
            return m_events.string(attribute.value);
        }
    }
    return nullptr;
}

void XmlCursor::checkAttributes(Names read, const Names *others, const char *relationship)
{
    int relationships = 0;
    for (int i = 0; isOpen() && i < event().attributes; ++i) {
        const XmlSpace space = m_events.attribute(i).space;
        const char *const name = m_events.string(m_events.attribute(i).name);
        const bool isRead = contains(read, name);
        const bool isRelationship = qstrcmp(name, relationship) == 0;
        bool isAllowed = true;
        if (space == XmlSpace::None) {
            isAllowed = isRead || others == nullptr || contains(*others, name);
        } else if (space == XmlSpace::Relationships && isRelationship) {
            isAllowed = ++relationships == 1;
        } else if (space != XmlSpace::Xml && space != XmlSpace::Ignorable) {
            isAllowed = !isRead && !isRelationship;
        }
        if (!isAllowed) {
            failAttribute();
        }
    }
}

void XmlCursor::fail(const LoadError &error)
{
    if (!hasFailed()) {
        m_error = error;
    }
}

void XmlCursor::failElement()
{
    fail(QT_TRANSLATE_NOOP("MainWindow", "an element does not belong there"));
}

void XmlCursor::failAttribute()
{
    fail(QT_TRANSLATE_NOOP("MainWindow", "an attribute is unknown"));
}

void XmlCursor::failExtension()
{
    fail(QT_TRANSLATE_NOOP("MainWindow", "it requires an unknown extension"));
}

void XmlCursor::failIndex()
{
    fail(QT_TRANSLATE_NOOP("MainWindow", "an index is not a number"));
}

void XmlCursor::once(bool *met)
{
    if (*met) {
        failElement();
    }
    *met = true;
}

// Behind the first element nothing but its end of file can stand.
LoadError XmlCursor::finish()
{
    while (next()) { }
    return m_error;
}
