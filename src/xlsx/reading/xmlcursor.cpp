// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlcursor.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <expat.h>

#include "xlsx/reading/parsermemory.h"

namespace
{

// Between a namespace and a name; the parser refuses namespaces that contain it.
constexpr char separator = '\n';

constexpr std::string_view compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006\n";
constexpr std::string_view xml = "http://www.w3.org/XML/1998/namespace\n";
constexpr std::array<std::string_view, 2> relationships = {
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships\n",
    "http://purl.oclc.org/ooxml/officeDocument/relationships\n"};
constexpr std::array<std::string_view, 2> spreadsheets = {
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main\n",
    "http://purl.oclc.org/ooxml/spreadsheetml/main\n"};
constexpr std::string_view packageRelationships =
    "http://schemas.openxmlformats.org/package/2006/relationships\n";

// Elements that count only directly in the first one.
constexpr std::array<std::string_view, 5> reserved = {"sheetData", "sheets", "cellXfs", "numFmts",
                                                      "workbookPr"};

constexpr const char *unknownExtension =
    QT_TRANSLATE_NOOP("MainWindow", "it requires an unknown extension");
constexpr const char *unknownAttribute = QT_TRANSLATE_NOOP("MainWindow", "an attribute is unknown");
constexpr const char *wrongElement =
    QT_TRANSLATE_NOOP("MainWindow", "an element does not belong there");

constexpr XML_Memory_Handling_Suite parserMemory = {&ParserMemory::allocate,
                                                    &ParserMemory::reallocate, &ParserMemory::free};

template<typename List, typename Entry>
bool contains(const List &list, const Entry &entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

std::string_view namespaceOf(std::string_view name)
{
    return name.substr(0, name.find(separator) + 1); // empty without a namespace
}

std::string_view localName(std::string_view name)
{
    return name.substr(namespaceOf(name).size());
}

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// Hands each word of \p list to \p take, until that returns false; returns whether it never did.
template<typename Take>
bool eachWord(std::string_view list, const Take &take)
{
    constexpr const char *blanks = " \t\n\r";
    for (;;) {
        list.remove_prefix(qMin(list.find_first_not_of(blanks), list.size()));
        const std::string_view word = list.substr(0, list.find_first_of(blanks));
        if (word.empty() || !take(word)) {
            return word.empty();
        }
        list.remove_prefix(word.size());
    }
}

} // namespace

struct XmlCursor::Handlers {
    static XmlCursor *cursor(void *self) { return static_cast<XmlCursor *>(self); }

    static void start(void *self, const char *name, const char **attributes)
    {
        cursor(self)->startElement(name, attributes);
    }

    static void end(void *self, const char * /*name*/) { cursor(self)->endElement(); }

    static void text(void *self, const char *data, int size) { cursor(self)->addText(data, size); }

    // Whatever has no function of its own, such as comments.
    static void other(void *self, const char * /*data*/, int /*size*/)
    {
        cursor(self)->countItems(1 + cursor(self)->bytesAsItems());
    }

    static void beginNamespace(void *self, const char *prefix, const char *uri)
    {
        XmlCursor *const xml = cursor(self);
        const std::size_t at = xml->m_declared.size();
        xml->m_declared.append(prefix == nullptr ? "" : prefix).push_back('\0');
        xml->m_bindings.push_back({at, xml->m_declared.size()});
        xml->m_declared.append(uri == nullptr ? "" : uri).push_back('\0');
        xml->countItems(1);
        if (xml->m_bindings.size() > std::size_t(xml->m_limits.namespaces)) {
            xml->stop(LoadError::TooLarge);
        }
    }

    static void endNamespace(void *self, const char * /*prefix*/)
    {
        cursor(self)->m_declared.resize(cursor(self)->m_bindings.back().prefix);
        cursor(self)->m_bindings.pop_back();
    }

    // Entities are declared in document types only.
    static void documentType(void *self, const char * /*name*/, const char * /*systemId*/,
                             const char * /*publicId*/, int /*hasInternalSubset*/)
    {
        cursor(self)->stop(
            LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it declares a document type")));
    }
};

void XmlCursor::FreeParser::operator()(XML_ParserStruct *parser) const
{
    XML_ParserFree(parser);
}

XmlCursor::XmlCursor(ZipPackage *package, const QByteArray &part, qint64 largest, XmlCount *count)
    : m_limits(package->limits()), m_count(count), m_part(package, part, largest)
{
    ParserMemory::limitTo(m_limits.parserMemory);
    constexpr std::array<char, 2> between = {separator, '\0'};
    m_parser.reset(XML_ParserCreate_MM(nullptr, &parserMemory, between.data()));
    if (!m_parser) {
        m_ahead = LoadError::TooLarge;
        return;
    }
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), &Handlers::start, &Handlers::end);
    XML_SetCharacterDataHandler(m_parser.get(), &Handlers::text);
    XML_SetStartDoctypeDeclHandler(m_parser.get(), &Handlers::documentType);
    XML_SetDefaultHandler(m_parser.get(), &Handlers::other);
    XML_SetNamespaceDeclHandler(m_parser.get(), &Handlers::beginNamespace, &Handlers::endNamespace);
}

