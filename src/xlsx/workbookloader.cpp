// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/workbookloader.h"

#include <QFile>
#include <QFileInfo>
#include <xlsxworkbook.h>
#include <xlsxworksheet.h>

#include "xlsx/compoundfile.h"
#include "xlsx/relationships.h"
#include "xlsx/sheetlist.h"
#include "xlsx/sheetreader.h"
#include "xlsx/workbooklimits.h"
#include "xlsx/zippackage.h"

namespace
{

// The road from a file to a document: load() goes it, the other functions are its stretches.
class Loader
{
public:
    Loader(const QString &path, int textColumn) : m_file(path), m_textColumn(textColumn) { }
    LoadError load();
    std::unique_ptr<QXlsx::Document> takeDocument() { return std::move(m_document); }

private:
    LoadError openFile();
    LoadError openPackage();
    LoadError findWorkbook();
    LoadError readWorkbook();
    LoadError chooseSheet();
    LoadError readStyles();
    LoadError readSharedStrings();
    LoadError readSheet();

    LoadError readOptional(Relationships::Kind kind, XmlReader *reader);

    QFile m_file;
    int m_textColumn;
    ZipPackage m_package;
    XmlCount m_count;
    MemoryBudget m_budget;
    QByteArray m_workbookPart;
    SheetList m_sheets;
    std::unique_ptr<Relationships> m_relationships;
    CellFormats m_styles;
    SharedStrings m_strings = SharedStrings(&m_budget);
    QByteArray m_sheetPart;
    std::unique_ptr<QXlsx::Document> m_document;
};

LoadError Loader::load()
{
    if (const LoadError error = openFile(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = openPackage(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = findWorkbook(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = readWorkbook(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = chooseSheet(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = readStyles(); error != LoadError::None) {
        return error;
    }
    if (const LoadError error = readSharedStrings(); error != LoadError::None) {
        return error;
    }
    return readSheet();
}

// A pipe would wait for its other end, and a device may never end: only a plain file will do.
LoadError Loader::openFile()
{
    if (!QFileInfo(m_file).isFile() || !m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return LoadError::CannotBeRead;
    }
    return m_file.size() > workbookLimits.fileSize ? LoadError::TooLarge : LoadError::None;
}

LoadError Loader::openPackage()
{
    const QByteArray archiveSignature = QByteArrayLiteral("PK");
    const QByteArray start = m_file.size() > 0 ? m_file.read(CompoundFile::signature().size()) : "";
    if (m_file.error() != QFileDevice::NoError) {
        return LoadError::CannotBeRead;
    }
    if (start == CompoundFile::signature()) {
        return CompoundFile::isEncryptedPackage(&m_file) ? LoadError::PasswordProtected
                                                         : LoadError::OldFormat;
    }
    return start.startsWith(archiveSignature) ? m_package.open(&m_file) : LoadError::NotAWorkbook;
}

LoadError Loader::findWorkbook()
{
    const QByteArray part = Relationships::partFor({});
    if (!m_package.contains(part)) {
        return LoadError::NotAWorkbook;
    }
    Relationships relationships({});
    const LoadError error =
        relationships.readPart(&m_package, part, &m_count, workbookLimits.listSize);
    if (error != LoadError::None) {
        return error;
    }
    const auto targets = relationships.targets(Relationships::Kind::Workbook);
    if (targets.size() > 1) {
        return LoadError::Damaged;
    }
    m_workbookPart = targets.isEmpty() ? QByteArray() : targets.constFirst().part;
    return targets.isEmpty() ? LoadError::NotAWorkbook : LoadError::None;
}

LoadError Loader::readWorkbook()
{
    const LoadError error =
        m_sheets.readPart(&m_package, m_workbookPart, &m_count, workbookLimits.listSize);
    if (error == LoadError::Damaged && m_sheets.isOther()) {
        return LoadError::NotAWorkbook;
    }
    if (error != LoadError::None) {
        return error;
    }
    m_relationships = std::make_unique<Relationships>(m_workbookPart);
    return m_relationships->readPart(&m_package, Relationships::partFor(m_workbookPart), &m_count,
                                     workbookLimits.listSize);
}

LoadError Loader::chooseSheet()
{
    bool visible = false;
    for (const SheetList::Sheet &sheet : m_sheets.sheets()) {
        const Relationships::Target *const target = m_relationships->target(sheet.relationship);
        const bool isSheet = target != nullptr
            && (target->kind == Relationships::Kind::Worksheet
                || target->kind == Relationships::Kind::OtherSheet);
        if (!isSheet) {
            return LoadError::Damaged;
        }
        const bool better = m_sheetPart.isEmpty() || (sheet.visible && !visible);
        if (target->kind == Relationships::Kind::Worksheet && better) {
            m_sheetPart = target->part;
            visible = sheet.visible;
        }
    }
    return m_sheetPart.isEmpty() ? LoadError::NoWorksheet : LoadError::None;
}

LoadError Loader::readOptional(Relationships::Kind kind, XmlReader *reader)
{
    const auto targets = m_relationships->targets(kind);
    if (targets.size() > 1) {
        return LoadError::Damaged;
    }
    return targets.isEmpty() ? LoadError::None
                             : reader->readPart(&m_package, targets.constFirst().part, &m_count,
                                                workbookLimits.partSize);
}

LoadError Loader::readStyles()
{
    return readOptional(Relationships::Kind::Styles, &m_styles);
}

LoadError Loader::readSharedStrings()
{
    return readOptional(Relationships::Kind::SharedStrings, &m_strings);
}

LoadError Loader::readSheet()
{
    auto document = std::make_unique<QXlsx::Document>();
    document->workbook()->setDate1904(m_sheets.is1904());
    SheetReader reader(
        {&m_strings.texts(), &m_styles, document->currentWorksheet(), &m_budget, m_textColumn});
    const LoadError error =
        reader.readPart(&m_package, m_sheetPart, &m_count, workbookLimits.partSize);
    if (error == LoadError::None) {
        m_document = std::move(document);
    }
    return error;
}

} // namespace

LoadedWorkbook loadWorkbook(const QString &path, int textColumn)
{
    Loader loader(path, textColumn);
    const LoadError error = loader.load();
    return {loader.takeDocument(), error};
}
