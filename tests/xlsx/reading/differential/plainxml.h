// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

/// An element of a part as it was read, with all that it holds.
struct PlainElement {
    struct Attribute {
        QString space;
        QString name;
        QString value;
    };

    QString space;
    QString name;
    QVector<Attribute> attributes;
    /// What the prefixes mean here.
    QHash<QString, QString> prefixes;
    std::vector<PlainElement> children;
    /// Its characters in pieces: one before each child, and one after the last.
    QStringList texts = {QString()};
    /// Nobody knows what is meant here.
    bool unclear = false;
    /// There is markup for compatibility in it; set for the first element only.
    bool hasCompatibility = false;

    /// The attribute of that namespace and name; null without one.
    QString attribute(const QString &wantedSpace, const QString &wanted) const;
};

using PlainPart = std::shared_ptr<const PlainElement>;

/// The first element of \p part. Its `unclear` is set for what is not well-formed.
PlainPart parsedXml(const QByteArray &part);

/// \p root as one has to take it who understands its namespace and those of links: without what
/// is ignorable, and with one of several alternatives. Elements where the rules of the markup for
/// compatibility are broken become unclear.
PlainPart withoutCompatibility(const PlainPart &root);
