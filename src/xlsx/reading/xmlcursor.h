// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xlsx/reading/zippackage.h"

struct XML_ParserStruct;

/// How much of XML was read in all parts of a package together.
struct XmlCount {
    int items = 0;
};

/// Goes through one XML part as it stands there, one function for each element:
///
///     void readRow()                        // the cursor stands at <row>
///     {
///         xml.allowAttributes({"r"}, {"spans", "ht"});
///         while (xml.nextChild()) {         // false at </row>
///             if (xml.is("c")) {
///                 readCell();               // goes on to </c>
///             } else {
///                 xml.failElement();
///             }
///         }
///     }
///
/// In an element whose children are gone through with nextChild, whatever nobody asks for is an
/// error: elements of other namespaces, text, attributes. Only what the part itself declares
/// ignorable is not there. The first error ends the reading: from then on there are no children,
/// no texts and no attributes, and fail() changes nothing.
///
/// There are no document types and no entities but those of XML itself, and what is read is bounded
/// by the limits of the package.
class XmlCursor
{
public:
    using Names = std::initializer_list<const char *>;

    /// What the names of a part belong to.
    enum Vocabulary { Spreadsheet, PackageRelationships };
    /// What a choice asks for: nothing but the part's own namespace and that of relationships,
    /// something else too, or nothing that could be looked up.
    enum Requirement : quint8 { Broken, Met, Unmet };

    /// Before the part \p part of \p package, which has at most \p largest bytes.
    XmlCursor(ZipPackage *package, const QByteArray &part, qint64 largest, XmlCount *count);
    ~XmlCursor();
    Q_DISABLE_COPY_MOVE(XmlCursor)

    const WorkbookLimits &limits() const { return m_limits; }

    /// Goes to the first element, which has to be \p name of \p vocabulary.
    void enter(const char *name, Vocabulary vocabulary = Spreadsheet);
    /// Whether the part is something else: no XML, or with another first element.
    bool isOther() const { return m_isOther; }

    /// In an element that may hold anything, such as the first one: goes to its next child of the
    /// main namespace and passes over all others.
    bool nextSection();
    /// Goes to the next child, which is of the main namespace.
    bool nextChild() { return nextOf(Space::Main, Space::Main, nullptr); }
    /// The same where it may be markup for compatibility, too, or nothing else.
    bool nextChildOrMarkup() { return nextOf(Space::Main, Space::Compatibility, nullptr); }
    bool nextMarkup() { return nextOf(Space::Compatibility, Space::Compatibility, nullptr); }

    /// Whether the cursor stands at an element \p name.
    bool is(const char *name) const;
    bool isMarkup() const { return event().space == Space::Compatibility; }
    /// What the choice at which it stands asks for.
    Requirement requirement() const { return event().requirement; }

    /// Passes over the rest of the element.
    void skip();
    /// Appends the text of the element, which holds nothing else, to \p text. What is beyond
    /// longestText is dropped.
    void readText(QByteArray *text);
    /// The element holds neither text nor others.
    void readNothing() { readText(nullptr); }

    /// The attribute \p name, which has no namespace; null without one.
    const char *attribute(const char *name) const { return attribute(Space::None, name); }
    /// The same in the namespace of relationships.
    const char *relationship(const char *name) const
    {
        return attribute(Space::Relationships, name);
    }
    /// Refuses attributes other than \p read and \p passedOver, and \p relationship in the
    /// namespace of relationships. Those of other namespaces may have any name but these.
    void allowAttributes(Names read, Names passedOver, const char *relationship = "")
    {
        checkAttributes(read, &passedOver, relationship);
    }
    /// Passes over whatever is not among \p read.
    void allowAnyAttributes(Names read = {}) { checkAttributes(read, nullptr, ""); }

