// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/relationships.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "xlsx/reading/workbooklimits.h"

namespace
{

enum Node { AllNode, OneNode };

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
    const auto found = m_targetsById.constFind(id);
    return found == m_targetsById.constEnd() ? nullptr : &*found;
}

QVector<QByteArray> Relationships::identifiers(Kind kind) const
{
    QVector<QByteArray> found;
    for (auto target = m_targetsById.begin(); target != m_targetsById.end(); ++target) {
        if (target->kind == kind) {
            found.append(target.key());
        }
    }
    return found;
}

QVector<QByteArray> Relationships::parts(Kind kind) const
{
    QVector<QByteArray> found;
    for (const Target &target : m_targets) {
        if (target.kind == kind) {
            found.append(target.part);
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

void Relationships::enter(int node, const XmlAttributes &attributes)
{
    if (node != OneNode) {
        return;
    }
    if (m_targets.size() >= limits().listEntries) {
        refuse(LoadError::TooLarge);
        return;
    }
    const QByteArray id = attributes.value("Id");
    const QByteArray mode = attributes.value("TargetMode");
    // An external target is an address outside of the package.
    const Target target = mode == "External"
        ? Target()
        : Target{kindOf(attributes.value("Type")), resolved(m_source, attributes.value("Target"))};
    m_targets.append(target);
    // A relationship without an identifier leads no sheet to its part.
    if (id.isEmpty()) {
        return;
    }
    if (const auto known = m_targetsById.find(id); known == m_targetsById.end()) {
        m_targetsById.insert(id, target);
    } else if (known->kind != target.kind || known->part != target.part) {
        refuse(LoadError::Damage::Identifier);
    }
}
