// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QString>
#include <xlsxdocument.h>

#include "xlsx/reading/loaderror.h"
#include "xlsx/reading/workbooklimits.h"

/// A document of one worksheet, or the reason why the file was refused. The loader reads the cells
/// itself, but hands them on in a QXlsx document, as agreed with its callers.
struct LoadedWorkbook {
    std::unique_ptr<QXlsx::Document> document;
    LoadError error;
};

/// Reads the first visible worksheet of the workbook in the file \p path, or the first worksheet
/// if none is visible, into a document of that one sheet. The document is null exactly when there
/// is an error: a file is loaded as a whole or not at all.
///
/// Its cells give what their contents say: numbers (in column \p textColumn as texts with the
/// digits of the file), true or false, texts, and dates; a formula gives
/// the value stored with it. A file beyond one of the \p limits is too large.
LoadedWorkbook loadWorkbook(const QString &path, int textColumn = 1,
                            const WorkbookLimits &limits = {});
