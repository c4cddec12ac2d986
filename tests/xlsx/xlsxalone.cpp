// SPDX-License-Identifier: GPL-3.0-or-later
// Links the whole xlsx stage without those above it: the linker finds only what is in it or below.
// Writes a workbook and reads it back.

#include <cstdio>

#include <QTemporaryDir>

#include "xlsx/reading/workbookloader.h"
#include "xlsx/writing/workbookwriter.h"

int main()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("book.xlsx");
    constexpr double number = 1.0 / 3.0;
    WorkbookWriter writer;
    const auto fill = [](int row, RowCells &cells) {
        if (row == 1) {
            cells.text(1, "text");
        } else {
            cells.number(2, number);
        }
    };
    writer.addSheet({"One", {2, fill}});
    if (!writer.save(path)) {
        std::fputs("not saved\n", stderr);
        return 1;
    }
    const LoadedWorkbook loaded = loadWorkbook(path);
    if (!loaded.document || loaded.document->read(1, 1).toString() != "text"
        || loaded.document->read(2, 2).toDouble() != number) {
        std::fputs("not read back\n", stderr);
        return 1;
    }
    return 0;
}
