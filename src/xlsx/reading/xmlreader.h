// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include <QByteArray>
#include <QVector>

#include "xlsx/reading/loaderror.h"

class ZipPackage;
struct WorkbookLimits;

/// How much of XML was read in all parts of a package together.
struct XmlCount {
    int items = 0;
};

/// The attributes of one element as the parser gives them: names and values in turn.
class XmlAttributes
{
public:
    explicit XmlAttributes(const char *const *pairs) : m_pairs(pairs) { }

    /// The value of the attribute \p name, which has no namespace; null without one.
    const char *value(const char *name) const;
    /// The value of the attribute \p name in the namespace of the relationships of documents, in
    /// its transitional or strict form; null without one.
    const char *relationship(const char *name) const;
    /// Whether each attribute without a namespace is one of \p names, a list that ends with null.
    bool areAmong(const char *const *names) const;
    int count() const;

private:
    const char *const *m_pairs;
};

/// What becomes of an element.
enum class XmlOutcome {
    /// It is read: the reader gets its attributes, its text and its end.
    Read,
    /// It is passed over with all that it holds.
    PassedOver,
    /// It only wraps others, which count as if they stood in its stead.
    Unwrapped,
    /// It must not stand there: the part is damaged.
    Refused
};

/// What becomes of the element \p name directly inside of the element of the node \p parent.
struct XmlStep {
    const char *name;
    int parent;
    XmlOutcome outcome;
    /// How the reader calls an element that is read.
    int node = 0;
    /// What becomes of elements inside of it that no step names: PassedOver or Refused.
    XmlOutcome unknown = XmlOutcome::PassedOver;
};

/// A table of steps that outlives whoever uses it.
struct XmlSteps {
    template<std::size_t count>
    XmlSteps(const std::array<XmlStep, count> &table)
        : first(table.data()), last(table.data() + count)
    {
    }

    const XmlStep *first;
    const XmlStep *last;
};

/// Reads one XML part of a package. A derived class names the elements that it wants in a table
/// of steps. Elements of other vocabularies are passed over; of the markup for compatibility the
/// fallback is read. There are no document types and no entities but those of XML itself, and what
/// is read is bounded by the limits of the package.
class XmlReader
{
public:
    /// The node that holds the first element of the part, which has to be one of the steps. A
    /// derived class numbers its own nodes from 0 on.
    static constexpr int document = -1;

    Q_DISABLE_COPY_MOVE(XmlReader)
    virtual ~XmlReader();

    /// Reads the part \p name of \p package, of at most \p largest bytes. None exactly when all of
    /// it was read and well-formed, its checksum right, its first element the wanted one, and
    /// nothing was refused.
    LoadError readPart(ZipPackage *package, const QByteArray &name, XmlCount *count,
                       qint64 largest);

    /// Whether the part is something else: no XML, or with another first element.
    bool isOther() const { return m_isOther; }

protected:
    /// What the names of the wanted elements belong to.
    enum class Vocabulary { Spreadsheet, Relationships, ContentTypes };

    XmlReader(Vocabulary vocabulary, XmlSteps steps);

    /// The element of \p node begins.
    virtual void enter(int node, const XmlAttributes &attributes) = 0;
    /// The element of \p node ends.
    virtual void leave(int node);
    /// A piece of the text directly inside of the element of \p node.
    virtual void text(int node, const char *data, int size);

    /// The cell that is being read, such as "C17"; empty when it is none.
    virtual QString currentCell() const;

    /// The limits of the package, as long as its part is read.
    const WorkbookLimits &limits() const { return *m_limits; }

    /// Ends the reading with \p error. enter, leave and text may still be called once.
    void refuse(const LoadError &error);
    /// Refuses the part as damaged when the element of \p met, set by this, was met before.
    void meetOnce(bool *met);
    bool isRefused() const { return m_error.reason != LoadError::None; }

private:
    struct Callbacks;
    struct Parser;

    // An element that has begun and not ended yet.
    struct Element {
        XmlOutcome outcome;
        int node;
        XmlOutcome unknown;
    };

    const char *nameInVocabulary(const char *expatName) const;
    Element childOf(const Element &parent, const char *expatName) const;
    void countItems(int items);
    void startElement(const char *expatName, const char *const *attributes);
    void endElement();
    void startParser(const char *encoding);
    bool feed(const char *data, int size, bool last);
    bool parse(const char *data, int size, bool last);

    Vocabulary m_vocabulary;
    XmlSteps m_steps;

    std::unique_ptr<Parser> m_parser;
    XmlCount *m_count = nullptr;
    const WorkbookLimits *m_limits = nullptr;
    QVector<Element> m_open;
    qint64 m_pending = 0;
    LoadError m_error;
    bool m_hasPiece = false;
    bool m_hasRoot = false;
    bool m_isOther = false;
    // The part names UTF-8 in a way of its own as its encoding.
    bool m_isUtf8 = false;
};
