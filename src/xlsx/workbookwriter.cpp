#include "xlsx/workbookwriter.h"

#include <cmath>

#include <private/qzipreader_p.h>
#include <private/qzipwriter_p.h>
#include <QBuffer>
#include <QLocale>
#include <xlsxcellreference.h>
#include <xlsxrichstring.h>

#include "atomicsave.h"
#include "xmltext.h"

namespace
{

// How many digits the library writes of a number.
constexpr int libraryDigits = 15;

// A numeric cell with such content makes other programs reject the whole file.
QString nonFiniteText(double number)
{
    if (std::isnan(number)) {
        return QStringLiteral("nan");
    }
    return number > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
}

bool isLongerThanLibraryWrites(double number)
{
    constexpr double wholeNumbersEnd = 1e15;
    if (std::abs(number) < wholeNumbersEnd && std::trunc(number) == number) {
        return false;
    }
    return QByteArray::number(number, 'g', libraryDigits).toDouble() != number;
}

// What readers of XML make of a text with carriage returns.
QString withLineFeeds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

// The fewest digits that read back as the same number.
QByteArray exactText(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest).toLatin1();
}

} // namespace

bool WorkbookWriter::addSheet(const QString &name)
{
    const bool added = document.addSheet(name, QXlsx::AbstractSheet::ST_WorkSheet);
    if (added) {
        longNumbers.append(Numbers());
    }
    return added;
}

void WorkbookWriter::writeText(int row, int column, const QString &text)
{
    Q_ASSERT(!longNumbers.isEmpty());
    const QString content = xmlText(withLineFeeds(text).left(largestTextLength));
    // A plain string would be searched for formulas and addresses.
    document.write(row, column, QXlsx::RichString(content));
    longNumbers.last().remove({row, column});
}

void WorkbookWriter::writeNumber(int row, int column, double number)
{
    if (!std::isfinite(number)) {
        writeText(row, column, nonFiniteText(number));
        return;
    }
    Q_ASSERT(!longNumbers.isEmpty());
    const bool written = document.write(row, column, number);
    if (written && isLongerThanLibraryWrites(number)) {
        longNumbers.last().insert({row, column}, number);
    } else {
        longNumbers.last().remove({row, column});
    }
}

QXlsx::Chart *WorkbookWriter::insertChart(int row, int column, const QSize &size)
{
    return document.insertChart(row, column, size);
}

QXlsx::AbstractSheet *WorkbookWriter::sheet(const QString &name) const
{
    return document.sheet(name);
}

QByteArray WorkbookWriter::package() const
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!document.saveAs(&buffer)) {
        return {};
    }
    return withLongNumbers(buffer.data());
}

bool WorkbookWriter::save(const QString &fileName) const
{
    const QByteArray content = package();
    return !content.isEmpty() && saveAtomically(fileName, content);
}

// Puts the digits that the library left out into the finished worksheets.
QByteArray WorkbookWriter::withLongNumbers(QByteArray package) const
{
    QMap<QString, Numbers> numbersByPart;
    for (int i = 0; i < longNumbers.size(); ++i) {
        if (!longNumbers.at(i).isEmpty()) {
            numbersByPart.insert(QStringLiteral("xl/worksheets/sheet%1.xml").arg(i + 1),
                                 longNumbers.at(i));
        }
    }
    if (numbersByPart.isEmpty()) {
        return package;
    }
    QBuffer source(&package);
    source.open(QIODevice::ReadOnly);
    const QZipReader reader(&source);
    QBuffer target;
    target.open(QIODevice::WriteOnly);
    QZipWriter writer(&target);
    const QVector<QZipReader::FileInfo> parts = reader.fileInfoList();
    for (const QZipReader::FileInfo &part : parts) {
        const QByteArray content = reader.fileData(part.filePath);
        writer.addFile(part.filePath, withNumbers(content, numbersByPart.value(part.filePath)));
    }
    writer.close();
    return target.data();
}

// Both the worksheet and the numbers run row by row, so that one pass over the text is enough.
QByteArray WorkbookWriter::withNumbers(const QByteArray &sheetXml, const Numbers &numbers)
{
    static const QByteArray valueStart = "<v>";
    QByteArray result;
    result.reserve(sheetXml.size() + 8 * numbers.size());
    int copied = 0;
    for (auto it = numbers.cbegin(); it != numbers.cend(); ++it) {
        const QXlsx::CellReference position(it.key().first, it.key().second);
        const int cell = sheetXml.indexOf("<c r=\"" + position.toString().toLatin1() + '"', copied);
        const int value = cell < 0 ? -1 : sheetXml.indexOf(valueStart, cell);
        if (value < 0) {
            continue;
        }
        const int text = value + valueStart.size();
        result.append(sheetXml.constData() + copied, text - copied);
        result.append(exactText(it.value()));
        copied = sheetXml.indexOf("</v>", text);
    }
    result.append(sheetXml.constData() + copied, sheetXml.size() - copied);
    return result;
}
