// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/relationships.h"

#include <array>
#include <cstring>
#include <utility>

#include "xlsx/workbooklimits.h"

namespace
{

enum Node { AllNode = 1, OneNode };

constexpr std::array<XmlStep, 2> steps = {{
    {"Relationships", XmlReader::document, XmlOutcome::Read, AllNode, XmlOutcome::Refused},
    {"Relationship", AllNode, XmlOutcome::Read, OneNode, XmlOutcome::Refused},
}};

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

Relationships::Relationships(QByteArray source)
    : XmlReader(Vocabulary::Relationships, steps), m_source(std::move(source))
{
}

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

QVector<Relationships::Target> Relationships::targets(Kind kind) const
{
    QVector<Target> found;
    for (const Target &target : m_targets) {
        if (target.kind == kind) {
            found.append(target);
        }
    }
    return found;
}

void Relationships::enter(int node, const XmlAttributes &attributes)
{
    if (node != OneNode) {
        return;
    }
    const QByteArray id = attributes.value("Id");
    const QByteArray mode = attributes.value("TargetMode");
    if (id.isEmpty() || m_targets.contains(id)) {
        refuse(LoadError::Damaged);
        return;
    }
    if (m_targets.size() >= workbookLimits.listEntries) {
        refuse(LoadError::TooLarge);
        return;
    }
    // The target is an address outside of the package.
    if (mode == "External") {
        m_targets.insert(id, {});
        return;
    }
    m_targets.insert(
        id, {kindOf(attributes.value("Type")), resolved(m_source, attributes.value("Target"))});
}
