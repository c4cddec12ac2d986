// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlcursor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

#include <expat.h>
#include <QRegularExpression>

#include "xlsx/reading/parsermemory.h"

namespace
{

constexpr std::string_view compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006\n";
constexpr std::array<std::string_view, 2> spreadsheets = {
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main\n",
    "http://purl.oclc.org/ooxml/spreadsheetml/main\n"};
constexpr std::string_view packageRelationships =
    "http://schemas.openxmlformats.org/package/2006/relationships\n";

// Elements that count only directly in the first one, and only once.
constexpr std::array<std::string_view, 5> reserved = {"sheetData", "sheets", "cellXfs", "numFmts",
                                                      "workbookPr"};

constexpr const char *unknownExtension =
    QT_TRANSLATE_NOOP("MainWindow", "it requires an unknown extension");
constexpr const char *unknownAttribute = QT_TRANSLATE_NOOP("MainWindow", "an attribute is unknown");
constexpr const char *wrongElement =
    QT_TRANSLATE_NOOP("MainWindow", "an element does not belong there");

constexpr XML_Memory_Handling_Suite parserMemory = {&ParserMemory::allocate,
                                                    &ParserMemory::reallocate, &ParserMemory::free};

template<typename List>
bool contains(const List &list, std::string_view entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

std::string_view localPart(std::string_view name)
{
    return name.substr(name.find(':') + 1);
}

QList<QByteArray> words(const char *list)
{
    const QByteArray text = QByteArray(list).simplified();
    return text.isEmpty() ? QList<QByteArray>() : text.split(' ');
}

// Calls a member of the cursor whose parser calls this.
template<auto member, typename... Arguments>
void call(void *cursor, Arguments... arguments)
{
    (static_cast<XmlCursor *>(cursor)->*member)(arguments...);
}

} // namespace

XmlCursor::XmlCursor(ZipPackage *package, const QByteArray &part, qint64 largest)
    : m_left(package->left()), m_part(package, part, largest), m_parser(nullptr, XML_ParserFree)
{
    ParserMemory::limitTo(m_left->parserMemory);
    constexpr std::array<char, 2> between = {separator, '\0'};
    m_parser.reset(XML_ParserCreate_MM(nullptr, &parserMemory, between.data()));
    if (!m_parser) {
        m_ahead = LoadError::TooLarge;
        return;
    }
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), call<&XmlCursor::startElement>,
                          call<&XmlCursor::endElement>);
    XML_SetCharacterDataHandler(m_parser.get(), call<&XmlCursor::addText>);
    XML_SetDefaultHandler(m_parser.get(), call<&XmlCursor::passOver>);
    XML_SetNamespaceDeclHandler(m_parser.get(), call<&XmlCursor::beginNamespace>,
                                call<&XmlCursor::endNamespace>);
    XML_SetStartDoctypeDeclHandler(m_parser.get(), call<&XmlCursor::refuseDocumentType>);
}

XmlCursor::~XmlCursor() = default;

XmlCursor::Name XmlCursor::split(std::string_view name, const char *value)
{
    const std::size_t local = name.find(separator) + 1; // 0 without a namespace
    return {name.substr(0, local), name.substr(local), value};
}

// A piece without an event is parsed again together with the next one, which is as long as all
// before it, so that the time stays in proportion to the bytes.
void XmlCursor::parsePiece()
{
    constexpr int usualPiece = 8 * 1024;
    const qint64 left = qMax<qint64>(1, m_left->tokenSize - m_pending);
    const bool isFirst = m_piece.empty();
    m_piece.resize(std::size_t(qMin<qint64>(qMax(usualPiece, m_pending), left)));
    const int size = m_part.read(m_piece.data(), int(m_piece.size()));
    if (m_part.error()) {
        m_ahead = m_part.error();
        return;
    }
    const bool isEncodingClear = !isFirst || chooseEncoding(size);
    m_pending += size;
    m_hasEnded = size == 0;
    const bool isParsed = isEncodingClear
        && XML_Parse(m_parser.get(), m_piece.data(), size, m_hasEnded ? 1 : 0) == XML_STATUS_OK;
    if (m_pending > m_left->tokenSize
        || (!isParsed && XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_MEMORY)) {
        stop(LoadError::TooLarge);
    } else if (!isParsed && !m_ahead) {
        m_isMalformed = true;
        stop(QT_TRANSLATE_NOOP("MainWindow", "it is not well-formed XML"));
    }
}

