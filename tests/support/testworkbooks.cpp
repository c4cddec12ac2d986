// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/testworkbooks.h"

#include <private/qzipwriter_p.h>
#include <QFile>
#include <xlsxcellreference.h>
#include <xlsxdocument.h>

#include "xlsx/reading/zippackage.h"

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

Saved::Saved(const QString &path) : m_document(std::make_unique<QXlsx::Document>(path)) { }

Saved::~Saved() = default;

QString Saved::cell(const QString &place) const
{
    return lineLike(place + ": ?").mid(place.size() + 2);
}

QString Saved::lineLike(const QString &line) const
{
    const QString place = line.section(": ", 0, 0);
    const QString sheet = place.section(' ', 0, -2);
    const QXlsx::CellReference first(place.section(' ', -1));
    if (!first.isValid() || !m_document->selectSheet(sheet)) {
        qFatal("no cell %s", qPrintable(place));
    }
    QStringList cells;
    for (int i = 0; i <= line.section(": ", 1).count(' '); ++i) {
        const QXlsx::CellReference cell(first.row(), first.column() + i);
        cells << (m_document->cellAt(cell) ? m_document->read(cell).toString() : "-");
    }
    return place + ": " + cells.join(' ');
}

QByteArray part(const QString &path, const QByteArray &name)
{
    QFile file(path);
    ZipPackage package;
    if (!file.open(QIODevice::ReadOnly) || package.open(&file)) {
        return "no archive";
    }
    ZipPart part(&package, name, 1 << 24);
    QByteArray content;
    QByteArray piece(1 << 16, '\0');
    while (const int size = part.read(piece.data(), int(piece.size()))) {
        content += piece.left(size);
    }
    return part.error() ? QByteArray(part.error().what) : content;
}

} // namespace TestWorkbooks