XmlCursor::~XmlCursor() = default;

// A piece without an event is parsed again together with the next one, which is as long as all
// before it, so that the time stays in proportion to the bytes.
void XmlCursor::parsePiece()
{
    constexpr int usualPiece = 8 * 1024;
    const qint64 left = qMax<qint64>(1, m_limits.tokenSize - m_pending);
    m_piece.resize(std::size_t(qMin<qint64>(qMax(usualPiece, m_pending), left)));
    const int size = m_part.read(m_piece.data(), int(m_piece.size()));
    if (m_part.error()) {
        m_ahead = m_part.error();
        return;
    }
    const bool isEncodingClear = !m_isFirst || chooseEncoding(size);
    m_isFirst = false;
    m_pending += size;
    m_hasEnded = size == 0;
    const bool isParsed = isEncodingClear
        && XML_Parse(m_parser.get(), m_piece.data(), size, m_hasEnded ? 1 : 0) == XML_STATUS_OK;
    if (m_pending > m_limits.tokenSize
        || (!isParsed && XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_MEMORY)) {
        stop(LoadError::TooLarge);
    } else if (!isParsed && !m_ahead) {
        m_isMalformed = true;
        stop(LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it is not well-formed XML")));
    }
}

// Some writers leave out the hyphen, and the parser does not know that name. Between a mark and
// another name it would go by the name.
bool XmlCursor::chooseEncoding(int size)
{
    const QByteArray key = "encoding=\"";
    QByteArray declaration(m_piece.data(), size);
    const bool hasMark = declaration.startsWith("\xef\xbb\xbf");
    declaration = declaration.left(declaration.indexOf("?>")).toLower().replace('\'', '"');
    declaration = declaration.simplified().replace(" ", "");
    const int at = int(declaration.indexOf(key));
    const bool isNamed = at >= 0 && declaration.mid(hasMark ? 3 : 0).startsWith("<?xml");
    const QByteArray name = declaration.mid(at + key.size()).split('"').first();
    if (isNamed && name == "utf8") {
        XML_SetEncoding(m_parser.get(), "UTF-8");
    }
    return !isNamed || !hasMark || name == "utf8" || name == "utf-8";
}

void XmlCursor::stop(const LoadError &error)
{
    if (!m_ahead) {
        m_ahead = error;
        XML_StopParser(m_parser.get(), XML_FALSE);
    }
}

void XmlCursor::countItems(qint64 items)
{
    m_pending = 0;
    if (items > m_limits.xmlItems - m_count->items) {
        stop(LoadError::TooLarge);
    } else {
        m_count->items += int(items);
    }
}

// What is long in the tag or comment at which the parser is, which may read it byte by byte.
qint64 XmlCursor::bytesAsItems() const
{
    constexpr int usual = 32; // a cell with a reference, a format and a type
    constexpr int bytesOfItem = 8;
    return qMax(0, XML_GetCurrentByteCount(m_parser.get()) - usual) / bytesOfItem;
}

// The parser puts the names of attributes together anew at each place, namespaces and all.
void XmlCursor::countElement(std::string_view name, const char **attributes)
{
    constexpr std::size_t longName = 256;
    constexpr std::size_t longAttribute = 24;
    std::size_t items = 1 + name.size() / longName;
    m_names.clear();
    for (; *attributes != nullptr; attributes += 2) {
        m_names.emplace_back(*attributes);
        items += 1 + m_names.back().size() / longAttribute;
    }
    countItems(qint64(items) + bytesAsItems());
    if (m_scopes.size() + m_ignored >= std::size_t(m_limits.depth)
        || m_names.size() > std::size_t(m_limits.attributes)) {
        stop(LoadError::TooLarge);
    }
}

void XmlCursor::startElement(std::string_view name, const char **attributes)
{
    countElement(name, attributes);
    if (m_ahead || m_ignored > 0) {
        m_ignored += m_ahead ? 0U : 1U;
        return;
    }
    if (m_scopes.empty()) {
        m_main = namespaceOf(name);
    }
    openScope(attributes);
    Event event;
    event.space = spaceOf(name);
    event.unwraps = m_scopes.back().unwraps;
    if (event.space == Space::Ignorable && !event.unwraps) {
        m_ignored = 1;
        return;
    }
    event.type = Type::Start;
    event.string = keep(localName(name));
    event.firstAttribute = int(m_attributes.size());
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const char *const value = attributes[2 * i + 1];
        const Space space = spaceOf(m_names[i]);
        if (space != Space::Xml && space != Space::Ignorable) {
            const int local = keep(localName(m_names[i]));
            m_attributes.push_back({space, local, keep(value)});
        }
        if (event.space == Space::Compatibility && m_names[i] == "Requires") {
            event.requirement = requirementOf(value);
        }
    }
    event.attributes = int(m_attributes.size()) - event.firstAttribute;
    checkReserved(event.space, localName(name));
    if (!m_ahead) {
        m_events.push_back(event);
    }
}

