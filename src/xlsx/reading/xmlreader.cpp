// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/xmlreader.h"

#include <array>
#include <cstddef>
#include <cstring>

#include <expat.h>

#include "xlsx/reading/parsermemory.h"
#include "xlsx/reading/workbooklimits.h"
#include "xlsx/reading/zippackage.h"

namespace
{

// Between the namespace and the name; no namespace contains it.
constexpr char separator = '\n';

struct Namespaces {
    const char *transitional;
    const char *strict;
};

constexpr Namespaces spreadsheet = {"http://schemas.openxmlformats.org/spreadsheetml/2006/main\n",
                                    "http://purl.oclc.org/ooxml/spreadsheetml/main\n"};
constexpr Namespaces packageRelationships = {
    "http://schemas.openxmlformats.org/package/2006/relationships\n", nullptr};
constexpr Namespaces packageContentTypes = {
    "http://schemas.openxmlformats.org/package/2006/content-types\n", nullptr};
constexpr Namespaces documentRelationships = {
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships\n",
    "http://purl.oclc.org/ooxml/officeDocument/relationships\n"};

constexpr const char *compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006\n";

// What follows the prefix in the name, or null.
const char *behind(const char *prefix, const char *name)
{
    if (prefix == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::strlen(prefix);
    return std::strncmp(name, prefix, length) == 0 ? name + length : nullptr;
}

const char *localName(const Namespaces &spaces, const char *name)
{
    const char *const local = behind(spaces.transitional, name);
    return local != nullptr ? local : behind(spaces.strict, name);
}

bool isOneOf(const char *name, const char *const *names)
{
    while (*names != nullptr && std::strcmp(*names, name) != 0) {
        ++names;
    }
    return *names != nullptr;
}

} // namespace

const char *XmlAttributes::value(const char *name) const
{
    for (const char *const *pair = m_pairs; *pair != nullptr; pair += 2) {
        if (std::strcmp(pair[0], name) == 0) {
            return pair[1];
        }
    }
    return nullptr;
}

const char *XmlAttributes::relationship(const char *name) const
{
    for (const char *const *pair = m_pairs; *pair != nullptr; pair += 2) {
        const char *const local = localName(documentRelationships, pair[0]);
        if (local != nullptr && std::strcmp(local, name) == 0) {
            return pair[1];
        }
    }
    return nullptr;
}

bool XmlAttributes::areAmong(const char *const *names) const
{
    for (const char *const *pair = m_pairs; *pair != nullptr; pair += 2) {
        if (std::strchr(pair[0], separator) == nullptr && !isOneOf(pair[0], names)) {
            return false;
        }
    }
    return true;
}

int XmlAttributes::count() const
{
    int pairs = 0;
    for (const char *const *pair = m_pairs; *pair != nullptr; pair += 2) {
        ++pairs;
    }
    return pairs;
}

namespace
{

constexpr XML_Memory_Handling_Suite parserMemory = {&ParserMemory::allocate,
                                                    &ParserMemory::reallocate, &ParserMemory::free};

XML_Parser newParser()
{
    constexpr std::array<char, 2> between = {separator, '\0'};
    return XML_ParserCreate_MM(nullptr, &parserMemory, between.data());
}

} // namespace

struct XmlReader::Parser {
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expat = {newParser(),
                                                                          &XML_ParserFree};
};

struct XmlReader::Callbacks {
    static XmlReader *reader(void *self) { return static_cast<XmlReader *>(self); }

    static void start(void *self, const char *name, const char **attributes)
    {
        reader(self)->startElement(name, attributes);
    }

    static void end(void *self, const char * /*name*/) { reader(self)->endElement(); }

    static void text(void *self, const char *data, int size)
    {
        reader(self)->countItems(1);
        const Element &element = reader(self)->m_open.constLast();
        if (element.outcome == XmlOutcome::Read && !reader(self)->isRefused()) {
            reader(self)->text(element.node, data, size);
        }
    }

    // Whatever has no function of its own, such as comments.
    static void other(void *self, const char * /*data*/, int /*size*/)
    {
        reader(self)->countItems(1);
    }

    static void nameSpace(void *self, const char * /*prefix*/, const char * /*uri*/)
    {
        reader(self)->countItems(1);
    }

    // Entities are declared in document types only.
    static void documentType(void *self, const char * /*name*/, const char * /*systemId*/,
                             const char * /*publicId*/, int /*hasInternalSubset*/)
    {
        reader(self)->refuse(LoadError::Damage::DocumentType);
    }

