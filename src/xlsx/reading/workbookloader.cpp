// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/workbookloader.h"

#include <algorithm>
#include <optional>

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <xlsxworkbook.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/compoundfile.h"
#include "xlsx/reading/contenttypes.h"
#include "xlsx/reading/relationships.h"
#include "xlsx/reading/sheetlist.h"
#include "xlsx/reading/sheetreader.h"
#include "xlsx/reading/zippackage.h"

namespace
{

// The road from a file to a document: load() goes it, the other functions are its stretches.
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
    LoadError readStyles();
    LoadError readSharedStrings();
    LoadError readSheet();

    bool hasUnlistedWorksheet() const;
    bool isLeftOut(const QByteArray &part);
    bool isComplete();
    bool hasLostPart();
    LoadError readOptional(Relationships::Kind kind, XmlReader *reader);

    QFile m_file;
    int m_textColumn;
    WorkbookLimits m_limits;
    ZipPackage m_package;
    XmlCount m_count;
    MemoryBudget m_budget;
    QByteArray m_workbookPart;
    SheetList m_sheets;
    std::unique_ptr<Relationships> m_relationships;
    std::optional<bool> m_isComplete;
    CellFormats m_styles;
    SharedStrings m_strings = SharedStrings(&m_budget);
    QByteArray m_sheetPart;
    std::unique_ptr<QXlsx::Document> m_document;
};

