// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/plainxml.h"

#include <QSet>
#include <QXmlStreamReader>

#include "xlsx/reading/differential/namespaces.h"

namespace
{

// Whether there is markup for compatibility in it.
bool readInto(PlainElement *element, QXmlStreamReader *xml)
{
    element->space = xml->namespaceUri().toString();
    element->name = xml->name().toString();
    const auto declarations = xml->namespaceDeclarations();
    for (const auto &declared : declarations) {
        element->prefixes.insert(declared.prefix().toString(), declared.namespaceUri().toString());
    }
    bool marked = element->space == Namespaces::compatibility();
    const auto attributes = xml->attributes();
    for (const auto &given : attributes) {
        marked = marked || given.namespaceUri() == Namespaces::compatibility();
        element->attributes.append(
            {given.namespaceUri().toString(), given.name().toString(), given.value().toString()});
    }
    while (!xml->atEnd()) {
        switch (xml->readNext()) {
        case QXmlStreamReader::StartElement: {
            PlainElement child;
            child.prefixes = element->prefixes;
            marked = readInto(&child, xml) || marked;
            element->children.push_back(std::move(child));
            element->texts.append(QString());
            break;
        }
        case QXmlStreamReader::Characters:
            element->texts.last() += xml->text().toString();
            break;
        case QXmlStreamReader::EndElement:
            return marked;
        default:
            break;
        }
    }
    return marked;
}

// Takes the markup for compatibility out of one part.
class Compatibility
{
public:
    explicit Compatibility(const QStringList &understood)
        : m_understood(understood.begin(), understood.end())
    {
    }
    void addTo(PlainElement *target, const PlainElement &child, const QSet<QString> &ignorable,
               QSet<QString> unwrapped) const;
    PlainElement cleaned(const PlainElement &element, QSet<QString> ignorable,
                         QSet<QString> unwrapped) const;

private:
    bool extend(const PlainElement &element, QSet<QString> *ignorable,
                QSet<QString> *unwrapped) const;
    const PlainElement *choice(const PlainElement &alternatives, bool *unclear) const;

