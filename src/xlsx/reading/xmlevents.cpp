// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlevents.h"

#include <array>
#include <cstring>

#include <expat.h>

#include "xlsx/reading/parsermemory.h"

namespace
{

// Between a namespace and a name; the parser refuses namespaces that contain it.
constexpr char separator = '\n';
constexpr int pieceSize = 64 * 1024;

constexpr const char *compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006\n";

struct KnownSpace {
    const char *uri;
    XmlSpace space;
};

constexpr std::array<KnownSpace, 4> knownSpaces = {{
    {"http://schemas.openxmlformats.org/officeDocument/2006/relationships\n",
     XmlSpace::Relationships},
    {"http://purl.oclc.org/ooxml/officeDocument/relationships\n", XmlSpace::Relationships},
    {compatibility, XmlSpace::Compatibility},
    {"http://www.w3.org/XML/1998/namespace\n", XmlSpace::Xml},
}};

bool beginsWith(const char *name, const char *uri)
{
    return std::strncmp(name, uri, std::strlen(uri)) == 0;
}

const char *localName(const char *name)
{
    const char *const end = std::strchr(name, separator);
    return end == nullptr ? name : end + 1;
}

// Hands each word of \p list to \p take, until that returns false; returns whether it never did.
template<typename Take>
bool eachWord(const char *list, const Take &take)
{
    constexpr const char *blanks = " \t\n\r";
    for (list += std::strspn(list, blanks); *list != '\0'; list += std::strspn(list, blanks)) {
        const std::size_t size = std::strcspn(list, blanks);
        if (!take(QByteArray(list, int(size)))) {
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
        events(self)->countItems(1);
    }

    static void beginNamespace(void *self, const char *prefix, const char *uri)
    {
        XmlEvents *const events = Handlers::events(self);
        events->countItems(1);
        events->m_bindings.append(Binding{prefix, uri});
        if (events->m_bindings.size() > events->m_limits.namespaces) {
            events->stop(LoadError::TooLarge);
        }
    }

    static void endNamespace(void *self, const char * /*prefix*/)
    {
        events(self)->m_bindings.removeLast();
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

int XmlEvents::keep(const char *text)
{
    const std::size_t position = m_bytes.size();
    m_bytes.insert(m_bytes.end(), text, text + std::strlen(text) + 1);
    return int(position);
}

XmlSpace XmlEvents::spaceOf(const char *name) const
{
    if (std::strncmp(name, m_main.constData(), std::size_t(m_main.size())) == 0) {
        return XmlSpace::Main;
    }
    const char *const end = std::strchr(name, separator);
    if (end == nullptr) {
        return XmlSpace::None;
    }
    for (const KnownSpace &known : knownSpaces) {
        if (beginsWith(name, known.uri)) {
            return known.space;
        }
    }
    const auto uri = QByteArray::fromRawData(name, int(end - name));
    return m_ignorable.contains(uri) ? XmlSpace::Ignorable : XmlSpace::Other;
}

void XmlEvents::startElement(const char *name, const char **attributes)
{
    int count = 0;
    qint64 items = 1 + qint64(std::strlen(name)) / m_limits.nameSize;
    while (attributes[2 * count] != nullptr) {
        items += 1 + qint64(std::strlen(attributes[2 * count])) / m_limits.nameSize;
        ++count;
    }
    countItems(items);
    if (m_depth >= m_limits.depth || count > m_limits.attributes) {
        stop(LoadError::TooLarge);
    }
    if (m_ahead) {
        return;
    }
    ++m_depth;
    if (m_main.isNull()) {
        const char *const end = std::strchr(name, separator);
        m_main = end == nullptr ? QByteArray(1, separator) : QByteArray(name, int(end + 1 - name));
    }

    XmlEvent event;
    event.type = XmlEvent::Start;
    m_scopes.append({m_depth, m_ignorable.size(), !m_scopes.isEmpty() && m_scopes.last().unwraps});
    for (const char **pair = attributes; *pair != nullptr; pair += 2) {
        readCompatibility(pair[0], pair[1], &event);
    }
    event.unwraps = m_scopes.last().unwraps;
    event.space = spaceOf(name);
    event.string = keep(localName(name));
    event.firstAttribute = int(m_attributes.size());
    event.attributes = count;
    for (const char **pair = attributes; *pair != nullptr; pair += 2) {
        const int local = keep(localName(pair[0]));
        m_attributes.push_back({spaceOf(pair[0]), local, keep(pair[1])});
        if (event.space == XmlSpace::Compatibility && std::strcmp(pair[0], "Requires") == 0) {
            event.requirement = requirementOf(pair[1]);
        }
    }
    m_events.push_back(event);
}

void XmlEvents::readCompatibility(const char *attribute, const char *value, XmlEvent *event)
{
    if (!beginsWith(attribute, compatibility)) {
        return;
    }
    const QByteArray name = attribute + std::strlen(compatibility);
    if (name == "Ignorable") {
        event->needsExtension |=
            !eachWord(value, [this](const QByteArray &prefix) { return ignore(prefix); });
    } else if (name == "MustUnderstand") {
        event->needsExtension |= !eachWord(value, [this](const QByteArray &prefix) {
            const XmlSpace space = spaceOf(uriOf(prefix) + separator);
            return space == XmlSpace::Main || space == XmlSpace::Relationships
                || space == XmlSpace::Compatibility;
        });
    } else if (name == "ProcessContent") {
        m_scopes.last().unwraps = true;
    }
}

// What is known here can never be ignored.
bool XmlEvents::ignore(const QByteArray &prefix)
{
    const QByteArray uri = uriOf(prefix);
    if (!uri.isEmpty() && spaceOf(uri + separator) == XmlSpace::Other) {
        m_ignorable.append(uri);
    }
    if (m_ignorable.size() > m_limits.namespaces) {
        stop(LoadError::TooLarge);
    }
    return !uri.isEmpty() && !m_ahead;
}

XmlEvent::Requirement XmlEvents::requirementOf(const char *prefixes)
{
    bool isMet = true;
    bool isEmpty = true;
    const bool isDeclared = eachWord(prefixes, [&](const QByteArray &prefix) {
        const QByteArray uri = uriOf(prefix);
        const XmlSpace space = spaceOf(uri + separator);
        isEmpty = false;
        isMet = isMet && (space == XmlSpace::Main || space == XmlSpace::Relationships);
        return !uri.isEmpty() && !m_ahead;
    });
    return isEmpty || !isDeclared ? XmlEvent::Broken : isMet ? XmlEvent::Met : XmlEvent::Unmet;
}

// The namespace of \p prefix where the reading is; empty for one that is not declared.
QByteArray XmlEvents::uriOf(const QByteArray &prefix)
{
    countItems(1 + m_bindings.size());
    for (int i = m_bindings.size() - 1; i >= 0; --i) {
        if (m_bindings.at(i).prefix == prefix) {
            return m_bindings.at(i).uri;
        }
    }
    return {};
}

void XmlEvents::endElement()
{
    countItems(1);
    if (m_ahead) {
        return;
    }
    --m_depth;
    m_ignorable.resize(m_scopes.last().ignorable);
    m_scopes.removeLast();
    m_events.push_back(XmlEvent());
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
    m_bytes.insert(m_bytes.end(), data, data + size);
    m_events.back().size += size;
}