LoadError Loader::load()
{
    if (LoadError error = openFile(); error) {
        return error;
    }
    if (LoadError error = openPackage(); error) {
        return error;
    }
    if (LoadError error = findWorkbook(); error) {
        return error;
    }
    if (LoadError error = readWorkbook(); error) {
        return error;
    }
    if (LoadError error = chooseSheet(); error) {
        return error;
    }
    if (LoadError error = readStyles(); error) {
        return error;
    }
    if (LoadError error = readSharedStrings(); error) {
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
    return m_file.size() > m_limits.fileSize ? LoadError::TooLarge : LoadError::None;
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
    if (!start.startsWith(archiveSignature)) {
        return LoadError::NotAWorkbook;
    }
    return m_package.open(&m_file).in(LoadError::Part::Archive);
}

LoadError Loader::findWorkbook()
{
    const QByteArray part = Relationships::partFor({});
    if (!m_package.contains(part)) {
        return LoadError::NotAWorkbook;
    }
    Relationships relationships({});
    LoadError error = relationships.readPart(&m_package, part, &m_count, m_limits.listSize);
    if (error) {
        return std::move(error).in(LoadError::Part::PackageRelationships);
    }
    const auto parts = relationships.parts(Relationships::Kind::Workbook);
    if (parts.size() > 1) {
        return LoadError(LoadError::Damage::Doubled).in(LoadError::Part::Workbook);
    }
    m_workbookPart = parts.value(0);
    return m_workbookPart.isEmpty() ? LoadError::NotAWorkbook : LoadError::None;
}

LoadError Loader::readWorkbook()
{
    LoadError error = m_sheets.readPart(&m_package, m_workbookPart, &m_count, m_limits.listSize);
    if (error.reason == LoadError::Damaged && m_sheets.isOther()) {
        return LoadError::NotAWorkbook;
    }
    if (error) {
        return std::move(error).in(LoadError::Part::Workbook);
    }
    m_relationships = std::make_unique<Relationships>(m_workbookPart);
    return m_relationships
        ->readPart(&m_package, Relationships::partFor(m_workbookPart), &m_count, m_limits.listSize)
        .in(LoadError::Part::WorkbookRelationships);
}

// Sheets without a part are old macro modules, or what a program left behind. A part that is there
// and of an unknown kind could be the worksheet that was meant.
LoadError Loader::chooseSheet()
{
    const SheetList::Sheet *chosen = nullptr;
    const Relationships::Target *chosenTarget = nullptr;
    bool leadsNowhere = false;
    for (const SheetList::Sheet &sheet : m_sheets.sheets()) {
        const Relationships::Target *const target = m_relationships->target(sheet.relationship);
        const bool isBetter = chosen == nullptr || (sheet.visible && !chosen->visible);
        leadsNowhere = leadsNowhere || target == nullptr;
        if (isBetter && target != nullptr && target->kind != Relationships::Kind::OtherSheet
            && !isLeftOut(target->part)) {
            chosen = &sheet;
            chosenTarget = target;
        }
    }
    if (chosen == nullptr) {
        return LoadError::NoWorksheet;
    }
    if (leadsNowhere && hasUnlistedWorksheet()) {
        return LoadError(LoadError::Damage::Missing).in(LoadError::Part::Worksheet);
    }
    m_sheetPart = chosenTarget->part;
    return chosenTarget->kind == Relationships::Kind::Worksheet
        ? LoadError()
        : LoadError(LoadError::Damage::SheetKind).in(LoadError::Part::Worksheet);
}

// Whether no sheet names the relationship of a worksheet, which one that leads nowhere may have
// meant.
bool Loader::hasUnlistedWorksheet() const
{
    QSet<QByteArray> listed;
    for (const SheetList::Sheet &sheet : m_sheets.sheets()) {
        listed.insert(sheet.relationship);
    }
    const auto worksheets = m_relationships->identifiers(Relationships::Kind::Worksheet);
    return std::any_of(worksheets.begin(), worksheets.end(), [this, &listed](const QByteArray &id) {
        return !listed.contains(id) && m_package.contains(m_relationships->target(id)->part);
    });
}

// Whether the part is not in the package. A part that is there and only lost its name, or to which
// no relationship leads any more, is not left out.
bool Loader::isLeftOut(const QByteArray &part)
{
    return part.isEmpty() || (!m_package.contains(part) && isComplete());
}

// Whether the names in the archive agree, and the relationships lead to each worksheet and to the
// formats that the list of content types names.
bool Loader::isComplete()
{
    if (!m_isComplete) {
        m_isComplete = m_package.namesAgree() && !hasLostPart();
    }
    return *m_isComplete;
}

bool Loader::hasLostPart()
{
    if (!m_package.contains(ContentTypes::part())) {
        return false;
    }
    ContentTypes types;
    if (types.readPart(&m_package, ContentTypes::part(), &m_count, m_limits.listSize)) {
        return true;
    }
    QSet<QByteArray> known;
    for (const auto kind : {Relationships::Kind::Worksheet, Relationships::Kind::Styles}) {
        for (const QByteArray &part : m_relationships->parts(kind)) {
            known.insert(part.toLower());
        }
    }
    const QVector<QByteArray> &parts = types.sheetsAndStyles();
    return std::any_of(parts.begin(), parts.end(), [this, &known](const QByteArray &part) {
        return m_package.contains(part) && !known.contains(part.toLower());
    });
}

LoadError Loader::readOptional(Relationships::Kind kind, XmlReader *reader)
{
    const auto parts = m_relationships->parts(kind);
    if (parts.size() > 1) {
        return LoadError::Damage::Doubled;
    }
    const QByteArray part = parts.value(0);
    return isLeftOut(part) ? LoadError()
                           : reader->readPart(&m_package, part, &m_count, m_limits.partSize);
}

// Without any formats a date would read as a number.
LoadError Loader::readStyles()
{
    if (m_relationships->parts(Relationships::Kind::Styles).isEmpty() && !isComplete()) {
        return LoadError(LoadError::Damage::Missing).in(LoadError::Part::CellFormats);
    }
    return readOptional(Relationships::Kind::Styles, &m_styles).in(LoadError::Part::CellFormats);
}

LoadError Loader::readSharedStrings()
{
    return readOptional(Relationships::Kind::SharedStrings, &m_strings)
        .in(LoadError::Part::SharedTexts);
}

LoadError Loader::readSheet()
{
    auto document = std::make_unique<QXlsx::Document>();
    document->workbook()->setDate1904(m_sheets.is1904());
    SheetReader reader(
        {&m_strings.texts(), &m_styles, document->currentWorksheet(), &m_budget, m_textColumn});
    LoadError error = reader.readPart(&m_package, m_sheetPart, &m_count, m_limits.partSize);
    if (!error) {
        m_document = std::move(document);
    }
    return std::move(error).in(LoadError::Part::Worksheet);
}

} // namespace

LoadedWorkbook loadWorkbook(const QString &path, int textColumn, const WorkbookLimits &limits)
{
    Loader loader(path, textColumn, limits);
    LoadError error = loader.load();
    return {loader.takeDocument(), std::move(error)};
}
