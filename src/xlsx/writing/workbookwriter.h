// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QByteArray>
#include <QIODevice>
#include <QSize>
#include <QString>
#include <xlsxchart.h>
#include <xlsxdocument.h>

#include "xlsx/writing/sheetwriter.h"

/// A workbook in the making: a package of these parts, in this order.
///
///     xl/workbook.xml, xl/styles.xml, xl/charts/chart1.xml,     QXlsx
///         [Content_Types].xml and others
///     docProps/core.xml                                         without the time of day
///     xl/worksheets/sheet1.xml, sheet2.xml ...                  SheetWriter, if it has cells
///     xl/sharedStrings.xml                                      SharedStringsWriter
///
/// The cells are asked for row by row when the file is written, and none is kept. Whatever they
/// hold, the saved workbook opens in every reader, with every digit of a finite number and every
/// character of a text that a cell can hold. In texts, CR LF and CR become LF, characters that a
/// workbook cannot hold become U+FFFD, and all after FormatLimits::textLength UTF-16 units is cut.
class WorkbookWriter
{
public:
    /// How many series a chart may hold at most.
    static constexpr int largestSeriesCount = 255;

    /// Adds a worksheet with cells at the end; whatever they refer to has to live until the
    /// workbook is saved. Returns false, and adds none, if another sheet has that name.
    bool addSheet(const CellSheet &sheet);

    /// Adds a worksheet without cells, for the charts that are inserted next; false as above.
    bool addChartSheet(const QString &name);

    /// Inserts a chart of \p size, in pixels, with its upper left corner in that cell of the last
    /// sheet for charts; the workbook owns it.
    QXlsx::Chart *insertChart(int row, int column, const QSize &size);

    /// The worksheet named \p name, as the source of a chart's series; null if there is none.
    QXlsx::AbstractSheet *sheet(const QString &name) const;

    /// Names in the properties of the workbook what made it; without this they are empty.
    void setOrigin(const QString &creator, const QString &description);

    /// Writes the workbook to the file \p fileName; if it fails, the file keeps what it held.
    bool save(const QString &fileName) const;

private:
    /// The cells of a worksheet, and its number among all of them, from 1.
    struct Cells {
        int number;
        SheetRows rows;
    };

    bool addWorksheet(const QString &name);
    QByteArray properties() const;
    QByteArray packageWithoutCells() const;
    bool write(const QByteArray &packageWithoutCells, QIODevice &target) const;

    QXlsx::Document document;
    std::vector<Cells> cellSheets;
    QByteArray origin;
};