// Markup for compatibility counts from the element at which it stands to the end of it.
void XmlCursor::openScope(const char **attributes)
{
    m_scopes.push_back({m_ignorable.size(), !m_scopes.empty() && m_scopes.back().unwraps,
                        !m_scopes.empty() && m_scopes.back().isExtension});
    bool isKnown = true;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const char *const value = attributes[2 * i + 1];
        if (namespaceOf(m_names[i]) != compatibility) {
            continue;
        }
        const std::string_view name = localName(m_names[i]);
        if (name == "Ignorable") {
            isKnown = isKnown && eachWord(value, [this](auto prefix) { return ignore(prefix); });
        } else if (name == "MustUnderstand") {
            isKnown = isKnown && eachWord(value, [this](auto prefix) {
                          const Space space = spaceOf(uriOf(prefix));
                          return space == Space::Main || space == Space::Relationships
                              || space == Space::Compatibility;
                      });
        } else if (name == "ProcessContent") {
            m_scopes.back().unwraps = true;
        }
    }
    if (!isKnown) {
        stop(LoadError::damaged(unknownExtension));
    }
}

// Extensions have words of their own that look like those of the format.
void XmlCursor::checkReserved(Space space, std::string_view name)
{
    const bool isMain = space == Space::Main;
    const bool isPlaced = isMain ? m_scopes.size() == 2 : m_scopes.back().isExtension;
    if (!isPlaced && contains(reserved, name)) {
        stop(LoadError::damaged(wrongElement));
    }
    m_scopes.back().isExtension |= isMain && name == "extLst";
}

void XmlCursor::endElement()
{
    countItems(1 + bytesAsItems());
    if (m_ahead || m_ignored > 1) {
        m_ignored -= m_ahead ? 0U : 1U;
        return;
    }
    m_ignorable.resize(m_scopes.back().ignorable);
    m_scopes.pop_back();
    if (m_ignored == 0) {
        m_events.emplace_back();
    }
    m_ignored = 0;
}

void XmlCursor::addText(const char *data, int size)
{
    countItems(1);
    if (m_ahead || m_ignored > 0) {
        return;
    }
    if (m_events.empty() || m_events.back().type != Type::Text) {
        m_events.emplace_back();
        m_events.back().type = Type::Text;
        m_events.back().string = int(m_bytes.size());
    }
    m_bytes.append(data, std::size_t(size));
    m_events.back().size += size;
}

int XmlCursor::keep(std::string_view text)
{
    const std::size_t position = m_bytes.size();
    m_bytes.append(text).push_back('\0');
    return int(position);
}

XmlCursor::Space XmlCursor::spaceOf(std::string_view name)
{
    const std::string_view space = namespaceOf(name);
    if (space.empty() || space == m_main) {
        return space.empty() ? Space::None : Space::Main;
    }
    if (contains(relationships, space)) {
        return Space::Relationships;
    }
    if (space == compatibility || space == xml) {
        return space == xml ? Space::Xml : Space::Compatibility;
    }
    constexpr std::size_t comparisons = 8; // that take the time of an item
    countItems(qint64(m_ignorable.size() / comparisons));
    return contains(m_ignorable, space) ? Space::Ignorable : Space::Other;
}

// What is known here can never be ignored.
bool XmlCursor::ignore(std::string_view prefix)
{
    const std::string uri = uriOf(prefix);
    if (spaceOf(uri) == Space::Other) {
        m_ignorable.push_back(uri);
    }
    if (m_ignorable.size() > std::size_t(m_limits.namespaces)) {
        stop(LoadError::TooLarge);
    }
    return !uri.empty() && !m_ahead;
}

XmlCursor::Requirement XmlCursor::requirementOf(const char *prefixes)
{
    Requirement requirement = Broken;
    const bool isDeclared = eachWord(prefixes, [&](std::string_view prefix) {
        const Space space = spaceOf(uriOf(prefix));
        const bool isMet = space == Space::Main || space == Space::Relationships;
        requirement = isMet && requirement != Unmet ? Met : Unmet;
        return space != Space::None && !m_ahead;
    });
    return isDeclared ? requirement : Broken;
}