    QSet<QString> m_understood;
};

QStringList words(const QString &list)
{
    return list.simplified().split(' ', Qt::SkipEmptyParts);
}

// Adds what \p element declares; false where it breaks a rule.
bool Compatibility::extend(const PlainElement &element, QSet<QString> *ignorable,
                           QSet<QString> *unwrapped) const
{
    bool kept = true;
    for (const PlainElement::Attribute &attribute : element.attributes) {
        if (attribute.space != Namespaces::compatibility()) {
            continue;
        }
        const QStringList list = words(attribute.value);
        for (const QString &word : list) {
            const QString prefix = word.section(':', 0, 0);
            const QString space = element.prefixes.value(prefix);
            kept = kept && !space.isEmpty();
            if (attribute.name == "Ignorable" && !m_understood.contains(space)) {
                ignorable->insert(space);
            } else if (attribute.name == "ProcessContent") {
                unwrapped->insert(space + ' ' + word.section(':', 1));
            } else if (attribute.name == "MustUnderstand") {
                kept = kept && m_understood.contains(space);
            }
        }
    }
    return kept;
}

const PlainElement *Compatibility::choice(const PlainElement &alternatives, bool *unclear) const
{
    const PlainElement *chosen = nullptr;
    bool hasFallback = false;
    for (const PlainElement &child : alternatives.children) {
        const bool known = child.space == Namespaces::compatibility();
        if (known && child.name == "Choice" && !hasFallback) {
            const QStringList required = words(child.attribute({}, "Requires"));
            bool all = true;
            for (const QString &prefix : required) {
                const QString space = child.prefixes.value(prefix);
                *unclear = *unclear || space.isEmpty();
                all = all && m_understood.contains(space);
            }
            *unclear = *unclear || required.isEmpty();
            chosen = chosen == nullptr && all ? &child : chosen;
        } else if (known && child.name == "Fallback" && !hasFallback) {
            hasFallback = true;
            chosen = chosen == nullptr ? &child : chosen;
        } else {
            *unclear = true;
        }
    }
    return chosen;
}

void Compatibility::addTo(PlainElement *target, const PlainElement &child,
                          const QSet<QString> &ignorable, QSet<QString> unwrapped) const
{
    const bool alternatives =
        child.space == Namespaces::compatibility() && child.name == "AlternateContent";
    QSet<QString> passed = ignorable;
    bool unclear = !extend(child, &passed, &unwrapped);
    const PlainElement *wrapper = nullptr;
    if (alternatives) {
        wrapper = choice(child, &unclear);
    } else if (passed.contains(child.space)) {
        wrapper = unwrapped.contains(child.space + ' ' + child.name)
                || unwrapped.contains(child.space + " *")
            ? &child
            : nullptr;
    } else {
        target->children.push_back(cleaned(child, ignorable, unwrapped));
        target->texts.append(QString());
        return;
    }
    target->unclear = target->unclear || unclear;
    if (wrapper == nullptr) {
        return;
    }
    const PlainElement inside = cleaned(*wrapper, passed, unwrapped);
    target->unclear = target->unclear || inside.unclear;
    target->texts.last() += inside.texts.first();
    for (std::size_t i = 0; i < inside.children.size(); ++i) {
        target->children.push_back(inside.children.at(i));
        target->texts.append(inside.texts.at(int(i) + 1));
    }
}

PlainElement Compatibility::cleaned(const PlainElement &element, QSet<QString> ignorable,
                                    QSet<QString> unwrapped) const
{
    PlainElement clean;
    clean.space = element.space;
    clean.name = element.name;
    clean.prefixes = element.prefixes;
    clean.unclear = element.unclear || !extend(element, &ignorable, &unwrapped);
    for (const PlainElement::Attribute &attribute : element.attributes) {
        if (!ignorable.contains(attribute.space)
            && attribute.space != Namespaces::compatibility()) {
            clean.attributes.append(attribute);
        }
    }
    clean.texts = QStringList(element.texts.first());
    for (std::size_t i = 0; i < element.children.size(); ++i) {
        addTo(&clean, element.children.at(i), ignorable, unwrapped);
        clean.texts.last() += element.texts.at(int(i) + 1);
    }
    return clean;
}

} // namespace

QString PlainElement::attribute(const QString &wantedSpace, const QString &wanted) const
{
    for (const Attribute &attribute : attributes) {
        if (attribute.space == wantedSpace && attribute.name == wanted) {
            return attribute.value.isNull() ? QString("") : attribute.value;
        }
    }
    return {};
}

namespace
{

PlainPart newlyParsed(const QByteArray &part)
{
    QXmlStreamReader xml(part);
    const auto root = std::make_shared<PlainElement>();
    root->prefixes.insert("xml", Namespaces::xml());
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            root->hasCompatibility = readInto(root.get(), &xml);
        } else if (token == QXmlStreamReader::DTD) {
            root->unclear = true;
        }
    }
    root->unclear = root->unclear || xml.hasError();
    return root;
}

} // namespace

// Several readers read the same parts.
PlainPart parsedXml(const QByteArray &part)
{
    constexpr int kept = 32;
    static QHash<QByteArray, PlainPart> last;
    const auto known = last.constFind(part);
    if (known != last.constEnd()) {
        return *known;
    }
    if (last.size() >= kept) {
        last.clear();
    }
    return *last.insert(part, newlyParsed(part));
}

PlainPart withoutCompatibility(const PlainPart &root)
{
    if (!root->hasCompatibility) {
        return root;
    }
    const Compatibility compatibility({root->space, Namespaces::transitionalLinks(),
                                       Namespaces::strictLinks(), Namespaces::compatibility()});
    return std::make_shared<PlainElement>(compatibility.cleaned(*root, {}, {}));
}
