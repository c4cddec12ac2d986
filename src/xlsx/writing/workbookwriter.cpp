// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/writing/workbookwriter.h"

#include <QBuffer>
#include <xlsxrichstring.h>

#include "base/atomicsave.h"
#include "base/xmltext.h"
#include "xlsx/writing/sharedstringswriter.h"
#include "xlsx/writing/zipwriter.h"

namespace
{

// Parts that QXlsx makes as well.
constexpr const char *stringsPart = "xl/sharedStrings.xml";
constexpr const char *propertiesPart = "docProps/core.xml";

QByteArray property(const QByteArray &name, const QString &text)
{
    return "<dc:" + name + '>' + xmlText(text).toHtmlEscaped().toUtf8() + "</dc:" + name + '>';
}

QByteArray sheetPart(int number)
{
    return "xl/worksheets/sheet" + QByteArray::number(number) + ".xml";
}

} // namespace

bool WorkbookWriter::addWorksheet(const QString &name)
{
    return document.addSheet(name, QXlsx::AbstractSheet::ST_WorkSheet);
}

bool WorkbookWriter::addSheet(const CellSheet &sheet)
{
    if (!addWorksheet(sheet.name)) {
        return false;
    }
    if (cellSheets.empty()) {
        // Without any text QXlsx leaves out the part with the texts.
        document.write(1, 1, QXlsx::RichString(sheet.name));
    }
    cellSheets.push_back({int(document.sheetNames().size()), sheet.rows});
    return true;
}

bool WorkbookWriter::addChartSheet(const QString &name)
{
    return addWorksheet(name);
}

QXlsx::Chart *WorkbookWriter::insertChart(int row, int column, const QSize &size)
{
    return document.insertChart(row, column, size);
}

QXlsx::AbstractSheet *WorkbookWriter::sheet(const QString &name) const
{
    return document.sheet(name);
}

void WorkbookWriter::setOrigin(const QString &creator, const QString &description)
{
    origin = property("creator", creator) + property("description", description);
}

// The library would put the time of day there.
QByteArray WorkbookWriter::properties() const
{
    return R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><cp:coreProperties)"
           R"( xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties")"
           R"( xmlns:dc="http://purl.org/dc/elements/1.1/">)"
        + origin + "</cp:coreProperties>";
}

bool WorkbookWriter::save(const QString &fileName) const
{
    const QByteArray package = packageWithoutCells();
    return !package.isEmpty()
        && saveAtomically(fileName, [&](QIODevice &device) { return write(package, device); });
}

QByteArray WorkbookWriter::packageWithoutCells() const
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return document.saveAs(&buffer) ? buffer.data() : QByteArray();
}

bool WorkbookWriter::write(const QByteArray &packageWithoutCells, QIODevice &target) const
{
    QSet<QByteArray> own = {stringsPart, propertiesPart};
    for (const Cells &sheet : cellSheets) {
        own.insert(sheetPart(sheet.number));
    }
    ZipWriter zip;
    if (!zip.addPartsOf(packageWithoutCells, own)) {
        return false;
    }
    zip.add(propertiesPart, properties());
    SharedStringsWriter strings;
    std::vector<SheetWriter> writers;
    writers.reserve(cellSheets.size());
    for (const Cells &sheet : cellSheets) {
        SheetWriter &writer = writers.emplace_back(sheet.rows, strings);
        zip.add(sheetPart(sheet.number), writer.size(),
                [&writer](QByteArray *xml) { return writer.next(xml); });
    }
    if (!cellSheets.empty()) {
        zip.add(stringsPart, strings.size(),
                [&strings](QByteArray *xml) { return strings.next(xml); });
    }
    return zip.write(target);
}