// The namespace of \p prefix where the reading is, with the separator behind it; empty for one
// that is not declared.
std::string XmlCursor::uriOf(std::string_view prefix)
{
    countItems(1 + qint64(m_bindings.size()));
    for (auto binding = m_bindings.rbegin(); binding != m_bindings.rend(); ++binding) {
        if (prefix == m_declared.c_str() + binding->prefix) {
            return std::string(m_declared.c_str() + binding->uri) + separator;
        }
    }
    return {};
}

bool XmlCursor::next()
{
    if (m_at + 1 < m_events.size() && !hasFailed()) {
        ++m_at;
        return true;
    }
    m_events.clear();
    m_attributes.clear();
    m_bytes.clear();
    m_at = 0;
    while (m_events.empty() && !m_ahead && !m_hasEnded && !hasFailed()) {
        parsePiece();
    }
    const bool isFound = !m_events.empty();
    if (!isFound) {
        fail(m_ahead);
        m_events.emplace_back(); // nothing that could be asked for
    }
    return isFound;
}

void XmlCursor::enter(const char *name, Vocabulary vocabulary)
{
    const bool isFound = next();
    const bool isKnown =
        vocabulary == Spreadsheet ? contains(spreadsheets, m_main) : m_main == packageRelationships;
    const bool isWanted = isKnown && event().space == Space::Main && is(name);
    m_isOther = isFound ? !isWanted : m_isMalformed;
    if (m_isOther) {
        failElement();
    }
}

bool XmlCursor::nextSection()
{
    while (next() && event().type != Type::End) {
        if (event().type == Type::Start && event().space == Space::Main) {
            return true;
        }
        if (event().type == Type::Start) {
            skip();
        }
    }
    return false;
}

bool XmlCursor::nextOf(Space space, Space other, QByteArray *text)
{
    while (next() && event().type != Type::End) {
        if (event().type == Type::Text) {
            takeText(text);
        } else if (event().space == space || event().space == other) {
            checkPlace();
            return !hasFailed();
        } else {
            failElement();
        }
    }
    return false;
}

void XmlCursor::takeText(QByteArray *text)
{
    const char *const data = string(event().string);
    if (text != nullptr) {
        text->append(data, qMin(event().size, longestText - int(text->size())));
    } else if (!std::all_of(data, data + event().size, isBlank)) {
        fail(QT_TRANSLATE_NOOP("MainWindow", "text does not belong there"));
    }
}

void XmlCursor::readText(QByteArray *text)
{
    while (nextOf(Space::Main, Space::Main, text)) {
        failElement();
    }
}

void XmlCursor::skip()
{
    for (int open = 1; open > 0 && next();) {
        open += event().type == Type::Start ? 1 : event().type == Type::End ? -1 : 0;
    }
}

bool XmlCursor::is(const char *name) const
{
    return event().type == Type::Start && std::strcmp(string(event().string), name) == 0;
}

const char *XmlCursor::attribute(Space space, const char *name) const
{
    for (int i = 0; i < event().attributes; ++i) {
        const Attribute &attribute = attributeAt(i);
        if (attribute.space == space && std::strcmp(string(attribute.name), name) == 0) {
            return string(attribute.value);
        }
    }
    return nullptr;
}

// What an element must not say where values are read.
void XmlCursor::checkPlace()
{
    if (event().unwraps) {
        fail(unknownExtension);
    }
    for (int i = 0; i < event().attributes; ++i) {
        if (attributeAt(i).space == Space::Main) {
            fail(unknownAttribute);
        }
    }
}

void XmlCursor::checkAttributes(Names read, const Names *others, const char *relationship)
{
    bool hasRelationship = false;
    checkPlace();
    for (int i = 0; i < event().attributes; ++i) {
        const Space space = attributeAt(i).space;
        const std::string_view name = string(attributeAt(i).name);
        const bool isRead = contains(read, name);
        bool isAllowed = !isRead && name != relationship;
        if (space == Space::None) {
            isAllowed = isRead || others == nullptr || contains(*others, name);
        } else if (space == Space::Relationships && name == relationship) {
            isAllowed = !hasRelationship;
            hasRelationship = true;
        }
        if (!isAllowed) {
            fail(unknownAttribute);
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
    fail(wrongElement);
}

void XmlCursor::failIndex()
{
    fail(QT_TRANSLATE_NOOP("MainWindow", "an index is not a number"));
}

void XmlCursor::once(bool *met, const char *words)
{
    if (*met) {
        fail(words == nullptr ? wrongElement : words);
    }
    *met = true;
}

LoadError XmlCursor::finish()
{
    while (next()) { }
    return m_error;
}
