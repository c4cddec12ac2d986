// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/workbookloader.h"

#include <functional>

#include <QFile>
#include <QFileInfo>
#include <xlsxworkbook.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/compoundfile.h"
#include "xlsx/reading/relationships.h"
#include "xlsx/reading/sharedstrings.h"
#include "xlsx/reading/sheetlist.h"
#include "xlsx/reading/sheetreader.h"
#include "xlsx/reading/zippackage.h"

namespace
{

constexpr const char *workbook = QT_TRANSLATE_NOOP("MainWindow", "workbook");
constexpr const char *worksheet = QT_TRANSLATE_NOOP("MainWindow", "worksheet");

// A pipe would wait for its other end, and a device may never end: only a plain file will do.
LoadError openPackage(QFile *file, ZipPackage *package)
{
    if (!QFileInfo(*file).isFile() || !file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return LoadError::CannotBeRead;
    }
    if (file->size() > package->left()->fileSize) {
        return LoadError::TooLarge;
    }
    const QByteArray start = file->size() > 0 ? file->read(CompoundFile::signature().size()) : "";
    if (file->error() != QFileDevice::NoError) {
        return LoadError::CannotBeRead;
    }
    if (start == CompoundFile::signature()) {
        return CompoundFile::isEncryptedPackage(file) ? LoadError::PasswordProtected
                                                      : LoadError::OldFormat;
    }
    return start.startsWith("PK")
        ? package->open(file).in(QT_TRANSLATE_NOOP("MainWindow", "archive"))
        : LoadError::NotAWorkbook;
}

using Read = std::function<void(XmlCursor *)>;

LoadError readPart(ZipPackage *package, const QByteArray &part, qint64 largest, const char *words,
                   const Read &read)
{
    XmlCursor xml(package, part, largest);
    read(&xml);
    return xml.finish().in(words);
}

LoadError readRelationships(ZipPackage *package, Relationships *relationships, const char *words)
{
    return readPart(package, relationships->part(), package->left()->listSize, words,
                    [&](XmlCursor *xml) { relationships->read(xml); });
}

LoadError findWorkbook(ZipPackage *package, QByteArray *part)
{
    Relationships relationships;
    if (!package->contains(relationships.part())) {
        return LoadError::NotAWorkbook;
    }
    LoadError error = readRelationships(
        package, &relationships, QT_TRANSLATE_NOOP("MainWindow", "relationships of the package"));
    const auto parts = relationships.parts(Relationships::Kind::Workbook);
    *part = parts.value(0);
    if (!error && parts.size() != 1) {
        return parts.isEmpty() ? LoadError::NotAWorkbook
                               : LoadError(LoadError::doubled).in(workbook);
    }
    return error;
}

LoadError readWorkbook(ZipPackage *package, const QByteArray &part, SheetList *sheets)
{
    XmlCursor xml(package, part, package->left()->listSize);
    sheets->read(&xml);
    LoadError error = xml.finish();
    const bool isOther = error.reason == LoadError::Damaged && xml.isOther();
    return isOther ? LoadError::NotAWorkbook : std::move(error).in(workbook);
}

// The first visible sheet, or the first of all if none is visible, except for charts, dialogs and
// macros. If nothing leads to it, it is missing rather than passed over: the next one has other
// patients.
LoadError chooseSheet(const ZipPackage &package, const SheetList &sheets,
                      const Relationships &relationships, QByteArray *part)
{
    const SheetList::Sheet *chosen = nullptr;
    for (const SheetList::Sheet &sheet : sheets.sheets()) {
        const Relationships::Target target = relationships.target(sheet.relationship);
        const bool isOther = target.kind == Relationships::Kind::OtherSheet;
        if (!isOther && (chosen == nullptr || (sheet.visible && !chosen->visible))) {
            chosen = &sheet;
        }
    }
    if (chosen == nullptr) {
        return LoadError::NoWorksheet;
    }
    const Relationships::Target target = relationships.target(chosen->relationship);
    *part = target.part;
    if (part->isEmpty() || !package.contains(*part)) {
        return LoadError(QT_TRANSLATE_NOOP("MainWindow", "the worksheet is missing")).in(workbook);
    }
    return target.kind == Relationships::Kind::Worksheet
        ? LoadError()
        : LoadError(QT_TRANSLATE_NOOP("MainWindow", "its kind is unknown")).in(worksheet);
}

// A workbook without formats or texts has neither relationship nor part; what cells name of them
// is missing then. A relationship that leads out of the package is no such thing.
LoadError readOptional(ZipPackage *package, const QVector<QByteArray> &parts, const char *words,
                       const Read &read)
{
    if (parts.size() > 1) {
        return LoadError(LoadError::doubled).in(words);
    }
    const bool isThere =
        !parts.isEmpty() && (parts.first().isEmpty() || package->contains(parts.first()));
    return isThere ? readPart(package, parts.first(), package->left()->partSize, words, read)
                   : LoadError();
}

LoadError load(QFile *file, ZipPackage *package, int textColumn, QXlsx::Document *document)
{
    QByteArray workbookPart;
    QByteArray sheetPart;
    SheetList sheets;
    Relationships relationships;
    CellFormats formats;
    QVector<QString> texts;
    const std::initializer_list<std::function<LoadError()>> steps = {
        [&] { return openPackage(file, package); },
        [&] { return findWorkbook(package, &workbookPart); },
        [&] { return readWorkbook(package, workbookPart, &sheets); },
        [&] {
            relationships = Relationships(workbookPart);
            return readRelationships(
                package, &relationships,
                QT_TRANSLATE_NOOP("MainWindow", "relationships of the workbook"));
        },
        [&] { return chooseSheet(*package, sheets, relationships, &sheetPart); },
        [&] {
            return readOptional(package, relationships.parts(Relationships::Kind::Styles),
                                QT_TRANSLATE_NOOP("MainWindow", "cell formats"),
                                [&](XmlCursor *xml) { formats.read(xml); });
        },
        [&] {
            return readOptional(package, relationships.parts(Relationships::Kind::SharedStrings),
                                QT_TRANSLATE_NOOP("MainWindow", "shared texts"),
                                [&](XmlCursor *xml) { texts = readSharedStrings(xml); });
        },
        [&] {
            document->workbook()->setDate1904(sheets.is1904());
            SheetReader reader({&texts, &formats, document->currentWorksheet(), textColumn});
            return readPart(package, sheetPart, package->left()->partSize, worksheet,
                            [&](XmlCursor *xml) { reader.read(xml); });
        },
    };
    for (const auto &step : steps) {
        if (LoadError error = step(); error) {
            return error;
        }
    }
    return LoadError::None;
}

} // namespace

LoadedWorkbook loadWorkbook(const QString &path, int textColumn, const WorkbookLimits &limits)
{
    QFile file(path);
    ZipPackage package(limits);
    auto document = std::make_unique<QXlsx::Document>();
    LoadError error = load(&file, &package, textColumn, document.get());
    return {error ? nullptr : std::move(document), std::move(error)};
}
