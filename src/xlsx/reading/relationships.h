// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <QByteArray>
#include <QHash>
#include <QVector>

#include "xlsx/reading/xmlcursor.h"

/// What one part of a package, or the package itself, refers to:
///
///     <Relationships>
///       <Relationship Id="rId1" Type="…/worksheet" Target="worksheets/sheet1.xml"/>
///       <Relationship Id="rId2" Type="…/styles" Target="/xl/styles.xml"/>
///       <Relationship Id="rId3" Type="…/hyperlink" Target="http://x/" TargetMode="External"/>
///     </Relationships>
class Relationships
{
public:
    /// Kinds of parts that matter here.
    enum class Kind { Workbook, Worksheet, OtherSheet, Styles, SharedStrings, Other };

    /// What a relationship leads to.
    struct Target {
        Kind kind = Kind::Other;
        /// Name of the part in the package, without a slash in front; empty for whatever is no part
        /// of the package.
        QByteArray part;
    };

    /// For the relationships of the part \p source; of the package itself if it is empty.
    explicit Relationships(QByteArray source = {}) : m_source(std::move(source)) { }

    /// Name of the part that holds them.
    QByteArray part() const;

    void read(XmlCursor *xml);

    /// The target with the identifier \p id; without one, another kind and no part.
    Target target(const QByteArray &id) const { return m_targets.value(id); }
    /// The parts of the kind \p kind, each once.
    QVector<QByteArray> parts(Kind kind) const;

private:
    void readRelationship(XmlCursor *xml);

    QByteArray m_source;
    QHash<QByteArray, Target> m_targets;
};
