// Links the layer of the .xlsx packages whole and alone: what is not in it or below it is not found
// by the linker. Writes a workbook and reads it back.

#include <cstdio>

#include <QTemporaryDir>

#include "xlsx/workbookloader.h"
#include "xlsx/workbookwriter.h"

int main()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("book.xlsx");
    constexpr double number = 1.0 / 3.0;
    WorkbookWriter writer;
    writer.addSheet("One");
    writer.writeText(1, 1, "text");
    writer.writeNumber(2, 2, number);
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
