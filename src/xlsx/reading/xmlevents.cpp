// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlevents.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <expat.h>

#include "xlsx/reading/parsermemory.h"

namespace
{

// Between a namespace and a name; the parser refuses namespaces that contain it.
constexpr char separator = '\n';
constexpr int pieceSize = 8 * 1024;

constexpr std::string_view compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006\n";

struct KnownSpace {
    std::string_view uri;
    XmlSpace space;
};

constexpr std::array<KnownSpace, 4> knownSpaces = {{
    {"http://schemas.openxmlformats.org/officeDocument/2006/relationships\n",
     XmlSpace::Relationships},
    {"http://purl.oclc.org/ooxml/officeDocument/relationships\n", XmlSpace::Relationships},
    {compatibility, XmlSpace::Compatibility},
    {"http://www.w3.org/XML/1998/namespace\n", XmlSpace::Xml},
}};

bool beginsWith(std::string_view name, std::string_view uri)
{
    return name.substr(0, uri.size()) == uri;
}

std::string_view localName(std::string_view name)
{
    return name.substr(name.find(separator) + 1); // npos + 1 is 0
}

// Hands each word of \p list to \p take, until that returns false; returns whether it never did.
template<typename Take>
bool eachWord(const char *list, const Take &take)
{
    constexpr const char *blanks = " \t\n\r";
    for (list += std::strspn(list, blanks); *list != '\0'; list += std::strspn(list, blanks)) {
        const std::size_t size = std::strcspn(list, blanks);
        if (!take(std::string_view(list, size))) {
            return false;
        }
        list += size;
    }
    return true;
}

constexpr XML_Memory_Handling_Suite parserMemory = {&ParserMemory::allocate,
                                                    &ParserMemory::reallocate, &ParserMemory::free};

} // namespace

struct XmlEvents::Handlers {
    static XmlEvents *events(void *self) { return static_cast<XmlEvents *>(self); }

    static void start(void *self, const char *name, const char **attributes)
    {
        events(self)->startElement(name, attributes);
    }

    static void end(void *self, const char * /*name*/) { events(self)->endElement(); }

    static void text(void *self, const char *data, int size) { events(self)->addText(data, size); }

    // Whatever has no function of its own, such as comments.
    static void other(void *self, const char * /*data*/, int /*size*/)
    {
        events(self)->countItems(1 + events(self)->bytesAsItems());
    }

    static void beginNamespace(void *self, const char *prefix, const char *uri)
    {
        XmlEvents *const events = Handlers::events(self);
        events->countItems(1);
        std::string *const declared = &events->m_declared;
        const std::size_t prefixAt = declared->size();
        declared->append(prefix == nullptr ? "" : prefix).push_back('\0');
        events->m_bindings.push_back({prefixAt, declared->size()});
        declared->append(uri == nullptr ? "" : uri).push_back('\0');
        if (events->m_bindings.size() > std::size_t(events->m_limits.namespaces)) {
            events->stop(LoadError::TooLarge);
        }
    }

    static void endNamespace(void *self, const char * /*prefix*/)
    {
        events(self)->m_declared.resize(events(self)->m_bindings.back().prefix);
        events(self)->m_bindings.pop_back();
    }

