// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>

#include "xlsx/reading/differential/dicedworkbook.h"

/// A kind of change of a workbook.
struct Change {
    const char *name;
    /// Makes the change somewhere; false where there is no place for it.
    bool (*make)(DicedWorkbook *workbook, Dice *dice);
};

/// Changes after which a workbook holds the same cells and must be read.
const QVector<Change> &neutralChanges();

/// Changes after which a workbook may hold others, or none that are clear: of elements and the
/// markup for compatibility, ...
const QVector<Change> &elementChanges();
/// of attributes and texts, ...
const QVector<Change> &contentChanges();
/// and of relationships, parts and the archive.
const QVector<Change> &packageChanges();
