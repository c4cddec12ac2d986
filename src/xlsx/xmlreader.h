#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include <QByteArray>
#include <QVector>

#include "xlsx/loaderror.h"

class ZipPackage;

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

/// The element \p name leads from the place \p from in a tree of elements to the place \p to.
struct XmlStep {
    const char *name;
    int from;
    int to;
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

/// Reads one XML part of a package. A derived class names the elements that it wants as steps from
/// a place in the tree to the next one; all others are passed over with what they hold. There are
/// no document types and no entities but those of XML itself, and what is read is bounded by the
/// WorkbookLimits.
class XmlReader
{
public:
    /// The place before the first element. Other places are numbers above it.
    static constexpr int outside = 0;
    /// The place of elements that are passed over with all that they hold.
    static constexpr int ignored = -1;

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
    enum class Vocabulary { Spreadsheet, Relationships };

    /// The places from \p firstStrict on hold no elements of the vocabulary but those that \p steps
    /// lead to.
    XmlReader(Vocabulary vocabulary, XmlSteps steps, int firstStrict);

    /// The element that leads to \p place begins.
    virtual void enter(int place, const XmlAttributes &attributes) = 0;
    /// The element that led to \p place ends.
    virtual void leave(int place);
    /// A piece of the text directly inside of the element of \p place.
    virtual void text(int place, const char *data, int size);

    /// Ends the reading with \p error. enter, leave and text may still be called once.
    void refuse(LoadError error);
    /// Refuses the part as damaged when the element of \p met, set by this, was met before.
    void meetOnce(bool *met);
    bool isRefused() const { return m_error != LoadError::None; }

private:
    struct Callbacks;
    struct Parser;

    int next(int place, const char *expatName) const;
    void countItems(int items);
    void startElement(const char *expatName, const char *const *attributes);
    void endElement();
    bool feed(const char *data, int size, bool last);

    Vocabulary m_vocabulary;
    XmlSteps m_steps;
    int m_firstStrict;

    std::unique_ptr<Parser> m_parser;
    XmlCount *m_count = nullptr;
    QVector<int> m_places;
    qint64 m_pending = 0;
    LoadError m_error = LoadError::None;
    bool m_hasRoot = false;
    bool m_isOther = false;
};
