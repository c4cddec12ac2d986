// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/testworkbooks.h"

#include <private/qzipwriter_p.h>
#include <xlsxdocument.h>

namespace TestWorkbooks
{

void save(const QString &path, const QVector<Row> &rows)
{
    QXlsx::Document document;
    document.write(1, 1, "Patient");
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows.at(row).size(); ++column) {
            if (rows.at(row).at(column).isValid()) {
                document.write(row + 2, column + 1, rows.at(row).at(column));
            }
        }
    }
    if (!document.saveAs(path)) {
        qFatal("cannot save %s", qPrintable(path));
    }
}

void savePackage(const QString &path, const QVector<QPair<QString, QByteArray>> &parts)
{
    QZipWriter zip(path);
    for (const auto &[name, content] : parts) {
        zip.addFile(name, content);
    }
    zip.close();
    if (zip.status() != QZipWriter::NoError) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

} // namespace TestWorkbooks
