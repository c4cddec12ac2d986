// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "xlsx/reading/differential/archive.h"
#include "xlsx/reading/differential/xmlpiece.h"

/// A small workbook in the manner of one of several writers, with cells that the dice choose. It
/// can be changed piece by piece before it is written.
struct DicedWorkbook {
    enum Role { PackageLinks, Workbook, Links, Sheet, OtherSheet, Texts, Formats, Unread };
    struct Part {
        Role role = Unread;
        QString name;
        XmlPiece root;
        XmlStyle style;
        /// How it stands in the archive: content and name come from above, unless this has a name.
        ArchiveEntry entry;
    };

    explicit DicedWorkbook(Dice *dice);

    /// The part of that role; null without one.
    Part *part(Role role);
    QByteArray bytes(Dice *dice) const;

    /// Whose manner of writing it has.
    const char *manner = nullptr;
    QVector<Part> parts;
    /// The rest of the archive.
    Archive archive;
};
