// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Why a file was not loaded.
enum class LoadError {
    /// It was loaded.
    None,
    /// It is missing, unreadable or no regular file, or reading it failed.
    CannotBeRead,
    /// Its content is no spreadsheet of the kind that is read here.
    NotAWorkbook,
    /// It is a workbook of the old binary kind (.xls).
    OldFormat,
    /// It is encrypted, so that reading it takes a password.
    PasswordProtected,
    /// It is a workbook, but a part of it is missing, broken or contradicts another one.
    Damaged,
    /// It has no worksheet: no sheet at all, or only charts, macros and dialogs.
    NoWorksheet,
    /// It is beyond one of the WorkbookLimits.
    TooLarge
};
