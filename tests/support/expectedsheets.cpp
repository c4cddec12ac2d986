// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/expectedsheets.h"

#include <cmath>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>
#include <xlsxcell.h>
#include <xlsxdocument.h>
#include <xlsxworksheet.h>

namespace ExpectedSheets
{

namespace
{

constexpr int mostLines = 20;

QString described(const QVariant &value)
{
    return value.type() == QVariant::String ? '"' + value.toString() + '"'
                                            : QString::number(value.toDouble(), 'g', 17);
}

// The content of a cell that is a plain text or a plain number, otherwise what it is instead.
QVariant contentOf(const QXlsx::Cell &cell)
{
    if (cell.hasFormula()) {
        return "<formula>";
    }
    if (!cell.format().isEmpty() && cell.format().xfIndex() != 0) {
        return "<formatted>";
    }
    switch (cell.cellType()) {
    case QXlsx::Cell::SharedStringType:
        return cell.value().toString();
    case QXlsx::Cell::NumberType:
        return cell.value().toDouble();
    default:
        return QString("<type %1>").arg(cell.cellType());
    }
}

bool same(const QVariant &a, const QVariant &b)
{
    if (a.type() != b.type()) {
        return false;
    }
    return a.type() == QVariant::String ? a.toString() == b.toString()
                                        : a.toDouble() == b.toDouble();
}

Cells cellsOf(const QXlsx::Worksheet &sheet)
{
    Cells cells;
    const QXlsx::CellRange all = sheet.dimension();
    for (int row = all.firstRow(); row <= all.lastRow(); ++row) {
        for (int column = all.firstColumn(); column <= all.lastColumn(); ++column) {
            if (const QXlsx::Cell *cell = sheet.cellAt(row, column)) {
                cells.insert({row, column}, contentOf(*cell));
            }
        }
    }
    return cells;
}

void compare(const Sheet &expected, const Cells &actual, QStringList &found)
{
    Cells all = actual;
    all.insert(expected.cells);
    const QList<QPair<int, int>> positions = all.keys();
    for (const QPair<int, int> &at : positions) {
        const QString place =
            QString("%1 (%2, %3): ").arg(expected.name).arg(at.first).arg(at.second);
        if (!actual.contains(at)) {
            found.append(place + "missing " + described(expected.cells.value(at)));
        } else if (!expected.cells.contains(at)) {
            found.append(place + "too much " + described(actual.value(at)));
        } else if (!same(actual.value(at), expected.cells.value(at))) {
            found.append(place + described(actual.value(at)) + " instead of "
                         + described(expected.cells.value(at)));
        }
    }
}

QByteArray asJson(const Book &book)
{
    QJsonArray sheets;
    for (const Sheet &sheet : book) {
        QJsonArray cells;
        for (auto it = sheet.cells.cbegin(); it != sheet.cells.cend(); ++it) {
            cells.append(
                QJsonArray{it.key().first, it.key().second, QJsonValue::fromVariant(it.value())});
        }
        sheets.append(QJsonObject{{"name", sheet.name},
                                  {"cells", cells},
                                  {"series", QJsonArray::fromStringList(sheet.series)}});
    }
    return QJsonDocument(sheets).toJson(QJsonDocument::Compact);
}

// What the script beside this file says of the workbook, called with it and the expectation behind
// \p arguments; empty when it says "ok".
QString complaintOf(const QString &script, const QStringList &arguments, const QString &path,
                    const Book &book)
{
    const QString found = QFINDTESTDATA(script);
    QFile expectation(path + ".json");
    if (found.isEmpty() || !expectation.open(QIODevice::WriteOnly)) {
        return "no script or no place for the expectation";
    }
    expectation.write(asJson(book));
    expectation.close();
    QProcess reader;
    reader.setProcessChannelMode(QProcess::MergedChannels);
    reader.start("/usr/bin/python3",
                 QStringList{found} + arguments + QStringList{path, expectation.fileName()});
    if (!reader.waitForFinished(300000)) {
        return "the other reader does not run: " + reader.errorString();
    }
    const QString output = QString::fromUtf8(reader.readAll());
    const bool content = reader.exitStatus() == QProcess::NormalExit && reader.exitCode() == 0;
    if (content && output.trimmed() == "ok") {
        return {};
    }
    return output.section('\n', 0, mostLines - 1)
        + QString("\nexit code %1").arg(reader.exitCode());
}

} // namespace

void put(Cells &cells, int row, int column, const QString &value)
{
    cells.insert({row, column}, value);
}

void put(Cells &cells, int row, int column, double value)
{
    cells.insert({row, column}, value);
}

QString differences(const QString &path, const Book &book)
{
    QXlsx::Document document(path);
    QStringList names;
    for (const Sheet &sheet : book) {
        names.append(sheet.name);
    }
    if (document.sheetNames() != names) {
        return "sheets: " + document.sheetNames().join(", ");
    }
    QStringList found;
    for (const Sheet &expected : book) {
        const auto *sheet = dynamic_cast<QXlsx::Worksheet *>(document.sheet(expected.name));
        if (!sheet) {
            return expected.name + " is no worksheet";
        }
        compare(expected, cellsOf(*sheet), found);
    }
    return found.mid(0, mostLines).join('\n');
}

QString differencesElsewhere(const QString &path, const Book &book)
{
#ifdef Q_OS_WIN
    Q_UNUSED(path)
    Q_UNUSED(book)
    return {};
#else
    return complaintOf("readback.py", {}, path, book);
#endif
}

QString differencesIn(const QString &program, const QString &path, const Book &book)
{
    return complaintOf("readconverted.py", {program}, path, book);
}

} // namespace ExpectedSheets
