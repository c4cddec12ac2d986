// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>

#include <QString>
#include <QVector>

#include "xlsx/reading/loaderror.h"

/// A file that is made to take time and memory.
struct HostileWorkbook {
    const char *name;
    /// Writes it into the file of that path.
    std::function<void(const QString &)> save;
    /// What the reader says; nothing if any reason will do, but one there must be.
    std::optional<LoadError::Reason> expected;
};

/// The worst files that we can think of for the limits of reading, each just below one or just
/// beyond. All that is large in them is divided by \p shrink.
QVector<HostileWorkbook> hostileWorkbooks(int shrink = 1);
