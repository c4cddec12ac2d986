// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <initializer_list>

#include "xlsx/reading/xmlevents.h"

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
/// ignorable is passed over. The first error ends the reading: from then on there are no children,
/// no texts and no attributes, and fail() changes nothing.
class XmlCursor
{
public:
    using Names = std::initializer_list<const char *>;

    /// What the names of a part belong to.
    enum Vocabulary { Spreadsheet, PackageRelationships };

    /// Before the part \p part of \p package, which has at most \p largest bytes.
    XmlCursor(ZipPackage *package, const QByteArray &part, qint64 largest, XmlCount *count)
        : m_events(package, part, largest, count), m_limits(package->limits())
    {
    }

    const WorkbookLimits &limits() const { return m_limits; }

    /// Goes to the first element, which has to be \p name of \p vocabulary.
    void enter(const char *name, Vocabulary vocabulary = Spreadsheet);
    /// The same where the children of that element are gone through with nextChild.
    void enterPlace(const char *name, Vocabulary vocabulary = Spreadsheet);
    /// Whether the part is something else: no XML, or with another first element.
    bool isOther() const { return m_isOther; }

    /// In the first element: goes to its next child of the main namespace and passes over all
    /// others.
    bool nextSection();
    /// Goes to the next child, which is of the namespace \p space.
    bool nextChild(XmlSpace space = XmlSpace::Main) { return nextChild(space, space); }
    /// The same where it may be markup for compatibility, too.
    bool nextChildOrMarkup() { return nextChild(XmlSpace::Main, XmlSpace::Compatibility); }
    bool is(const char *name) const { return isOpen() && qstrcmp(localName(), name) == 0; }
    bool isMarkup() const { return isOpen() && event().space == XmlSpace::Compatibility; }
    /// What the choice at which the cursor stands asks for.
    XmlEvent::Requirement requirement() const { return event().requirement; }

    /// Passes over the rest of the element.
    void skip();
    /// Appends the text of the element, which holds nothing else, to \p text. What is beyond
    /// longestText is dropped.
    void readText(QByteArray *text);
    /// Passes over the text of the element, which holds nothing else.
    void skipText();
    /// The element holds neither text nor others.
    void readNothing();

    /// The attribute \p name, which has no namespace; null without one.
    const char *attribute(const char *name) const { return attribute(XmlSpace::None, name); }
    /// The same in the namespace of relationships.
    const char *relationship(const char *name) const
    {
        return attribute(XmlSpace::Relationships, name);
    }
    /// Refuses attributes other than \p read and \p passedOver. Those of other namespaces may have
    /// any name but those that are read.
    /// \p relationship is read in the namespace of relationships.
    void allowAttributes(Names read, Names passedOver, const char *relationship = "")
    {
        checkAttributes(read, &passedOver, relationship);
    }
    /// Passes over whatever is not among \p read.
    void allowAnyAttributes(Names read) { checkAttributes(read, nullptr, ""); }

    /// Ends the reading with \p error.
    void fail(const LoadError &error);
    /// Ends it because of damage that \p words tell.
    void fail(const char *words) { fail(LoadError::damaged(words)); }
    /// The element at which the cursor stands must not stand there.
    void failElement();
    void failIndex();
    /// Fails when \p met, which is set, was set before.
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
    const XmlEvent &event() const { return m_events.event(); }
    const char *localName() const { return m_events.string(event().string); }
    // Whether there is an element whose attributes can be asked for.
    bool isOpen() const { return !hasFailed() && m_isOpen; }
    bool isReserved() const;
    bool next();
    bool nextChild(XmlSpace space, XmlSpace other, QByteArray *text = nullptr);
    void takeText(QByteArray *text);
    void skip(bool inExtension);
    void passOver();
    void checkPlace();
    void checkElsewhere(bool inExtension);
    void checkAttributes(Names read, const Names *others, const char *relationship);
    void failAttribute();
    void failExtension();
    const char *attribute(XmlSpace space, const char *name) const;

    XmlEvents m_events;
    const WorkbookLimits &m_limits;
    LoadError m_error;
    bool m_isOpen = false;
    bool m_isOther = false;
};