    // Entities are declared in document types only.
    static void documentType(void *self, const char * /*name*/, const char * /*systemId*/,
                             const char * /*publicId*/, int /*hasInternalSubset*/)
    {
        events(self)->stop(
            LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it declares a document type")));
    }

    // Some writers leave out the hyphen.
    static int unknownEncoding(void *self, const char *name, XML_Encoding * /*encoding*/)
    {
        events(self)->m_isUtf8 = qstricmp(name, "utf8") == 0;
        return XML_STATUS_ERROR;
    }
};

void XmlEvents::FreeParser::operator()(XML_ParserStruct *parser) const
{
    XML_ParserFree(parser);
}

XmlEvents::XmlEvents(ZipPackage *package, const QByteArray &part, qint64 largest, XmlCount *count)
    : m_limits(package->limits()), m_count(count), m_part(package, part, largest)
{
    ParserMemory::limitTo(m_limits.parserMemory);
    constexpr std::array<char, 2> between = {separator, '\0'};
    m_parser.reset(XML_ParserCreate_MM(nullptr, &parserMemory, between.data()));
    if (m_parser) {
        startParser(nullptr);
    } else {
        m_ahead = LoadError::TooLarge;
    }
}

XmlEvents::~XmlEvents() = default;

void XmlEvents::startParser(const char *encoding)
{
    XML_Parser expat = m_parser.get();
    XML_ParserReset(expat, encoding);
    XML_SetUserData(expat, this);
    XML_SetElementHandler(expat, &Handlers::start, &Handlers::end);
    XML_SetCharacterDataHandler(expat, &Handlers::text);
    XML_SetStartDoctypeDeclHandler(expat, &Handlers::documentType);
    XML_SetDefaultHandler(expat, &Handlers::other);
    XML_SetNamespaceDeclHandler(expat, &Handlers::beginNamespace, &Handlers::endNamespace);
    XML_SetUnknownEncodingHandler(expat, &Handlers::unknownEncoding, this);
}

bool XmlEvents::next()
{
    if (m_at + 1 < m_events.size()) {
        ++m_at;
        return true;
    }
    m_events.clear();
    m_attributes.clear();
    m_bytes.clear();
    m_at = 0;
    while (m_events.empty() && !m_ahead && !m_ended) {
        parsePiece();
    }
    if (m_events.empty()) {
        m_error = m_ahead;
    }
    return !m_events.empty();
}

// A piece without an event is parsed again together with the next one, which is as long as all
// before it, so that the time stays in proportion to the bytes.
void XmlEvents::parsePiece()
{
    const qint64 left = qMax<qint64>(1, m_limits.tokenSize - m_pending);
    m_piece.resize(std::size_t(qMin<qint64>(qMax(pieceSize, m_pending), left)));
    int size = 0;
    int count = 0;
    do {
        count = m_part.read(m_piece.data() + size, int(m_piece.size()) - size);
        size += count;
    } while (count > 0 && size < int(m_piece.size()));
    if (m_part.error()) {
        m_ahead = m_part.error();
        return;
    }
    m_pending += size;
    bool parsed = parse(size);
    if (!parsed && m_isFirst && m_isUtf8) {
        startParser("UTF-8");
        parsed = parse(size);
    }
    m_isFirst = false;
    m_ended = size == 0;
    if (!parsed && XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_MEMORY) {
        stop(LoadError::TooLarge);
    } else if (!parsed && !m_ahead) {
        m_isMalformed = true;
        stop(LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "it is not well-formed XML")));
    } else if (m_pending > m_limits.tokenSize) {
        stop(LoadError::TooLarge);
    }
}

bool XmlEvents::parse(int size)
{
    return XML_Parse(m_parser.get(), m_piece.data(), size, size == 0 ? 1 : 0) == XML_STATUS_OK;
}

void XmlEvents::stop(const LoadError &error)
{
    if (!m_ahead) {
        m_ahead = error;
        XML_StopParser(m_parser.get(), XML_FALSE);
    }
}

void XmlEvents::countItems(qint64 items)
{
    m_pending = 0;
    if (items > m_limits.xmlItems - m_count->items) {
        stop(LoadError::TooLarge);
    } else {
        m_count->items += int(items);
    }
}

// What is long in the tag or comment at which the parser is, which may read it byte by byte.
qint64 XmlEvents::bytesAsItems() const
{
    constexpr int usual = 32; // a cell with a reference, a format and a type
    constexpr int bytesOfItem = 8;
    return qMax(0, XML_GetCurrentByteCount(m_parser.get()) - usual) / bytesOfItem;
}

int XmlEvents::keep(std::string_view text)
{
    const std::size_t position = m_bytes.size();
    m_bytes.append(text).push_back('\0');
    return int(position);
}

XmlSpace XmlEvents::spaceOf(std::string_view name)
{
    const std::size_t end = name.find(separator);
    if (end == std::string_view::npos) {
        return XmlSpace::None;
    }
    if (beginsWith(name, m_main)) {
        return XmlSpace::Main;
    }
    for (const KnownSpace &known : knownSpaces) {
        if (beginsWith(name, known.uri)) {
            return known.space;
        }
    }
    constexpr std::size_t comparisons = 8; // that take the time of an item
    countItems(qint64(m_ignorable.size() / comparisons));
    const bool isIgnorable = std::any_of(
        m_ignorable.begin(), m_ignorable.end(),
        [uri = name.substr(0, end + 1)](const std::string &ignorable) { return ignorable == uri; });
    return isIgnorable ? XmlSpace::Ignorable : XmlSpace::Other;
}

