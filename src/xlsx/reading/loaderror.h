// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <QString>

/// Why a file was not loaded; for a damaged one also where the damage is and what it is.
struct LoadError {
    enum Reason {
        /// It was loaded.
        None,
        /// It is missing, unreadable or not a regular file, or reading it failed.
        CannotBeRead,
        /// Its content is not a spreadsheet of the kind that is read here.
        NotAWorkbook,
        /// It is a workbook in the old binary format (.xls).
        OldFormat,
        /// It is encrypted: reading it needs a password.
        PasswordProtected,
        /// It is a workbook, but a part of it is missing, broken or contradicts another one.
        Damaged,
        /// It has no worksheet: no sheet at all, or only charts, macros and dialogs.
        NoWorksheet,
        /// It is beyond one of the WorkbookLimits.
        TooLarge
    };

    LoadError() = default;
    LoadError(Reason why) : reason(why) { }
    /// Damage that \p words tell, which stay in memory and are translated in the context
    /// "MainWindow", as those of the part are.
    LoadError(const char *words) : reason(Damaged), what(words) { }

    /// Words for what must be there once only, and for what should be a number.
    static constexpr const char *doubled = QT_TRANSLATE_NOOP("MainWindow", "it occurs twice");
    static constexpr const char *noIndex =
        QT_TRANSLATE_NOOP("MainWindow", "an index is not a number");

    /// This error, found in the part \p words.
    LoadError in(const char *words) &&
    {
        part = words;
        return std::move(*this);
    }
    explicit operator bool() const { return reason != None; }

    Reason reason = None;
    /// What is damaged, such as "worksheet", and how: "it is missing".
    const char *part = "";
    const char *what = "";
    /// The cell in the worksheet, such as "C17"; empty if the damage is in none.
    QString cell;
};
