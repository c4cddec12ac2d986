// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/xmlpiece.h"

#include <algorithm>

#include "xlsx/reading/differential/namespaces.h"

namespace
{

constexpr ushort lastOfLatin1 = 0xff;

using Bindings = QVector<QPair<QString, QString>>;

// What the prefix means after all declarations, the last of which counts.
QString bound(const Bindings &scope, const QString &prefix)
{
    const auto last = std::find_if(scope.rbegin(), scope.rend(), [&prefix](const auto &binding) {
        return binding.first == prefix;
    });
    return last == scope.rend() ? QString() : last->second;
}

void addName(const QString &prefix, const QString &name, QString *out)
{
    if (!prefix.isEmpty()) {
        *out += prefix;
        *out += ':';
    }
    *out += name;
}

class Writer
{
public:
    Writer(const XmlStyle &style, Dice *dice) : m_style(style), m_dice(dice)
    {
        constexpr int usual = 8192;
        m_out.reserve(usual);
        m_attributes.reserve(usual);
    }

    void write(const XmlPiece &piece, Bindings scope, int depth);
    const QString &written() const { return m_out; }

private:
    void writeElement(const XmlPiece &element, Bindings scope, int depth);
    void writeBindings(const Bindings &bindings);
    void writeContent(const XmlPiece &element, const Bindings &scope, int depth);
    void writeText(const QString &text);
    QString prefixFor(const QString &space, bool ofAttribute, Bindings *scope, Bindings *here);
    void addEscaped(const QString &text, bool ofAttribute, QString *out);
    QString reference(uint character) const;
    bool isReference(QChar character, bool ofAttribute);
    QVector<XmlPiece::Attribute> inOrder(const XmlPiece &element);

    const XmlStyle &m_style;
    Dice *m_dice;
    QString m_out;
    QString m_attributes;
    int m_madeUp = 0;
};

void Writer::write(const XmlPiece &piece, Bindings scope, int depth)
{
    switch (piece.kind) {
    case XmlPiece::Element:
        writeElement(piece, std::move(scope), depth);
        break;
    case XmlPiece::Text:
        writeText(piece.text);
        break;
    case XmlPiece::Comment:
        m_out += "<!--" + piece.text + "-->";
        break;
    case XmlPiece::Instruction:
        m_out += "<?" + piece.text + "?>";
        break;
    }
}

void Writer::writeElement(const XmlPiece &element, Bindings scope, int depth)
{
    Bindings here = element.prefixes;
    if (element.space.isEmpty()) {
        here.erase(std::remove_if(here.begin(), here.end(),
                                  [](const auto &binding) { return binding.first.isEmpty(); }),
                   here.end());
    }
    if (!here.isEmpty()) {
        scope += here;
    }
    const QString prefix = prefixFor(element.space, false, &scope, &here);
    const QVector<XmlPiece::Attribute> given = inOrder(element);
    m_attributes.resize(0);
    for (const XmlPiece::Attribute &attribute : given) {
        m_attributes += ' ';
        addName(prefixFor(attribute.space, true, &scope, &here), attribute.name, &m_attributes);
        m_attributes += '=';
        m_attributes += m_style.quote;
        addEscaped(attribute.value, true, &m_attributes);
        m_attributes += m_style.quote;
    }
    m_out += '<';
    addName(prefix, element.name, &m_out);
    writeBindings(here);
    m_out += m_attributes;
    if (element.content.empty()) {
        m_out += "/>";
        return;
    }
    m_out += '>';
    writeContent(element, scope, depth);
    m_out += "</";
    addName(prefix, element.name, &m_out);
    m_out += '>';
}

void Writer::writeBindings(const Bindings &bindings)
{
    for (const auto &[prefix, space] : bindings) {
        m_out += prefix.isEmpty() ? " xmlns" : " xmlns:";
        m_out += prefix;
        m_out += "=\"";
        m_out += space;
        m_out += '"';
    }
}

void Writer::writeContent(const XmlPiece &element, const Bindings &scope, int depth)
{
    const bool indented = m_style.indented
        && std::all_of(element.content.begin(), element.content.end(),
                       [](const XmlPiece &piece) { return piece.kind == XmlPiece::Element; });
    for (const XmlPiece &piece : element.content) {
        m_out += indented ? '\n' + QString(depth + 1, ' ') : QString();
        write(piece, scope, depth + 1);
    }
    m_out += indented ? '\n' + QString(depth, ' ') : QString();
}

void Writer::writeText(const QString &text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [this](QChar character) {
        return character != ']' && character != '\r'
            && (m_style.encoding != XmlStyle::Latin1 || character.unicode() <= lastOfLatin1);
    });
    if (m_style.markedSections && m_dice->chance(60) && plain) {
        int half = m_dice->below(text.size() + 1);
        half -= half < text.size() && text.at(half).isLowSurrogate() ? 1 : 0;
        m_out += "<![CDATA[" + text.left(half) + "]]>";
        addEscaped(text.mid(half), false, &m_out);
    } else {
        addEscaped(text, false, &m_out);
    }
}

