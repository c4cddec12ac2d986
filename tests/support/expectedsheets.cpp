// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/expectedsheets.h"

#include <cmath>
#include <memory>

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
    return value.userType() == QMetaType::QString ? '"' + value.toString() + '"'
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
    if (a.userType() != b.userType()) {
        return false;
    }
    return a.userType() == QMetaType::QString ? a.toString() == b.toString()
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
            found.append(place + "unexpected " + described(actual.value(at)));
        } else if (!same(actual.value(at), expected.cells.value(at))) {
            found.append(place + described(actual.value(at)) + " instead of "
                         + described(expected.cells.value(at)));
        }
    }
}

QStringList differencesInQXlsx(const QString &path, const Book &book)
{
    QXlsx::Document document(path);
    QStringList names;
    for (const Sheet &sheet : book) {
        names.append(sheet.name);
    }
    if (document.sheetNames() != names) {
        return {"sheets: " + document.sheetNames().join(", ")};
    }
    QStringList found;
    for (const Sheet &expected : book) {
        const auto *sheet = dynamic_cast<QXlsx::Worksheet *>(document.sheet(expected.name));
        if (!sheet) {
            return {expected.name + " is no worksheet"};
        }
        compare(expected, cellsOf(*sheet), found);
    }
    return found;
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

// Writes what the workbook in the file \p path must hold into a file beside it, and returns the
// name of that file; empty if it cannot be written.
QString expectationFor(const QString &path, const Book &book)
{
    QFile file(path + ".json");
    const QByteArray json = asJson(book);
    return file.open(QIODevice::WriteOnly) && file.write(json) == json.size() ? file.fileName()
                                                                              : QString();
}

#ifdef Q_OS_WIN
constexpr bool hasOtherReader = false;
#else
constexpr bool hasOtherReader = true;
#endif
constexpr int longestAnswer = 300000; // milliseconds

// The script that reads with openpyxl, started only once, because starting takes longer than
// reading.
class OtherReader
{
public:
    OtherReader()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start("/usr/bin/python3", {SOURCE_FOLDER "/tests/support/readback.py"});
    }
    Q_DISABLE_COPY_MOVE(OtherReader)

    ~OtherReader()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    QString complaint(const QString &workbook, const QString &expectation)
    {
        const QJsonArray question = {workbook, expectation};
        m_process.write(QJsonDocument(question).toJson(QJsonDocument::Compact) + '\n');
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(longestAnswer)) {
                return "the other reader does not answer: " + m_process.errorString();
            }
        }
        const QJsonDocument answer = QJsonDocument::fromJson(m_process.readLine());
        if (!answer.isArray()) {
            return "the other reader gives no list";
        }
        QStringList lines;
        for (const QVariant &line : answer.array().toVariantList()) {
            lines.append(line.toString());
        }
        return lines.mid(0, mostLines).join('\n');
    }

private:
    QProcess m_process;
};

// Ends with the application, because only with one can a process be waited for.
OtherReader &otherReader()
{
    static std::unique_ptr<OtherReader> reader;
    if (!reader) {
        reader = std::make_unique<OtherReader>();
        qAddPostRoutine([] { reader.reset(); });
    }
    return *reader;
}

// What the script that runs a program says about the workbook; empty when it says "ok".
QString complaintOf(const QString &program, const QString &path, const QString &expectation)
{
    QProcess reader;
    reader.setProcessChannelMode(QProcess::MergedChannels);
    reader.start("/usr/bin/python3",
                 {SOURCE_FOLDER "/tests/support/readconverted.py", program, path, expectation});
    if (!reader.waitForFinished(longestAnswer)) {
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
    const QStringList found = differencesInQXlsx(path, book);
    if (!found.isEmpty() || !hasOtherReader) {
        return found.mid(0, mostLines).join('\n');
    }
    return differencesIn("openpyxl", path, book);
}

QString differencesIn(const QString &program, const QString &path, const Book &book)
{
    const QString expectation = expectationFor(path, book);
    return program == "openpyxl" ? otherReader().complaint(path, expectation)
                                 : complaintOf(program, path, expectation);
}

} // namespace ExpectedSheets
