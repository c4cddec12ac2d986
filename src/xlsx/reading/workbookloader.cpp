// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/workbookloader.h"

#include <QFile>
#include <QFileInfo>
#include <xlsxworkbook.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/compoundfile.h"
#include "xlsx/reading/relationships.h"
#include "xlsx/reading/sheetlist.h"
#include "xlsx/reading/sheetreader.h"
#include "xlsx/reading/zippackage.h"

namespace
{

constexpr const char *workbook = QT_TRANSLATE_NOOP("MainWindow", "workbook");
constexpr const char *worksheet = QT_TRANSLATE_NOOP("MainWindow", "worksheet");

// The path from a file to a document: load() takes it; the other functions are its steps.
class Loader
{
public:
    Loader(const QString &path, int textColumn, const WorkbookLimits &limits)
        : m_file(path), m_textColumn(textColumn), m_limits(limits), m_package(limits),
          m_budget(limits)
    {
    }
    LoadError load();
    std::unique_ptr<QXlsx::Document> takeDocument() { return std::move(m_document); }

private:
    LoadError openFile();
    LoadError openPackage();
    LoadError findWorkbook();
    LoadError readWorkbook();
    LoadError chooseSheet();
    LoadError readFormatsAndTexts();
    LoadError readSheet();

    template<typename Reader>
    LoadError readPart(const QByteArray &part, qint64 largest, Reader *reader, const char *words);
    template<typename Reader>
    LoadError readOptional(Relationships::Kind kind, Reader *reader, const char *words);

    QFile m_file;
    int m_textColumn;
    WorkbookLimits m_limits;
    ZipPackage m_package;
    XmlCount m_count;
    MemoryBudget m_budget;
    QByteArray m_workbookPart;
    SheetList m_sheets;
    Relationships m_relationships;
    CellFormats m_styles;
    SharedStrings m_strings = SharedStrings(&m_budget);
    QByteArray m_sheetPart;
    std::unique_ptr<QXlsx::Document> m_document;
};

LoadError Loader::load()
{
    for (const auto stretch :
         {&Loader::openFile, &Loader::openPackage, &Loader::findWorkbook, &Loader::readWorkbook,
          &Loader::chooseSheet, &Loader::readFormatsAndTexts, &Loader::readSheet}) {
        if (LoadError error = (this->*stretch)(); error) {
            return error;
        }
    }
    return LoadError::None;
}

// A pipe would wait for its other end, and a device may never end: only a plain file will do.
LoadError Loader::openFile()
{
    if (!QFileInfo(m_file).isFile() || !m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return LoadError::CannotBeRead;
    }
    return m_file.size() > m_limits.fileSize ? LoadError::TooLarge : LoadError::None;
}

LoadError Loader::openPackage()
{
    const QByteArray start = m_file.size() > 0 ? m_file.read(CompoundFile::signature().size()) : "";
    if (m_file.error() != QFileDevice::NoError) {
        return LoadError::CannotBeRead;
    }
    if (start == CompoundFile::signature()) {
        return CompoundFile::isEncryptedPackage(&m_file) ? LoadError::PasswordProtected
                                                         : LoadError::OldFormat;
    }
    return start.startsWith("PK")
        ? m_package.open(&m_file).in(QT_TRANSLATE_NOOP("MainWindow", "archive"))
        : LoadError::NotAWorkbook;
}

template<typename Reader>
LoadError Loader::readPart(const QByteArray &part, qint64 largest, Reader *reader,
                           const char *words)
{
    XmlCursor xml(&m_package, part, largest, &m_count);
    reader->read(&xml);
    return xml.finish().in(words);
}

LoadError Loader::findWorkbook()
{
    const QByteArray part = Relationships::partFor({});
    if (!m_package.contains(part)) {
        return LoadError::NotAWorkbook;
    }
    Relationships relationships;
    LoadError error = readPart(part, m_limits.listSize, &relationships,
                               QT_TRANSLATE_NOOP("MainWindow", "relationships of the package"));
    const auto parts = relationships.parts(Relationships::Kind::Workbook);
    if (!error && parts.size() != 1) {
        return parts.isEmpty() ? LoadError::NotAWorkbook
                               : LoadError::damaged(LoadError::doubled).in(workbook);
    }
    m_workbookPart = parts.value(0);
    return error;
}

LoadError Loader::readWorkbook()
{
    XmlCursor xml(&m_package, m_workbookPart, m_limits.listSize, &m_count);
    m_sheets.read(&xml);
    if (LoadError error = xml.finish(); error) {
        const bool isOther = error.reason == LoadError::Damaged && xml.isOther();
        return isOther ? LoadError::NotAWorkbook : std::move(error).in(workbook);
    }
    m_relationships = Relationships(m_workbookPart);
    return readPart(Relationships::partFor(m_workbookPart), m_limits.listSize, &m_relationships,
                    QT_TRANSLATE_NOOP("MainWindow", "relationships of the workbook"));
}

// The first visible sheet, or the first of all if none is visible, except for charts, dialogs and
// macros. If nothing leads to it, it is missing rather than passed over: the next one has other
// patients.
LoadError Loader::chooseSheet()
{
    const SheetList::Sheet *chosen = nullptr;
    for (const SheetList::Sheet &sheet : m_sheets.sheets()) {
        const Relationships::Target *const target = m_relationships.target(sheet.relationship);
        const bool isOther = target != nullptr && target->kind == Relationships::Kind::OtherSheet;
        if (!isOther && (chosen == nullptr || (sheet.visible && !chosen->visible))) {
            chosen = &sheet;
        }
    }
    if (chosen == nullptr) {
        return LoadError::NoWorksheet;
    }
    const Relationships::Target *const target = m_relationships.target(chosen->relationship);
    if (target == nullptr || !m_package.contains(target->part)) {
        return LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "the worksheet is missing"))
            .in(workbook);
    }
    m_sheetPart = target->part;
    return target->kind == Relationships::Kind::Worksheet
        ? LoadError()
        : LoadError::damaged(QT_TRANSLATE_NOOP("MainWindow", "its kind is unknown")).in(worksheet);
}

