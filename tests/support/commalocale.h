// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The name of a locale with a decimal comma.
extern const char *const commaLocale;

/// Makes that locale in \p folder, which LOCPATH must name for it to be found. False if the
/// system has no description of it.
bool makeCommaLocale(const QString &folder);
