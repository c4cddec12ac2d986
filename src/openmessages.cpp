// SPDX-License-Identifier: GPL-3.0-or-later
#include "openmessages.h"

#include <array>
#include <cstddef>

#include <QCoreApplication>
#include <QStringList>

#include "base/xmltext.h"
#include "workbooks/patientreader.h"

namespace
{

// In the order of LoadError::Reason.
constexpr std::array reasons = {
    "",
    QT_TRANSLATE_NOOP("MainWindow", "This file cannot be read."),
    QT_TRANSLATE_NOOP("MainWindow", "This file is not a workbook."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "This is a workbook of the old kind (.xls). Save it as .xlsx with a "
                      "spreadsheet program and open that file."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "This workbook is protected by a password. Save it without "
                      "one and open that file."),
    QT_TRANSLATE_NOOP("MainWindow", "This workbook is damaged (%1)."),
    QT_TRANSLATE_NOOP("MainWindow", "This workbook has no worksheet."),
    QT_TRANSLATE_NOOP("MainWindow", "This workbook is too large."),
};
static_assert(reasons.size() == std::size_t(LoadError::TooLarge) + 1,
              "a reason lacks its sentence");

QString translated(const char *text)
{
    return QCoreApplication::translate("MainWindow", text);
}

QString damageText(const LoadError &error)
{
    const QString part = translated(error.part);
    const QString damage = translated(error.what);
    return error.cell.isEmpty()
        ? translated(QT_TRANSLATE_NOOP("MainWindow", "%1: %2")).arg(part, damage)
        : translated(QT_TRANSLATE_NOOP("MainWindow", "%1, cell %2: %3"))
              .arg(part, error.cell, damage);
}

// Longer lists and identifiers would push the button of a message off the screen.
constexpr int mostNamedPatients = 10;
constexpr int longestNamedId = 60;

QString withNothingOpened(const QString &reason)
{
    return reason + QLatin1Char(' ')
        + translated(QT_TRANSLATE_NOOP("MainWindow", "Nothing was opened."));
}

QString shortened(const QString &id)
{
    const QString line = id.simplified();
    return line.size() <= longestNamedId ? line
                                         : wholeCharacters(line, longestNamedId) + QChar(0x2026);
}

QString noPatientsText()
{
    return withNothingOpened(translated(QT_TRANSLATE_NOOP(
        "MainWindow", "This workbook has no patients: column 1 of row 2 is empty.")));
}

// In the order of RowEnd::Kind, with the cell as %1 and its content as %2.
constexpr std::array rowEnds = {
    QT_TRANSLATE_NOOP("MainWindow", "%1 is empty"),
    QT_TRANSLATE_NOOP("MainWindow", "%1 is 0"),
    QT_TRANSLATE_NOOP("MainWindow", "%1 is FALSE"),
    QT_TRANSLATE_NOOP("MainWindow", "%1 is a date or a time"),
    QT_TRANSLATE_NOOP("MainWindow", "%1 is the error %2"),
    QT_TRANSLATE_NOOP("MainWindow", "%1 \"%2\" is not a number"),
};
static_assert(rowEnds.size() == std::size_t(RowEnd::Text) + 1, "a kind of cell lacks its text");

QString rowEndText(const RowEnd &end)
{
    const QString text = translated(rowEnds.at(std::size_t(end.kind)));
    return end.text.isEmpty() ? text.arg(end.cell) : text.arg(end.cell, shortened(end.text));
}

QString shortRowText(const PatientRecord &patient, const ShortRow &row)
{
    return translated(QT_TRANSLATE_NOOP("MainWindow", "Row %1: %2 (%3)"))
        .arg(QString::number(workbookRow(row.patient)), shortened(patient.id), rowEndText(row.end));
}

QString tooFewValuesText(const QVector<PatientRecord> &patients, const QVector<ShortRow> &tooShort)
{
    const QString reason =
        translated(QT_TRANSLATE_NOOP("MainWindow", "Every patient needs at least two values."));
    QStringList lines = {withNothingOpened(reason) + QLatin1Char(' ')
                         + translated(QT_TRANSLATE_NOOP("MainWindow", "These rows have fewer:"))};
    for (const ShortRow &row : tooShort.mid(0, mostNamedPatients)) {
        lines << shortRowText(patients.at(row.patient), row);
    }
    if (tooShort.size() > mostNamedPatients) {
        lines << translated(QT_TRANSLATE_NOOP("MainWindow", "and %1 more"))
                     .arg(tooShort.size() - mostNamedPatients);
    }
    if (tooShort.size() > patients.size() / 2) {
        lines << translated(QT_TRANSLATE_NOOP(
            "MainWindow",
            "Each row must be one patient: the identifier in column A, the values from column B "
            "on."));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace

QString refusalText(const LoadError &error)
{
    const QString text = translated(reasons.at(std::size_t(error.reason)));
    return withNothingOpened(error.reason == LoadError::Damaged ? text.arg(damageText(error))
                                                                : text);
}

QString whyNotOpened(const LoadedPatients &file)
{
    if (file.error) {
        return refusalText(file.error);
    }
    if (file.patients.isEmpty()) {
        return noPatientsText();
    }
    return file.shortRows.isEmpty() ? QString() : tooFewValuesText(file.patients, file.shortRows);
}
