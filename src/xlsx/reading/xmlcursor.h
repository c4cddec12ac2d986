// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xlsx/reading/zippackage.h"

struct XML_ParserStruct;

/// The elements \c name among the children of another one, and what reads one of them.
struct XmlChild {
    std::string_view name;
    std::function<void()> read;
};

/// Goes through one XML part in its order, one function per element:
///
///     void readRow()                        // the cursor stands at <row>
///     {
///         xml.allowAttributes({"r"}, {"spans", "ht"});
///         xml.readChildren({{"c", [&] { readCell(); }}}, {"extLst"});
///     }                                     // the cursor stands at </row>
///
/// Names stand alone for elements of the part's own namespace and for attributes without one, and
/// begin with "mc:" or "r:" for markup for compatibility and relationships, whatever the part calls
/// those. In an element whose children are read, whatever nobody asks for is an error: elements of
/// other names or namespaces, text, attributes. Only what the part itself declares ignorable is not
/// there. What belongs directly into the part's first element stands there once and nowhere else.
/// The first error ends the reading: from then on there are no children, no texts and no
/// attributes, and fail() changes nothing.
///
/// There are no document types and no entities but those of XML itself, and what is read is bounded
/// by the limits of the package.
class XmlCursor
{
public:
    using Names = std::initializer_list<std::string_view>;
    using Children = std::initializer_list<XmlChild>;

    /// What the names of a part belong to.
    enum Vocabulary { Spreadsheet, PackageRelationships };

    /// Before the part \p part of \p package, which has at most \p largest bytes.
    XmlCursor(ZipPackage *package, const QByteArray &part, qint64 largest);
    ~XmlCursor();
    Q_DISABLE_COPY_MOVE(XmlCursor)

    /// What is left of the limits of the package.
    const WorkbookLimits &limits() const { return *m_left; }

    /// Goes to the first element, which has to be \p name of \p vocabulary.
    void enter(std::string_view name, Vocabulary vocabulary = Spreadsheet);
    /// Whether the part is something else: no XML, or with another first element.
    bool isOther() const { return m_isOther; }

    /// Reads the \p children of the element, passes over those of the names \p passedOver, and
    /// refuses all others.
    void readChildren(Children children, Names passedOver = {});
    /// The same in an element that may also hold text and whatever is of other namespaces, which is
    /// passed over.
    void readSections(Children children, Names passedOver);
    /// Instead of names: all of them.
    static constexpr std::string_view any = "*";

    /// Passes over the rest of the element.
    void skip();
    /// Appends the text of the element, which holds nothing else, to \p text. What is beyond
    /// longestText is dropped.
    void readText(QByteArray *text);
    /// The element holds neither text nor others.
    void readNothing() { readText(nullptr); }

    /// The attribute \p name; null without one.
    const char *attribute(std::string_view name) const;
    /// Refuses attributes other than \p read and \p passedOver. Those of other namespaces may have
    /// any name but the ones read.
    void allowAttributes(Names read, Names passedOver = {});
    /// Whether the choice at which it stands asks for nothing but the part's own namespace and that
    /// of relationships; null when nobody can say.
    std::optional<bool> isMet() const { return event().isMet; }

    /// Ends the reading with \p error.
    void fail(const LoadError &error);
    /// The same unless \p holds, which it returns.
    template<typename Error>
    bool require(bool holds, const Error &error)
    {
        if (!holds) {
            fail(error);
        }
        return holds;
    }
    /// The element at which the cursor stands must not stand there.
    void failElement();
    /// Takes \p bytes from what is left for cells and texts; false when that is less.
    bool takeMemory(qint64 bytes);
    /// Sets \p met, which must not be set before: there are two contents where one belongs.
    void once(bool *met);
    /// Names the cell in which the error is.
    void blame(const QString &cell) { m_error.cell = cell; }
    bool hasFailed() const { return m_error.reason != LoadError::None; }

    /// Reads on to the end of the part. None exactly when all of it was read and well-formed, its
    /// checksum right, and nothing was refused.
    LoadError finish();

    /// Bytes of a text that are kept: more than the longest takes with each character as an escape.
    static constexpr int longestText = 256 * 1024;

private:
    // Between a namespace and a name; the parser refuses namespaces that contain it.
    static constexpr char separator = '\n';

    enum class Type : quint8 { Start, Attribute, Text, End };

    // What a name belongs to: the part's own namespace is the main one.
    enum class Space { None, Main, Relationships, Compatibility, Xml, Ignorable, Other };
    static bool isOwn(Space space) { return space == Space::Main || space == Space::Relationships; }

    // As the parser gives it.
    struct Name {
        std::string_view space; // with the separator after it; empty without one
        std::string_view local;
        const char *value; // of an attribute
    };
    static Name split(std::string_view name, const char *value = nullptr);
    // The attributes of an element follow it.
    struct Event {
        Type type = Type::End;
        bool isPlain = false; // a name without a prefix
        std::string name; // as those who read it call it
        std::string text; // of a text or an attribute
        const char *flaw = nullptr; // of an element whose children or attributes are read
        std::optional<bool> isMet; // as that of a choice
    };
    // An open element.
    struct Scope {
        std::size_t ignorable = 0; // namespaces that may be ignored outside of it
        bool unwraps = false; // what may be ignored is to be replaced by what it holds
        bool isExtension = false;
        bool isIgnored = false;
    };

    // What the parser reports of a piece goes into m_events.
    void parsePiece();
    bool chooseEncoding(int size);
    void startElement(const char *name, const char **attributes);
    void endElement(const char *name);
    void addText(const char *data, int size);
    void passOver(const char *data, int size);
    void beginNamespace(const char *prefix, const char *uri);
    void endNamespace(const char *prefix);
    void refuseDocumentType(const char *name, const char *systemId, const char *publicId, int has);
    Event &push(Type type, std::string_view name = {}, Space space = Space::None);
    void stop(const LoadError &error);
    void countItems(qint64 items);
    void countElement(std::string_view name, const char **attributes);
    qint64 bytesAsItems() const;
    void openScope();
    bool isPlaced(Space space, std::string_view name);
    Space spaceOf(std::string_view space);
    std::optional<bool> isMet(const char *prefixes);
    std::string uriOf(const QByteArray &prefix);

    // What was reported is gone through.
    const Event &event() const { return m_events[m_at]; }
    bool is(std::string_view name) const { return event().name == name; }
    bool isAttribute(std::size_t at) const
    {
        return at < m_events.size() && m_events[at].type == Type::Attribute;
    }
    bool next();
    bool nextChild(QByteArray *text = nullptr);
    void readChild(Children children, Names passedOver);
    void takeText(QByteArray *text);
    void checkPlace() { require(event().flaw == nullptr, event().flaw); }

    WorkbookLimits *m_left; // of the limits of the package
    ZipPart m_part;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct *)> m_parser;
    std::vector<char> m_piece;
    int m_pending = 0; // bytes since the last event
    bool m_hasEnded = false;
    bool m_isMalformed = false;

    std::string m_main; // the namespace of the first element, with the separator behind it
    std::vector<std::pair<std::string, std::string>> m_bindings; // of prefixes to namespaces
    std::vector<std::string> m_ignorable;
    std::vector<Scope> m_scopes;
    std::vector<Name> m_given; // attributes of one element
    std::set<std::string> m_sections; // that were met and must not come again

    std::vector<Event> m_events = std::vector<Event>(1); // never empty
    std::size_t m_at = 0;
    LoadError m_ahead; // found after the events
    LoadError m_error;
    bool m_isOther = false;
};