// Some writers leave out the hyphen, and the parser does not know that name. Between a mark and
// another name it would go by the name.
bool XmlCursor::chooseEncoding(int size)
{
    static const QRegularExpression declaration(
        QStringLiteral(
            "^(\u00ef\u00bb\u00bf)?<\\?xml\\s[^>]*\\sencoding\\s*=\\s*[\"'](utf-?8[\"'])?"),
        QRegularExpression::CaseInsensitiveOption);
    const auto found = declaration.match(QString::fromLatin1(m_piece.data(), size));
    const bool isUtf8 = !found.captured(2).isEmpty();
    if (isUtf8) {
        XML_SetEncoding(m_parser.get(), "UTF-8");
    }
    return !found.hasMatch() || found.captured(1).isEmpty() || isUtf8;
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
    if (items > m_left->xmlItems) {
        stop(LoadError::TooLarge);
    } else {
        m_left->xmlItems -= int(items);
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
    m_given.clear();
    for (; *attributes != nullptr; attributes += 2) {
        m_given.push_back(split(attributes[0], attributes[1]));
        items += 1 + (m_given.back().space.size() + m_given.back().local.size()) / longAttribute;
    }
    countItems(qint64(items) + bytesAsItems());
    if (m_scopes.size() >= std::size_t(m_left->depth)
        || m_given.size() > std::size_t(m_left->attributes)) {
        stop(LoadError::TooLarge);
    }
}

void XmlCursor::startElement(const char *name, const char **attributes)
{
    countElement(name, attributes);
    if (m_ahead) {
        return;
    }
    const Name element = split(name);
    if (m_scopes.empty()) {
        m_main = element.space;
    }
    openScope();
    Scope &scope = m_scopes.back();
    const Space space = element.space.empty() ? Space::Other : spaceOf(element.space);
    scope.isIgnored |= space == Space::Ignorable && !scope.unwraps;
    if (m_ahead || scope.isIgnored) {
        return;
    }
    if (!isPlaced(space, element.local)) {
        stop(wrongElement);
        return;
    }
    const char *flaw = nullptr;
    const std::size_t at = m_events.size();
    push(Type::Start, element.local, space);
    for (const Name &attribute : m_given) {
        const Space of = spaceOf(attribute.space);
        if (of == Space::Main) {
            flaw = unknownAttribute;
        } else if (of != Space::Xml && of != Space::Ignorable) {
            push(Type::Attribute, attribute.local, of).text = attribute.value;
        }
        if (of == Space::None && attribute.local == "Requires") {
            m_events[at].isMet = isMet(attribute.value);
        }
    }
    m_events[at].flaw = scope.unwraps ? unknownExtension : flaw;
}

XmlCursor::Event &XmlCursor::push(Type type, std::string_view name, Space space)
{
    Event &event = m_events.emplace_back();
    event.type = type;
    event.isPlain = space == Space::None || space == Space::Main;
    if (!event.isPlain) {
        event.name = space == Space::Relationships ? "r:"
            : space == Space::Compatibility        ? "mc:"
                                                   : ":";
    }
    event.name += name;
    return event;
}

// Markup for compatibility counts from the element at which it stands to the end of it, but not in
// what is ignored.
void XmlCursor::openScope()
{
    m_scopes.push_back(m_scopes.empty() ? Scope() : m_scopes.back());
    Scope &scope = m_scopes.back();
    scope.ignorable = m_ignorable.size();
    for (const Name &attribute : m_given) {
        if (attribute.space != compatibility || scope.isIgnored) {
            continue;
        }
        const bool isIgnorable = attribute.local == "Ignorable";
        scope.unwraps |= attribute.local == "ProcessContent";
        for (const QByteArray &prefix : words(attribute.value)) {
            const std::string uri = uriOf(prefix);
            const Space space = spaceOf(uri);
            const bool isUnknown = isIgnorable ? space == Space::None
                                               : attribute.local == "MustUnderstand"
                    && !isOwn(space) && space != Space::Compatibility;
            if (m_ahead || isUnknown) {
                stop(unknownExtension);
                return;
            }
            // What is known here can never be ignored.
            if (isIgnorable && space == Space::Other) {
                m_ignorable.push_back(uri);
            }
        }
    }
    if (m_ignorable.size() > std::size_t(m_left->namespaces)) {
        stop(LoadError::TooLarge);
    }
}

// Extensions have words of their own that look like those of the format.
bool XmlCursor::isPlaced(Space space, std::string_view name)
{
    Scope &scope = m_scopes.back();
    const bool isMain = space == Space::Main;
    scope.isExtension |= isMain && name == "extLst";
    if (!contains(reserved, name)) {
        return true;
    }
    return isMain ? m_scopes.size() == 2 && m_sections.emplace(name).second : scope.isExtension;
}

void XmlCursor::endElement(const char * /*name*/)
{
    countItems(1 + bytesAsItems());
    if (m_ahead) {
        return;
    }
    if (!m_scopes.back().isIgnored) {
        push(Type::End);
    }
    m_ignorable.resize(m_scopes.back().ignorable);
    m_scopes.pop_back();
}

void XmlCursor::addText(const char *data, int size)
{
    countItems(1);
    if (m_ahead || m_scopes.back().isIgnored) {
        return;
    }
    if (m_events.empty() || m_events.back().type != Type::Text) {
        push(Type::Text);
    }
    m_events.back().text.append(data, std::size_t(size));
}

// Whatever has no function of its own, such as comments.
void XmlCursor::passOver(const char * /*data*/, int /*size*/)
{
    countItems(1 + bytesAsItems());
}

void XmlCursor::beginNamespace(const char *prefix, const char *uri)
{
    m_bindings.emplace_back(prefix == nullptr ? "" : prefix, uri == nullptr ? "" : uri);
    m_bindings.back().second += separator;
    countItems(1);
    if (m_bindings.size() > std::size_t(m_left->namespaces)) {
        stop(LoadError::TooLarge);
    }
}

void XmlCursor::endNamespace(const char * /*prefix*/)
{
    m_bindings.pop_back();
}

// Entities are declared in document types only.
void XmlCursor::refuseDocumentType(const char * /*name*/, const char * /*systemId*/,
                                   const char * /*publicId*/, int /*hasInternalSubset*/)
{
    stop(QT_TRANSLATE_NOOP("MainWindow", "it declares a document type"));
}

XmlCursor::Space XmlCursor::spaceOf(std::string_view space)
{
    static const std::map<std::string_view, Space> known = {
        {"http://www.w3.org/XML/1998/namespace\n", Space::Xml},
        {compatibility, Space::Compatibility},
        {"http://schemas.openxmlformats.org/officeDocument/2006/relationships\n",
         Space::Relationships},
        {"http://purl.oclc.org/ooxml/officeDocument/relationships\n", Space::Relationships}};
    if (space.empty() || space == m_main) {
        return space.empty() ? Space::None : Space::Main;
    }
    if (const auto found = known.find(space); found != known.end()) {
        return found->second;
    }
    constexpr std::size_t comparisons = 8; // that take the time of an item
    countItems(qint64(m_ignorable.size() / comparisons));
    return contains(m_ignorable, space) ? Space::Ignorable : Space::Other;
}

std::optional<bool> XmlCursor::isMet(const char *prefixes)
{
    std::optional<bool> isMet;
    for (const QByteArray &prefix : words(prefixes)) {
        const Space space = spaceOf(uriOf(prefix));
        if (space == Space::None || m_ahead) {
            return std::nullopt;
        }
        isMet = isMet.value_or(true) && isOwn(space);
    }
    return isMet;
}

// The namespace of \p prefix where the reading is, with the separator behind it; empty for one
// that is not declared.
std::string XmlCursor::uriOf(const QByteArray &prefix)
{
    countItems(1 + qint64(m_bindings.size()));
    const auto found = std::find_if(m_bindings.rbegin(), m_bindings.rend(), [&](const auto &known) {
        return prefix == known.first.c_str();
    });
    return found == m_bindings.rend() ? std::string() : found->second;
}

bool XmlCursor::next()
{
    do {
        ++m_at;
    } while (isAttribute(m_at));
    if (m_at < m_events.size() && !hasFailed()) {
        return true;
    }
    m_events.clear();
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

void XmlCursor::enter(std::string_view name, Vocabulary vocabulary)
{
    const bool isFound = next();
    const bool isKnown =
        vocabulary == Spreadsheet ? contains(spreadsheets, m_main) : m_main == packageRelationships;
    const bool isWanted = isKnown && is(name);
    m_isOther = isFound ? !isWanted : m_isMalformed;
    if (m_isOther) {
        failElement();
    }
}

void XmlCursor::readChildren(Children children, Names passedOver)
{
    checkPlace();
    while (nextChild()) {
        readChild(children, passedOver);
    }
}

void XmlCursor::readSections(Children children, Names passedOver)
{
    while (next() && event().type != Type::End) {
        if (event().type == Type::Start && event().isPlain) {
            readChild(children, passedOver);
        } else {
            skip();
        }
    }
}

void XmlCursor::readChild(Children children, Names passedOver)
{
    for (const XmlChild &child : children) {
        if (is(child.name)) {
            child.read();
            return;
        }
    }
    if (!contains(passedOver, any) && !contains(passedOver, event().name)) {
        failElement();
    }
    skip();
}

// Whatever is found between the children goes to \p text.
bool XmlCursor::nextChild(QByteArray *text)
{
    while (next() && event().type != Type::End) {
        if (event().type == Type::Start) {
            if (event().isPlain) {
                checkPlace();
            }
            return !hasFailed();
        }
        takeText(text);
    }
    return false;
}

void XmlCursor::takeText(QByteArray *text)
{
    const std::string &piece = event().text;
    if (text != nullptr) {
        text->append(piece.data(), qMin(int(piece.size()), longestText - int(text->size())));
    } else {
        require(piece.find_first_not_of(" \t\n\r") == std::string::npos,
                QT_TRANSLATE_NOOP("MainWindow", "text does not belong there"));
    }
}

void XmlCursor::readText(QByteArray *text)
{
    while (nextChild(text)) {
        failElement();
    }
}

void XmlCursor::skip()
{
    for (int open = event().type == Type::Start ? 1 : 0; open > 0 && next();) {
        open += event().type == Type::Start ? 1 : event().type == Type::End ? -1 : 0;
    }
}

const char *XmlCursor::attribute(std::string_view name) const
{
    for (std::size_t at = m_at + 1; isAttribute(at); ++at) {
        if (m_events[at].name == name) {
            return m_events[at].text.c_str();
        }
    }
    return nullptr;
}

// One of relationships may be there twice, in the transitional and in the strict namespace.
void XmlCursor::allowAttributes(Names read, Names passedOver)
{
    checkPlace();
    for (std::size_t at = m_at + 1; isAttribute(at); ++at) {
        const Event &given = m_events[at];
        const bool isRead = contains(read, given.name);
        bool isAllowed = isRead || contains(passedOver, any) || contains(passedOver, given.name);
        if (!given.isPlain) {
            isAllowed = isRead ? attribute(given.name) == given.text.c_str()
                               : std::none_of(read.begin(), read.end(), [&](auto known) {
                                     return localPart(known) == localPart(given.name);
                                 });
        }
        require(isAllowed, unknownAttribute);
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

bool XmlCursor::takeMemory(qint64 bytes)
{
    m_left->memory -= bytes;
    return require(m_left->memory >= 0, LoadError::TooLarge);
}

void XmlCursor::once(bool *met)
{
    require(!*met, QT_TRANSLATE_NOOP("MainWindow", "there are two contents"));
    *met = true;
}

LoadError XmlCursor::finish()
{
    while (next()) { }
    return m_error;
}
