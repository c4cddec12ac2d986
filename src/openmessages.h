// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct LoadError;
struct LoadedPatients;

/// What the window says about a file that was not loaded because of \p error, in the language of
/// the user. Of a damaged workbook it names the part, the cell and the damage, as in "worksheet,
/// cell C17: this is not a number".
QString refusalText(const LoadError &error);

/// Why the window does not open \p file, in the language of the user: it was not loaded, it has no
/// patients, or some have too few values. The first ten of those are named by their workbook rows,
/// with the cell that ended each row and its content. Empty if the file can be opened.
QString whyNotOpened(const LoadedPatients &file);
