// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <QString>

/// Why a file was not loaded; for a damaged one also where the damage is and what it is.
struct LoadError {
    enum Reason {
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

    /// What the damage is in.
    enum class Part {
        /// The archive as a whole, or its list of parts.
        Archive,
        /// The relationships of the package, which lead to the workbook.
        PackageRelationships,
        Workbook,
        /// The relationships of the workbook, which lead to the parts below.
        WorkbookRelationships,
        CellFormats,
        SharedTexts,
        Worksheet
    };

    enum class Damage {
        None,
        /// The archive cannot be taken apart.
        Archive,
        /// The part is missing.
        Missing,
        /// Two parts could be meant.
        Doubled,
        /// The part cannot be unpacked, or its checksum is wrong.
        Content,
        /// It is not well-formed XML.
        Xml,
        DocumentType,
        /// An element must not stand where it does, or occurs twice.
        Element,
        Attribute,
        /// A number or index that is not one.
        Index,
        /// Relationships with one identifier lead to different parts.
        Identifier,
        /// A sheet is of a kind that nobody knows.
        SheetKind,
        /// A row or a cell has a reference that is none or contradicts its row.
        Reference,
        CellType,
        /// A cell has two contents, or one with two texts.
        TwoContents,
        /// The same cell occurs twice with different contents.
        CellTwice,
        Number,
        TruthValue,
        /// The text of an error is a number.
        ErrorValue,
        /// No shared text has the index that a cell names.
        TextIndex
    };

    LoadError() = default;
    LoadError(Reason why) : reason(why) { }
    LoadError(Damage what) : reason(Damaged), damage(what) { }

    /// This error, found in \p where.
    LoadError in(Part where) &&
    {
        part = where;
        return std::move(*this);
    }
    explicit operator bool() const { return reason != None; }

    Reason reason = None;
    Damage damage = Damage::None;
    Part part = Part::Archive;
    /// The cell in the worksheet, such as "C17"; empty when the damage is in none.
    QString cell;
};
