// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

#include "support/dice.h"

/// A piece of XML that can be changed before it is written: an element with what it holds, or a
/// text, a comment or a processing instruction.
struct XmlPiece {
    enum Kind { Element, Text, Comment, Instruction };
    struct Attribute {
        QString name;
        QString value;
        QString space;
    };
    using Attributes = QVector<Attribute>;

    Kind kind = Element;
    /// Namespace and name of an element.
    QString space;
    QString name;
    Attributes attributes;
    /// Prefixes and namespaces that the element always declares.
    QVector<QPair<QString, QString>> prefixes;
    std::vector<XmlPiece> content;
    /// The characters of all but an element.
    QString text;

    static XmlPiece other(Kind kind, const QString &text);

    void declare(const QString &prefix, const QString &ofSpace);
    void give(const QString &attribute, const QString &value, const QString &ofSpace = {});
    /// Adds an element of the same namespace, and gives it back.
    XmlPiece &add(const QString &child, const Attributes &given = {});
    /// Adds an element of the same namespace that holds \p characters.
    XmlPiece &add(const QString &child, const Attributes &given, const QString &characters);

    bool isElement(const QString &wanted) const { return kind == Element && name == wanted; }
    /// The attribute \p wanted of any namespace; null without one.
    Attribute *attribute(const QString &wanted);
};

/// How a piece is written, without a change of what it says.
struct XmlStyle {
    enum Encoding { Utf8, Latin1, LittleEndian, BigEndian };

    Encoding encoding = Utf8;
    bool byteOrderMark = false;
    bool declaration = true;
    bool indented = false;
    bool shuffledAttributes = false;
    bool markedSections = false;
    bool characterReferences = false;
    QChar quote = QLatin1Char('"');
    /// Instead of the right one, in the declaration.
    QString wrongEncoding;
};

/// The part with the first element \p root. Prefixes that nothing declares are made up.
QByteArray writeXml(const XmlPiece &root, const XmlStyle &style, Dice *dice);
