// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

/// What a workbook has to hold, cell by cell, and how a file differs from that.
namespace ExpectedSheets
{

/// Texts (QString) and numbers (double) by row and column, counted from 1.
using Cells = QMap<QPair<int, int>, QVariant>;

struct Sheet {
    QString name;
    Cells cells;
    /// Ranges of the chart's series; empty for a sheet without a chart.
    QStringList series;
};

using Book = QVector<Sheet>;

/// Puts \p value into a cell: a text or a number.
void put(Cells &cells, int row, int column, const QString &value);
void put(Cells &cells, int row, int column, double value);

/// What is wrong with the workbook in the file \p path, as QXlsx and openpyxl read it: sheets,
/// their order, the content and type of each cell, cells too many, formats, formulas, and the
/// charts: their place, their size, their series, and that they carry no texts. At most 20 lines;
/// empty when nothing is wrong. On Windows, which has no openpyxl here, QXlsx alone looks, and at
/// no chart.
QString differences(const QString &path, const Book &book);

/// The same as one program alone reads it: "openpyxl", or, for the cells only, "ssconvert" of
/// Gnumeric or "soffice" of LibreOffice.
QString differencesIn(const QString &program, const QString &path, const Book &book);

} // namespace ExpectedSheets
