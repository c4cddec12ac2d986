// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QByteArray>
#include <QVector>

#include "xlsx/reading/loaderror.h"
#include "xlsx/reading/zippackage.h"

struct XML_ParserStruct;

/// How much of XML was read in all parts of a package together.
struct XmlCount {
    int items = 0;
};

/// What the name of an element or an attribute belongs to.
enum class XmlSpace : quint8 {
    /// To no namespace.
    None,
    /// To that of the part's first element.
    Main,
    /// To that of the relationships of documents, transitional or strict.
    Relationships,
    /// To the markup for compatibility.
    Compatibility,
    /// To XML itself, as xml:space does.
    Xml,
    /// To one that the part says may be ignored there.
    Ignorable,
    /// To another one.
    Other
};

struct XmlAttribute {
    XmlSpace space;
    /// Positions of the local name and of the value, for XmlEvents::string.
    int name;
    int value;
};

/// What stands next in a part.
struct XmlEvent {
    enum Type : quint8 { Start, End, Text };

    Type type = End;
    XmlSpace space = XmlSpace::None;
    /// The element asks for an extension that nobody knows here, or names an undeclared prefix.
    bool needsExtension = false;
    /// Elements that may be ignored are to be replaced by what they hold.
    bool unwraps = false;
    /// What a choice asks for: nothing but the part's own namespace and that of relationships,
    /// something else too, or nothing that could be looked up.
    enum Requirement : quint8 { Broken, Met, Unmet } requirement = Broken;
    /// Position of the local name or of the text, for XmlEvents::string.
    int string = 0;
    /// Bytes of the text.
    int size = 0;
    int firstAttribute = 0;
    int attributes = 0;
};

/// The tags and texts of one XML part in their order, with their namespaces resolved. There are no
/// document types and no entities but those of XML itself, and what is read is bounded by the
/// limits of the package.
///
///     <c xmlns="urn:m" r="B2"><v>7<!-- no event -->5</v></c>
///
/// gives Start c of the main namespace, Start v, Text 75, End, End.
class XmlEvents
{
public:
    XmlEvents(ZipPackage *package, const QByteArray &part, qint64 largest, XmlCount *count);
    ~XmlEvents();
    Q_DISABLE_COPY_MOVE(XmlEvents)

    /// Goes to the next event; false at the end of the part, or where error() begins.
    bool next();
    const XmlEvent &event() const { return m_events[m_at]; }
    /// The attribute \p index of the event, counted from 0.
    const XmlAttribute &attribute(int index) const
    {
        return m_attributes[std::size_t(event().firstAttribute + index)];
    }
    /// What stands at \p position, up to the next event that is gone to.
    const char *string(int position) const { return m_bytes.data() + position; }

    const LoadError &error() const { return m_error; }
    /// The namespace of the first element with a line feed behind it; empty before it.
    const std::string &mainNamespace() const { return m_main; }
    /// Whether what stands in the part before error() is no XML.
    bool isMalformed() const { return m_isMalformed; }

private:
    struct Handlers;
    struct FreeParser {
        void operator()(XML_ParserStruct *parser) const;
    };
    // Positions in m_declared.
    struct Binding {
        std::size_t prefix;
        std::size_t uri;
    };
    // An open element.
    struct Scope {
        std::size_t ignorable; // what may be ignored outside of it
        bool unwraps;
    };
    void startParser(const char *encoding);
    void parsePiece();
    bool parse(int size);
    void stop(const LoadError &error);
    void countItems(qint64 items);
    qint64 bytesAsItems() const;

    void startElement(std::string_view name, const char **attributes);
    void countElement(std::string_view name, const char **attributes);
    void endElement();
    void addText(const char *data, int size);
    int keep(std::string_view text);
    XmlSpace spaceOf(std::string_view name);
    void readCompatibility(std::string_view name, const char *value, XmlEvent *event);
    bool ignore(std::string_view prefix);
    XmlEvent::Requirement requirementOf(const char *prefixes);
    std::string uriOf(std::string_view prefix);

    const WorkbookLimits &m_limits;
    XmlCount *m_count;
    ZipPart m_part;
    std::unique_ptr<XML_ParserStruct, FreeParser> m_parser;
    std::vector<char> m_piece;
    int m_pending = 0; // bytes since the last event
    bool m_isFirst = true;
    bool m_isUtf8 = false; // by a name of its own
    bool m_ended = false;
    bool m_isMalformed = false;

    std::string m_main; // with the separator behind it
    std::vector<Binding> m_bindings;
    std::string m_declared;
    std::vector<std::string> m_ignorable; // the same
    std::vector<Scope> m_scopes;
    std::vector<std::string_view> m_names; // of the attributes of one element

    std::vector<XmlEvent> m_events;
    std::vector<XmlAttribute> m_attributes;
    std::string m_bytes;
    std::size_t m_at = 0;
    LoadError m_ahead; // found behind the events
    LoadError m_error;
};
