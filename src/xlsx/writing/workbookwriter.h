// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QByteArray>
#include <QIODevice>
#include <QSize>
#include <QString>
#include <xlsxchart.h>
#include <xlsxdocument.h>

#include "xlsx/formatlimits.h"
#include "xlsx/writing/sheetwriter.h"

/// A workbook in the making. The library makes what stands around the cells; the cells themselves
/// are asked for row by row when the file is written, and none is kept.
///
/// Whatever the cells are given, the saved workbook opens in every reader, with every digit of a
/// finite number and every character of a text that a cell can hold. In texts, line ends of CR LF
/// and of CR become LF, characters that a workbook cannot hold U+FFFD, and they end after
/// largestTextLength UTF-16 units.
class WorkbookWriter
{
public:
    /// What a cell and a chart may hold at most.
    static constexpr int largestTextLength = FormatLimits::textLength;
    static constexpr int largestSeriesCount = 255;

    /// Adds a worksheet with cells at the end; whatever they refer to has to last until the
    /// workbook is saved. A name that another sheet has adds none, and the result is false.
    bool addSheet(const CellSheet &sheet);

    /// Adds a worksheet without cells, to which the charts that follow go. The same holds for its
    /// name.
    bool addChartSheet(const QString &name);

    /// A chart with its upper left corner in a cell of the sheet for charts that was added last; it
    /// belongs to the workbook. \p size in pixels.
    QXlsx::Chart *insertChart(int row, int column, const QSize &size);

    /// The worksheet with this name, as the source of a chart's series; null if there is none.
    QXlsx::AbstractSheet *sheet(const QString &name) const;

    /// Writes the workbook to the file \p fileName; a failure leaves what was there before.
    bool save(const QString &fileName) const;

private:
    /// The cells of a worksheet, and where it stands among all of them, from 1.
    struct Cells {
        int number;
        SheetRows rows;
    };

    bool addWorksheet(const QString &name);
    QByteArray packageWithoutCells() const;
    bool write(const QByteArray &packageWithoutCells, QIODevice &target) const;

    QXlsx::Document document;
    std::vector<Cells> cellSheets;
};
