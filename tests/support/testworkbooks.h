// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

/// Workbooks for the tests.
namespace TestWorkbooks
{

/// One row of cells, from column 1 on; an invalid variant leaves its cell out.
using Row = QVector<QVariant>;

/// Saves \p rows below a header row as the workbook \p path, through QXlsx.
void save(const QString &path, const QVector<Row> &rows);

/// Writes the parts as a package into \p path: names and contents.
void savePackage(const QString &path, const QVector<QPair<QString, QByteArray>> &parts);

} // namespace TestWorkbooks