    // Some writers leave out the hyphen.
    static int unknownEncoding(void *self, const char *name, XML_Encoding * /*encoding*/)
    {
        reader(self)->m_isUtf8 = qstricmp(name, "utf8") == 0;
        return XML_STATUS_ERROR;
    }
};

XmlReader::XmlReader(Vocabulary vocabulary, XmlSteps steps)
    : m_vocabulary(vocabulary), m_steps(steps)
{
}

XmlReader::~XmlReader() = default;

LoadError XmlReader::readPart(ZipPackage *package, const QByteArray &name, XmlCount *count,
                              qint64 largest)
{
    m_count = count;
    m_limits = &package->limits();
    m_error = {};
    m_hasRoot = false;
    m_isOther = false;
    m_isUtf8 = false;
    m_hasPiece = false;
    m_pending = 0;
    m_open = {{XmlOutcome::Unwrapped, document, XmlOutcome::Refused}};
    ParserMemory::limitTo(m_limits->parserMemory);
    m_parser = std::make_unique<Parser>();
    if (!m_parser->expat) {
        return LoadError::TooLarge;
    }
    startParser(nullptr);

    const LoadError read = package->read(
        name, largest, [this](const char *data, int size) { return feed(data, size, false); });
    if (!read) {
        feed(nullptr, 0, true);
    }
    m_parser.reset();
    LoadError error = isRefused() ? m_error : read;
    if (error.reason == LoadError::Damaged) {
        error.cell = currentCell();
    }
    return error;
}

void XmlReader::startParser(const char *encoding)
{
    XML_Parser expat = m_parser->expat.get();
    XML_ParserReset(expat, encoding);
    XML_SetUserData(expat, this);
    XML_SetElementHandler(expat, &Callbacks::start, &Callbacks::end);
    XML_SetCharacterDataHandler(expat, &Callbacks::text);
    XML_SetStartDoctypeDeclHandler(expat, &Callbacks::documentType);
    XML_SetDefaultHandler(expat, &Callbacks::other);
    XML_SetStartNamespaceDeclHandler(expat, &Callbacks::nameSpace);
    XML_SetUnknownEncodingHandler(expat, &Callbacks::unknownEncoding, this);
}

bool XmlReader::feed(const char *data, int size, bool last)
{
    const bool first = !m_hasPiece;
    m_hasPiece = true;
    m_pending += size;
    bool parsed = parse(data, size, last);
    if (!parsed && first && m_isUtf8) {
        startParser("UTF-8");
        parsed = parse(data, size, last);
    }
    if (!parsed && XML_GetErrorCode(m_parser->expat.get()) == XML_ERROR_NO_MEMORY) {
        refuse(LoadError::TooLarge);
    }
    m_isOther = m_isOther || (!parsed && !isRefused() && !m_hasRoot);
    if (!parsed) {
        refuse(LoadError::Damage::Xml);
    }
    if (m_pending > m_limits->tokenSize) {
        refuse(LoadError::TooLarge);
    }
    return !isRefused();
}

bool XmlReader::parse(const char *data, int size, bool last)
{
    return XML_Parse(m_parser->expat.get(), data, size, last ? 1 : 0) == XML_STATUS_OK;
}

void XmlReader::refuse(const LoadError &error)
{
    if (!isRefused()) {
        m_error = error;
        XML_StopParser(m_parser->expat.get(), XML_FALSE);
    }
}

void XmlReader::meetOnce(bool *met)
{
    if (*met) {
        refuse(LoadError::Damage::Element);
    }
    *met = true;
}

const char *XmlReader::nameInVocabulary(const char *expatName) const
{
    switch (m_vocabulary) {
    case Vocabulary::Relationships:
        return localName(packageRelationships, expatName);
    case Vocabulary::ContentTypes:
        return localName(packageContentTypes, expatName);
    default:
        return localName(spreadsheet, expatName);
    }
}

XmlReader::Element XmlReader::childOf(const Element &parent, const char *expatName) const
{
    constexpr Element passedOver = {XmlOutcome::PassedOver, document, XmlOutcome::PassedOver};
    if (parent.outcome == XmlOutcome::PassedOver) {
        return passedOver;
    }
    const bool isFirst = parent.node == document;
    // A choice asks for more than the format itself, which is all that is known here.
    if (const char *const wrapper = behind(compatibility, expatName);
        wrapper != nullptr && !isFirst) {
        return std::strcmp(wrapper, "Choice") == 0
            ? passedOver
            : Element{XmlOutcome::Unwrapped, parent.node, parent.unknown};
    }
    const char *const name = nameInVocabulary(expatName);
    if (name == nullptr && !isFirst) {
        return passedOver;
    }
    for (const XmlStep *step = m_steps.first; name != nullptr && step != m_steps.last; ++step) {
        if (step->parent == parent.node && std::strcmp(step->name, name) == 0) {
            return {step->outcome, step->node, step->unknown};
        }
    }
    return {parent.unknown, document, XmlOutcome::PassedOver};
}

// The parser goes on as long as items come, so that nothing is pending.
void XmlReader::countItems(int items)
{
    m_pending = 0;
    m_count->items += items;
    if (m_count->items > m_limits->xmlItems) {
        refuse(LoadError::TooLarge);
    }
}

void XmlReader::startElement(const char *expatName, const char *const *attributes)
{
    const XmlAttributes given(attributes);
    countItems(1 + given.count());
    if (isRefused()) {
        return;
    }
    if (m_open.size() > m_limits->depth || given.count() > m_limits->attributes) {
        refuse(LoadError::TooLarge);
        return;
    }
    const Element element = childOf(m_open.constLast(), expatName);
    m_isOther = !m_hasRoot && element.outcome == XmlOutcome::Refused;
    m_hasRoot = true;
    m_open.append(element);
    if (element.outcome == XmlOutcome::Refused) {
        refuse(LoadError::Damage::Element);
    } else if (element.outcome == XmlOutcome::Read) {
        enter(element.node, given);
    }
}

void XmlReader::endElement()
{
    countItems(1);
    if (isRefused()) {
        return;
    }
    const Element element = m_open.takeLast();
    if (element.outcome == XmlOutcome::Read) {
        leave(element.node);
    }
}

QString XmlReader::currentCell() const
{
    return {};
}

void XmlReader::leave(int /*node*/) { }

void XmlReader::text(int /*node*/, const char * /*data*/, int /*size*/) { }