QString Writer::prefixFor(const QString &space, bool ofAttribute, Bindings *scope, Bindings *here)
{
    if (space.isEmpty()) {
        if (!ofAttribute && !bound(*scope, {}).isEmpty()) {
            here->append({QString(), QString()});
            scope->append({QString(), QString()});
        }
        return {};
    }
    if (space == Namespaces::xml()) {
        return QStringLiteral("xml");
    }
    for (auto binding = scope->rbegin(); binding != scope->rend(); ++binding) {
        const bool fits = !ofAttribute || !binding->first.isEmpty();
        if (fits && binding->second == space && bound(*scope, binding->first) == space) {
            return binding->first;
        }
    }
    const bool declaresDefault = std::any_of(
        here->begin(), here->end(), [](const auto &binding) { return binding.first.isEmpty(); });
    const bool asDefault = !ofAttribute && !declaresDefault && m_dice->chance(50);
    QString prefix = asDefault ? QString() : "n" + QString::number(++m_madeUp);
    here->append({prefix, space});
    scope->append({prefix, space});
    return prefix;
}

QString Writer::reference(uint character) const
{
    return m_style.quote == '"' ? QStringLiteral("&#%1;").arg(character)
                                : QStringLiteral("&#x%1;").arg(character, 0, 16);
}

bool Writer::isReference(QChar character, bool ofAttribute)
{
    switch (character.unicode()) {
    case '<':
    case '&':
    case '>':
    case '"':
    case '\'':
    case '\r':
        return true;
    case '\n':
    case '\t':
        return ofAttribute;
    default:
        return (m_style.encoding == XmlStyle::Latin1 && character.unicode() > lastOfLatin1)
            || (m_style.characterReferences && m_dice->chance(30));
    }
}

void Writer::addEscaped(const QString &text, bool ofAttribute, QString *out)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        // The second half of a pair belongs to the first, which decides for both.
        if (character.isLowSurrogate() || !isReference(character, ofAttribute)) {
            *out += character;
        } else if (character.isHighSurrogate()) {
            *out += reference(QChar::surrogateToUcs4(character, text.at(++i)));
        } else {
            *out += reference(character.unicode());
        }
    }
}

QVector<XmlPiece::Attribute> Writer::inOrder(const XmlPiece &element)
{
    QVector<XmlPiece::Attribute> attributes = element.attributes;
    for (int i = 1; m_style.shuffledAttributes && i < attributes.size(); ++i) {
        std::swap(attributes[i], attributes[m_dice->below(i + 1)]);
    }
    return attributes;
}

QByteArray encoded(const QString &text, XmlStyle::Encoding encoding)
{
    if (encoding == XmlStyle::Utf8) {
        return text.toUtf8();
    }
    if (encoding == XmlStyle::Latin1) {
        return text.toLatin1();
    }
    QByteArray bytes;
    for (const QChar character : text) {
        const char high = static_cast<char>(character.unicode() >> 8);
        const char low = static_cast<char>(character.unicode() & 0xff);
        bytes.append(encoding == XmlStyle::BigEndian ? high : low);
        bytes.append(encoding == XmlStyle::BigEndian ? low : high);
    }
    return bytes;
}

} // namespace

XmlPiece XmlPiece::other(Kind kind, const QString &text)
{
    XmlPiece piece;
    piece.kind = kind;
    piece.text = text;
    return piece;
}

void XmlPiece::declare(const QString &prefix, const QString &ofSpace)
{
    prefixes.append(qMakePair(prefix, ofSpace));
}

void XmlPiece::give(const QString &attribute, const QString &value, const QString &ofSpace)
{
    attributes.append(Attribute{attribute, value, ofSpace});
}

XmlPiece &XmlPiece::add(const QString &child, const Attributes &given)
{
    XmlPiece piece;
    piece.space = space;
    piece.name = child;
    piece.attributes = given;
    content.push_back(piece);
    return content.back();
}

XmlPiece &XmlPiece::add(const QString &child, const Attributes &given, const QString &characters)
{
    XmlPiece &added = add(child, given);
    added.content.push_back(other(Text, characters));
    return added;
}

XmlPiece::Attribute *XmlPiece::attribute(const QString &wanted)
{
    const auto found =
        std::find_if(attributes.begin(), attributes.end(),
                     [&wanted](const Attribute &attribute) { return attribute.name == wanted; });
    return found == attributes.end() ? nullptr : &*found;
}

QByteArray writeXml(const XmlPiece &root, const XmlStyle &style, Dice *dice)
{
    Writer writer(style, dice);
    writer.write(root, {}, 0);
    static const QVector<QString> names = {"UTF-8", "ISO-8859-1", "UTF-16", "UTF-16"};
    const bool wide = style.encoding >= XmlStyle::LittleEndian;
    QString text;
    if (wide || style.byteOrderMark) {
        text += style.encoding == XmlStyle::Latin1 ? QString() : QString(QChar(0xfeff));
    }
    if (style.declaration || style.encoding == XmlStyle::Latin1 || !style.wrongEncoding.isEmpty()) {
        text += R"(<?xml version="1.0" encoding=")"
            + (style.wrongEncoding.isEmpty() ? names.at(style.encoding) : style.wrongEncoding)
            + "\" standalone=\"yes\"?>\n";
    }
    return encoded(text + writer.written(), style.encoding);
}
