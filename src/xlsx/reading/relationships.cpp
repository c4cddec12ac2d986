// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/relationships.h"

namespace
{

using Kind = Relationships::Kind;

// The last word of a type tells the kind; what comes before it is the transitional, the strict or,
// for macros, the vendors' base.
Kind kindOf(const QByteArray &type)
{
    static const QList<QByteArray> bases = {
        "http://schemas.openxmlformats.org/officeDocument/2006/relationships/",
        "http://purl.oclc.org/ooxml/officeDocument/relationships/",
        "http://schemas.microsoft.com/office/2006/relationships/"};
    static const QHash<QByteArray, Kind> kinds = {
        {"officeDocument", Kind::Workbook}, {"worksheet", Kind::Worksheet},
        {"chartsheet", Kind::OtherSheet},   {"dialogsheet", Kind::OtherSheet},
        {"xlMacrosheet", Kind::OtherSheet}, {"xlIntlMacrosheet", Kind::OtherSheet},
        {"styles", Kind::Styles},           {"sharedStrings", Kind::SharedStrings}};
    const int nameAt = int(type.lastIndexOf('/')) + 1;
    return bases.contains(type.left(nameAt)) ? kinds.value(type.mid(nameAt), Kind::Other)
                                             : Kind::Other;
}

QByteArray folderOf(const QByteArray &part)
{
    return part.left(part.lastIndexOf('/') + 1);
}

// What readers would take for different addresses.
bool isAmbiguous(const QByteArray &target)
{
    return target.trimmed() != target || target.contains('#') || target.contains('?');
}

// Targets are relative to the folder of the source, or absolute in the package.
QByteArray resolved(const QByteArray &source, const QByteArray &target)
{
    QByteArray path = QByteArray::fromPercentEncoding(target);
    path.replace('\\', '/');
    if (!path.startsWith('/')) {
        path.prepend(folderOf(source));
    }
    QList<QByteArray> folders;
    for (const QByteArray &folder : path.split('/')) {
        if (folder == ".." && !folders.isEmpty()) {
            folders.removeLast();
        } else if (!folder.isEmpty() && folder != "." && folder != "..") {
            folders.append(folder);
        }
    }
    return folders.join('/');
}

} // namespace

QByteArray Relationships::part() const
{
    const QByteArray folder = folderOf(m_source);
    return folder + "_rels/" + m_source.mid(folder.size()) + ".rels";
}

QVector<QByteArray> Relationships::parts(Kind kind) const
{
    QVector<QByteArray> found;
    for (const Target &target : m_targets) {
        if (target.kind == kind && !found.contains(target.part)) {
            found.append(target.part);
        }
    }
    return found;
}

void Relationships::read(XmlCursor *xml)
{
    int count = 0;
    const auto readOne = [&] {
        xml->require(count++ < xml->limits().listEntries, LoadError::TooLarge);
        readRelationship(xml);
    };
    xml->enter("Relationships", XmlCursor::PackageRelationships);
    xml->readChildren({{"Relationship", readOne}});
}

void Relationships::readRelationship(XmlCursor *xml)
{
    xml->allowAttributes({"Id", "Type", "Target", "TargetMode"});
    const QByteArray id = xml->attribute("Id");
    const QByteArray type = xml->attribute("Type");
    const QByteArray address = xml->attribute("Target");
    const QByteArray mode = xml->attribute("TargetMode");
    xml->require(!id.isEmpty() && !type.isEmpty() && !address.isEmpty(),
                 QT_TRANSLATE_NOOP("MainWindow", "an attribute is missing"));
    const bool isPart = (mode.isEmpty() || mode == "Internal") && !isAmbiguous(address);
    const Target read = {kindOf(type), isPart ? resolved(m_source, address) : QByteArray()};
    const Target known = m_targets.value(id, read);
    xml->require(known.kind == read.kind && known.part == read.part,
                 QT_TRANSLATE_NOOP("MainWindow", "two of them have the same name"));
    m_targets.insert(id, read);
    xml->readNothing();
}
