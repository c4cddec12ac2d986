// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "xlsx/reading/differential/archive.h"
#include "xlsx/reading/differential/xmlpiece.h"

/// A small workbook as one of several writers makes it, with the choices that a seed makes for it,
/// which can be changed piece by piece before it is written.
struct DicedWorkbook {
    enum Role { PackageLinks, Workbook, Links, Sheet, OtherSheet, Texts, Formats, Unread };
    struct Part {
        Role role = Unread;
        QString name;
        XmlPiece root;
        XmlStyle style;
        /// Of the entry; name and content come from above, unless it has a name of its own.
        ArchiveEntry entry;
    };

    explicit DicedWorkbook(Dice *dice);

    /// The part of that role; null without one.
    Part *part(Role role);
    /// The namespace of the attributes that lead to parts.
    QString links() const;
    /// The name of the writer's manner.
    const char *manner = nullptr;

    QVector<Part> parts;
    /// The rest of the archive.
    Archive archive;

    QByteArray bytes(Dice *dice) const;
};
