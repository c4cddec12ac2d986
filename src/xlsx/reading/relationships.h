// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QVector>

#include "xlsx/reading/xmlreader.h"

/// What one part of a package, or the package itself, refers to.
class Relationships : public XmlReader
{
public:
    /// Kinds of parts that matter here.
    enum class Kind { Workbook, Worksheet, OtherSheet, Styles, SharedStrings, Other };

    /// What a relationship leads to.
    struct Target {
        Kind kind = Kind::Other;
        /// Name of the part in the package, without a slash in front; empty for an address outside
        /// of the package.
        QByteArray part;
    };

    /// For the relationships of the part \p source; of the package itself when it is empty.
    explicit Relationships(QByteArray source);

    /// Name of the part that holds the relationships of \p source.
    static QByteArray partFor(const QByteArray &source);

    /// The target with the identifier \p id, or null.
    const Target *target(const QByteArray &id) const;
    /// The identifiers of the targets of the kind \p kind.
    QVector<QByteArray> identifiers(Kind kind) const;
    /// The parts of the kind \p kind, each once.
    QVector<QByteArray> parts(Kind kind) const;

private:
    void enter(int node, const XmlAttributes &attributes) override;

    QByteArray m_source;
    QVector<Target> m_targets;
    QHash<QByteArray, Target> m_targetsById;
};
