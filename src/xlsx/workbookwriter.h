#pragma once

#include <QByteArray>
#include <QMap>
#include <QPair>
#include <QSize>
#include <QString>
#include <QVector>
#include <xlsxchart.h>
#include <xlsxdocument.h>

#include "xlsx/workbooklimits.h"

/// A workbook in the making, filled sheet by sheet. Rows and columns count from 1.
///
/// Whatever the cells are given, the saved workbook opens in every reader, with every digit of a
/// finite number and every character of a text that a cell can hold. What lies beyond the last row
/// or column of a worksheet is left out.
class WorkbookWriter
{
public:
    /// What a worksheet and a chart may hold at most.
    static constexpr int largestColumn = workbookLimits.columns;
    static constexpr int largestTextLength = workbookLimits.textLength;
    static constexpr int largestSeriesCount = 255;

    /// Adds an empty worksheet at the end; all that follows goes to it. A name that another sheet
    /// has adds none, and the result is false. Cells and charts need a sheet to stand on.
    bool addSheet(const QString &name);

    /// Writes \p text as text, whatever it looks like (a formula, an address, a number), with the
    /// blanks at its ends. Line ends of CR LF and of CR become LF, characters that a workbook
    /// cannot hold U+FFFD, and it ends after largestTextLength UTF-16 units.
    void writeText(int row, int column, const QString &text);

    /// Writes \p number to its last digit; what is not finite becomes "nan", "inf" or "-inf".
    void writeNumber(int row, int column, double number);

    /// A chart with its upper left corner in a cell; it belongs to the workbook. \p size in pixels.
    QXlsx::Chart *insertChart(int row, int column, const QSize &size);

    /// The worksheet with this name, as the source of a chart's series; null if there is none.
    QXlsx::AbstractSheet *sheet(const QString &name) const;

    /// Writes the workbook to the file \p fileName; a failure leaves what was there before.
    bool save(const QString &fileName) const;

private:
    /// Numbers of one worksheet by row and column, in the order of the cells in the file.
    using Numbers = QMap<QPair<int, int>, double>;

    /// The whole workbook as the content of a file; empty if it cannot be built.
    QByteArray package() const;
    static QByteArray withNumbers(const QByteArray &sheetXml, const Numbers &numbers);
    QByteArray withLongNumbers(QByteArray package) const;

    QXlsx::Document document;
    QVector<Numbers> longNumbers;
};