// A workbook without formats or texts has neither relationship nor part; what cells name of them
// is missing then. A relationship that leads out of the package is no such thing.
template<typename Reader>
LoadError Loader::readOptional(Relationships::Kind kind, Reader *reader, const char *words)
{
    const auto parts = m_relationships.parts(kind);
    if (parts.size() > 1) {
        return LoadError::damaged(LoadError::doubled).in(words);
    }
    const bool isThere =
        !parts.isEmpty() && (parts.first().isEmpty() || m_package.contains(parts.first()));
    return isThere ? readPart(parts.first(), m_limits.partSize, reader, words) : LoadError();
}

LoadError Loader::readFormatsAndTexts()
{
    LoadError error = readOptional(Relationships::Kind::Styles, &m_styles,
                                   QT_TRANSLATE_NOOP("MainWindow", "cell formats"));
    return error ? error
                 : readOptional(Relationships::Kind::SharedStrings, &m_strings,
                                QT_TRANSLATE_NOOP("MainWindow", "shared texts"));
}

LoadError Loader::readSheet()
{
    auto document = std::make_unique<QXlsx::Document>();
    document->workbook()->setDate1904(m_sheets.is1904());
    SheetReader reader(
        {&m_strings.texts(), &m_styles, document->currentWorksheet(), &m_budget, m_textColumn});
    LoadError error = readPart(m_sheetPart, m_limits.partSize, &reader, worksheet);
    if (!error) {
        m_document = std::move(document);
    }
    return error;
}

} // namespace

LoadedWorkbook loadWorkbook(const QString &path, int textColumn, const WorkbookLimits &limits)
{
    Loader loader(path, textColumn, limits);
    LoadError error = loader.load();
    return {loader.takeDocument(), std::move(error)};
}
