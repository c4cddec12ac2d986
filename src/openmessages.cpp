// SPDX-License-Identifier: GPL-3.0-or-later
#include "openmessages.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include <QCoreApplication>
#include <QStringList>

#include "analysis/patientanalysis.h"
#include "base/xmltext.h"
#include "workbooks/patientreader.h"

namespace
{

using Reason = LoadError::Reason;
using Part = LoadError::Part;
using Damage = LoadError::Damage;

template<typename Key>
struct Sentence {
    Key key;
    const char *text;
};

constexpr std::array reasons = {
    Sentence<Reason>{LoadError::CannotBeRead,
                     QT_TRANSLATE_NOOP("MainWindow", "This file cannot be read.")},
    Sentence<Reason>{LoadError::NotAWorkbook,
                     QT_TRANSLATE_NOOP("MainWindow", "This file is not a workbook.")},
    Sentence<Reason>{
        LoadError::OldFormat,
        QT_TRANSLATE_NOOP("MainWindow",
                          "This is a workbook of the old kind (.xls). Save it as .xlsx with a "
                          "spreadsheet program and open that file.")},
    Sentence<Reason>{LoadError::PasswordProtected,
                     QT_TRANSLATE_NOOP("MainWindow",
                                       "This workbook is protected by a password. Save it without "
                                       "one and open that file.")},
    Sentence<Reason>{LoadError::Damaged,
                     QT_TRANSLATE_NOOP("MainWindow", "This workbook is damaged (%1).")},
    Sentence<Reason>{LoadError::NoWorksheet,
                     QT_TRANSLATE_NOOP("MainWindow", "This workbook has no worksheet.")},
    Sentence<Reason>{LoadError::TooLarge,
                     QT_TRANSLATE_NOOP("MainWindow", "This workbook is too large.")},
};
static_assert(reasons.size() == std::size_t(LoadError::TooLarge), "a reason lacks its sentence");

constexpr std::array parts = {
    Sentence<Part>{Part::Archive, QT_TRANSLATE_NOOP("MainWindow", "archive")},
    Sentence<Part>{Part::PackageRelationships,
                   QT_TRANSLATE_NOOP("MainWindow", "relationships of the package")},
    Sentence<Part>{Part::Workbook, QT_TRANSLATE_NOOP("MainWindow", "workbook")},
    Sentence<Part>{Part::WorkbookRelationships,
                   QT_TRANSLATE_NOOP("MainWindow", "relationships of the workbook")},
    Sentence<Part>{Part::CellFormats, QT_TRANSLATE_NOOP("MainWindow", "cell formats")},
    Sentence<Part>{Part::SharedTexts, QT_TRANSLATE_NOOP("MainWindow", "shared texts")},
    Sentence<Part>{Part::Worksheet, QT_TRANSLATE_NOOP("MainWindow", "worksheet")},
};
static_assert(parts.size() == std::size_t(Part::Worksheet) + 1, "a part lacks its name");

constexpr std::array damages = {
    Sentence<Damage>{Damage::Archive, QT_TRANSLATE_NOOP("MainWindow", "it cannot be taken apart")},
    Sentence<Damage>{Damage::Missing, QT_TRANSLATE_NOOP("MainWindow", "it is missing")},
    Sentence<Damage>{Damage::Doubled, QT_TRANSLATE_NOOP("MainWindow", "there are two of it")},
    Sentence<Damage>{Damage::Content, QT_TRANSLATE_NOOP("MainWindow", "its bytes are damaged")},
    Sentence<Damage>{Damage::Xml, QT_TRANSLATE_NOOP("MainWindow", "it is not well-formed XML")},
    Sentence<Damage>{Damage::DocumentType,
                     QT_TRANSLATE_NOOP("MainWindow", "it declares a document type")},
    Sentence<Damage>{Damage::Element,
                     QT_TRANSLATE_NOOP("MainWindow", "an element does not belong there")},
    Sentence<Damage>{Damage::Attribute, QT_TRANSLATE_NOOP("MainWindow", "an attribute is unknown")},
    Sentence<Damage>{Damage::Index, QT_TRANSLATE_NOOP("MainWindow", "an index is not a number")},
    Sentence<Damage>{Damage::Identifier,
                     QT_TRANSLATE_NOOP("MainWindow", "two of them have the same name")},
    Sentence<Damage>{Damage::SheetKind, QT_TRANSLATE_NOOP("MainWindow", "its kind is unknown")},
    Sentence<Damage>{
        Damage::Reference,
        QT_TRANSLATE_NOOP("MainWindow", "the number of a row or the address of a cell is wrong")},
    Sentence<Damage>{Damage::CellType,
                     QT_TRANSLATE_NOOP("MainWindow", "the type of the cell is unknown")},
    Sentence<Damage>{Damage::TwoContents,
                     QT_TRANSLATE_NOOP("MainWindow", "there are two contents")},
    Sentence<Damage>{
        Damage::CellTwice,
        QT_TRANSLATE_NOOP("MainWindow", "the cell is there twice with different contents")},
    Sentence<Damage>{Damage::Number, QT_TRANSLATE_NOOP("MainWindow", "this is not a number")},
    Sentence<Damage>{Damage::TruthValue,
                     QT_TRANSLATE_NOOP("MainWindow", "this is neither true nor false")},
    Sentence<Damage>{Damage::ErrorValue, QT_TRANSLATE_NOOP("MainWindow", "the error is a number")},
    Sentence<Damage>{Damage::TextIndex,
                     QT_TRANSLATE_NOOP("MainWindow", "there is no such shared text")},
};
static_assert(damages.size() == std::size_t(Damage::TextIndex), "a damage lacks its sentence");

QString translated(const char *text)
{
    return QCoreApplication::translate("MainWindow", text);
}

template<typename Table, typename Key>
QString textFor(const Table &table, Key key)
{
    const auto row = std::find_if(table.begin(), table.end(),
                                  [key](const auto &known) { return known.key == key; });
    return row == table.end() ? QString() : translated(row->text);
}

QString damageText(const LoadError &error)
{
    const QString part = textFor(parts, error.part);
    const QString damage = textFor(damages, error.damage);
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
    QString line = id.simplified();
    if (line.size() <= longestNamedId) {
        return line;
    }
    const int length =
        isSurrogatePairAt(line, longestNamedId - 1) ? longestNamedId - 1 : longestNamedId;
    return line.left(length) + QChar(0x2026);
}

QString noPatientsText()
{
    return withNothingOpened(translated(QT_TRANSLATE_NOOP(
        "MainWindow", "This workbook has no patients: column 1 of row 2 is empty.")));
}

QString tooFewValuesText(const QVector<PatientRecord> &patients, const QVector<int> &tooShort)
{
    const QString reason =
        translated(QT_TRANSLATE_NOOP("MainWindow", "Every patient needs at least two values."));
    QStringList lines = {withNothingOpened(reason) + QLatin1Char(' ')
                         + translated(QT_TRANSLATE_NOOP("MainWindow", "These rows have fewer:"))};
    for (const int patient : tooShort.mid(0, mostNamedPatients)) {
        lines << translated(QT_TRANSLATE_NOOP("MainWindow", "Row %1: %2"))
                     .arg(workbookRow(patient))
                     .arg(shortened(patients.at(patient).id));
    }
    if (tooShort.size() > mostNamedPatients) {
        lines << translated(QT_TRANSLATE_NOOP("MainWindow", "and %1 more"))
                     .arg(tooShort.size() - mostNamedPatients);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace

QString refusalText(const LoadError &error)
{
    const QString text = textFor(reasons, error.reason);
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
    const QVector<int> tooShort = patientsWithTooFewValues(file.patients);
    return tooShort.isEmpty() ? QString() : tooFewValuesText(file.patients, tooShort);
}