void XmlEvents::startElement(std::string_view name, const char **attributes)
{
    countElement(name, attributes);
    if (m_ahead) {
        return;
    }
    if (m_main.empty()) {
        const std::size_t end = name.find(separator);
        m_main = end == std::string_view::npos ? std::string(1, separator)
                                               : std::string(name.substr(0, end + 1));
    }
    XmlEvent event;
    event.type = XmlEvent::Start;
    m_scopes.push_back({m_ignorable.size(), !m_scopes.empty() && m_scopes.back().unwraps});
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        readCompatibility(m_names[i], attributes[2 * i + 1], &event);
    }
    event.unwraps = m_scopes.back().unwraps;
    event.space = spaceOf(name);
    event.string = keep(localName(name));
    event.firstAttribute = int(m_attributes.size());
    event.attributes = int(m_names.size());
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const char *const value = attributes[2 * i + 1];
        const int local = keep(localName(m_names[i]));
        m_attributes.push_back({spaceOf(m_names[i]), local, keep(value)});
        if (event.space == XmlSpace::Compatibility && m_names[i] == "Requires") {
            event.requirement = requirementOf(value);
        }
    }
    m_events.push_back(event);
}

// The parser puts the names of attributes together anew at each place, namespaces and all.
void XmlEvents::countElement(std::string_view name, const char **attributes)
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
    if (m_scopes.size() >= std::size_t(m_limits.depth)
        || m_names.size() > std::size_t(m_limits.attributes)) {
        stop(LoadError::TooLarge);
    }
}

void XmlEvents::readCompatibility(std::string_view name, const char *value, XmlEvent *event)
{
    if (!beginsWith(name, compatibility)) {
        return;
    }
    const std::string_view local = localName(name);
    if (local == "Ignorable") {
        event->needsExtension |=
            !eachWord(value, [this](std::string_view prefix) { return ignore(prefix); });
    } else if (local == "MustUnderstand") {
        event->needsExtension |= !eachWord(value, [this](std::string_view prefix) {
            const XmlSpace space = spaceOf(uriOf(prefix));
            return space == XmlSpace::Main || space == XmlSpace::Relationships
                || space == XmlSpace::Compatibility;
        });
    } else if (local == "ProcessContent") {
        m_scopes.back().unwraps = true;
    }
}

// What is known here can never be ignored.
bool XmlEvents::ignore(std::string_view prefix)
{
    const std::string uri = uriOf(prefix);
    if (spaceOf(uri) == XmlSpace::Other) {
        m_ignorable.push_back(uri);
    }
    if (m_ignorable.size() > std::size_t(m_limits.namespaces)) {
        stop(LoadError::TooLarge);
    }
    return !uri.empty() && !m_ahead;
}

XmlEvent::Requirement XmlEvents::requirementOf(const char *prefixes)
{
    bool isMet = true;
    bool isEmpty = true;
    const bool isDeclared = eachWord(prefixes, [&](std::string_view prefix) {
        const std::string uri = uriOf(prefix);
        const XmlSpace space = spaceOf(uri);
        isEmpty = false;
        isMet = isMet && (space == XmlSpace::Main || space == XmlSpace::Relationships);
        return !uri.empty() && !m_ahead;
    });
    return isEmpty || !isDeclared ? XmlEvent::Broken : isMet ? XmlEvent::Met : XmlEvent::Unmet;
}

// The namespace of \p prefix where the reading is, with the separator behind it; empty for one
// that is not declared.
std::string XmlEvents::uriOf(std::string_view prefix)
{
    countItems(1 + qint64(m_bindings.size()));
    for (auto binding = m_bindings.rbegin(); binding != m_bindings.rend(); ++binding) {
        if (prefix == m_declared.c_str() + binding->prefix) {
            return std::string(m_declared.c_str() + binding->uri) + separator;
        }
    }
    return {};
}

void XmlEvents::endElement()
{
    countItems(1 + bytesAsItems());
    if (m_ahead) {
        return;
    }
    m_ignorable.resize(m_scopes.back().ignorable);
    m_scopes.pop_back();
    m_events.emplace_back();
}

void XmlEvents::addText(const char *data, int size)
{
    countItems(1);
    if (m_ahead) {
        return;
    }
    if (m_events.empty() || m_events.back().type != XmlEvent::Text) {
        XmlEvent event;
        event.type = XmlEvent::Text;
        event.string = int(m_bytes.size());
        m_events.push_back(event);
    }
    m_bytes.append(data, std::size_t(size));
    m_events.back().size += size;
}
