// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/relationships.h"

#include <algorithm>
#include <array>
#include <cstring>
namespace
{

// Types of relationships: the transitional, the strict and, for macros, the vendors' base.
constexpr std::array<const char *, 3> bases = {
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/",
    "http://purl.oclc.org/ooxml/officeDocument/relationships/",
    "http://schemas.microsoft.com/office/2006/relationships/",
};

struct KindName {
    const char *name;
    Relationships::Kind kind;
};

constexpr std::array<KindName, 8> kindNames = {{
    {"officeDocument", Relationships::Kind::Workbook},
    {"worksheet", Relationships::Kind::Worksheet},
    {"chartsheet", Relationships::Kind::OtherSheet},
    {"dialogsheet", Relationships::Kind::OtherSheet},
    {"xlMacrosheet", Relationships::Kind::OtherSheet},
    {"xlIntlMacrosheet", Relationships::Kind::OtherSheet},
    {"styles", Relationships::Kind::Styles},
    {"sharedStrings", Relationships::Kind::SharedStrings},
}};

Relationships::Kind kindOf(const QByteArray &type)
{
    for (const char *const base : bases) {
        if (!type.startsWith(base)) {
            continue;
        }
        const QByteArray name = type.mid(static_cast<int>(std::strlen(base)));
        for (const KindName &known : kindNames) {
            if (name == known.name) {
                return known.kind;
            }
        }
    }
    return Relationships::Kind::Other;
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
        if (folder == "..") {
            if (!folders.isEmpty()) {
                folders.removeLast();
            }
        } else if (!folder.isEmpty() && folder != ".") {
            folders.append(folder);
        }
    }
    return folders.join('/');
}

} // namespace

QByteArray Relationships::partFor(const QByteArray &source)
{
    const QByteArray folder = folderOf(source);
    return folder + "_rels/" + source.mid(folder.size()) + ".rels";
}

const Relationships::Target *Relationships::target(const QByteArray &id) const
{
    const auto found = m_targets.constFind(id);
    return found == m_targets.constEnd() ? nullptr : &*found;
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
    xml->enter("Relationships", XmlCursor::PackageRelationships);
    xml->allowAnyAttributes();
    while (xml->nextChild()) {
        if (!xml->is("Relationship")) {
            xml->failElement();
        } else if (++count > xml->limits().listEntries) {
            xml->fail(LoadError::TooLarge);
        } else {
            add(xml);
            xml->readNothing();
        }
    }
}

void Relationships::add(XmlCursor *xml)
{
    xml->allowAttributes({"Id", "Type", "Target", "TargetMode"}, {});
    const QByteArray id = xml->attribute("Id");
    const QByteArray type = xml->attribute("Type");
    const QByteArray address = xml->attribute("Target");
    const QByteArray mode = xml->attribute("TargetMode");
    if (id.isEmpty() || type.isEmpty() || address.isEmpty()) {
        xml->fail(QT_TRANSLATE_NOOP("MainWindow", "an attribute is missing"));
        return;
    }
    const bool isPart = (mode.isEmpty() || mode == "Internal") && !isAmbiguous(address);
    const Target target = {kindOf(type), isPart ? resolved(m_source, address) : QByteArray()};
    const auto known = m_targets.constFind(id);
    if (known != m_targets.constEnd()
        && (known->kind != target.kind || known->part != target.part)) {
        xml->fail(QT_TRANSLATE_NOOP("MainWindow", "two of them have the same name"));
    }
    m_targets.insert(id, target);
}
