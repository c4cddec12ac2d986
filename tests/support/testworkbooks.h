// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QString>
#include <QVariant>
#include <QVector>

namespace QXlsx
{
class Document;
}

/// Workbooks for the tests.
namespace TestWorkbooks
{

/// One row of cells, from column 1 on; an invalid variant leaves its cell out.
using Row = QVector<QVariant>;

/// Saves \p rows below a header row in the workbook \p path, through QXlsx.
void save(const QString &path, const QVector<Row> &rows);

/// Writes a package of the parts, names and contents, into \p path.
void savePackage(const QString &path, const QVector<QPair<QString, QByteArray>> &parts);

/// The cells of a saved workbook as texts, read through QXlsx; "-" where there is no cell.
class Saved
{
public:
    explicit Saved(const QString &path);
    ~Saved();
    Q_DISABLE_COPY_MOVE(Saved)

    /// The cell \p place, such as "Median B3".
    QString cell(const QString &place) const;
    /// A line such as "Median B3: 4 - 2", with as many cells of that row as \p line has and what
    /// the workbook holds in them.
    QString lineLike(const QString &line) const;

private:
    std::unique_ptr<QXlsx::Document> m_document;
};

/// The part \p name of the package in the file \p path, or why it cannot be read.
QByteArray part(const QString &path, const QByteArray &name);

} // namespace TestWorkbooks