    /// Ends the reading with \p error.
    void fail(const LoadError &error);
    /// Ends it because of damage that \p words tell.
    void fail(const char *words) { fail(LoadError::damaged(words)); }
    /// The element at which the cursor stands must not stand there.
    void failElement();
    void failIndex();
    /// Fails when \p met, which is set, was set before: because of damage that \p words tell, or of
    /// the element.
    void once(bool *met, const char *words = nullptr);
    /// Names the cell in which the error is.
    void blame(const QString &cell) { m_error.cell = cell; }
    bool hasFailed() const { return m_error.reason != LoadError::None; }

    /// Reads on to the end of the part. None exactly when all of it was read and well-formed, its
    /// checksum right, and nothing was refused.
    LoadError finish();

    /// Bytes of a text that are kept: more than the longest takes with each character as an escape.
    static constexpr int longestText = 256 * 1024;

private:
    struct Handlers;
    struct FreeParser {
        void operator()(XML_ParserStruct *parser) const;
    };
    enum class Space : quint8 { None, Main, Relationships, Compatibility, Xml, Ignorable, Other };
    enum class Type : quint8 { Start, End, Text };

    struct Event {
        Type type = Type::End;
        Space space = Space::None;
        bool unwraps = false; // what may be ignored is to be replaced by what it holds
        Requirement requirement = Broken;
        int string = 0; // in m_bytes: the local name or the text, of that size
        int size = 0;
        int firstAttribute = 0;
        int attributes = 0;
    };
    struct Attribute {
        Space space;
        int name; // in m_bytes, as is the value
        int value;
    };
    // Positions in m_declared.
    struct Binding {
        std::size_t prefix;
        std::size_t uri;
    };
    // An open element, with the number of namespaces that may be ignored outside of it.
    struct Scope {
        std::size_t ignorable;
        bool unwraps;
        bool isExtension;
    };

    // What the parser reports of a piece goes into m_events.
    void parsePiece();
    bool chooseEncoding(int size);
    void stop(const LoadError &error);
    void countItems(qint64 items);
    qint64 bytesAsItems() const;
    void startElement(std::string_view name, const char **attributes);
    void countElement(std::string_view name, const char **attributes);
    void openScope(const char **attributes);
    void checkReserved(Space space, std::string_view name);
    void endElement();
    void addText(const char *data, int size);
    int keep(std::string_view text);
    Space spaceOf(std::string_view name);
    bool ignore(std::string_view prefix);
    Requirement requirementOf(const char *prefixes);
    std::string uriOf(std::string_view prefix);

    // What was reported is gone through.
    const Event &event() const { return m_events[m_at]; }
    const char *string(int position) const { return m_bytes.data() + position; }
    const Attribute &attributeAt(int index) const
    {
        return m_attributes[std::size_t(event().firstAttribute) + std::size_t(index)];
    }
    bool next();
    bool nextOf(Space space, Space other, QByteArray *text);
    void takeText(QByteArray *text);
    void checkPlace();
    void checkAttributes(Names read, const Names *others, const char *relationship);
    const char *attribute(Space space, const char *name) const;

    const WorkbookLimits &m_limits;
    XmlCount *m_count;
    ZipPart m_part;
    std::unique_ptr<XML_ParserStruct, FreeParser> m_parser;
    std::vector<char> m_piece;
    int m_pending = 0; // bytes since the last event
    bool m_isFirst = true;
    bool m_hasEnded = false;
    bool m_isMalformed = false;

    std::string m_main; // the namespace of the first element, with the separator behind it
    std::vector<Binding> m_bindings;
    std::string m_declared;
    std::vector<std::string> m_ignorable;
    std::vector<Scope> m_scopes;
    std::size_t m_ignored =
        0; // elements that are open inside of one that is ignored, itself included
    std::vector<std::string_view> m_names; // of the attributes of one element

    std::vector<Event> m_events = std::vector<Event>(1); // never empty
    std::vector<Attribute> m_attributes;
    std::string m_bytes;
    std::size_t m_at = 0;
    LoadError m_ahead; // found behind the events
    LoadError m_error;
    bool m_isOther = false;
};
