// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/contenttypes.h"

#include <array>

#include "xlsx/reading/workbooklimits.h"

namespace
{

enum Node { TypesNode, OverrideNode };

constexpr std::array<XmlStep, 2> steps = {{
    {"Types", XmlReader::document, XmlOutcome::Read, TypesNode},
    {"Override", TypesNode, XmlOutcome::Read, OverrideNode},
}};

} // namespace

ContentTypes::ContentTypes() : XmlReader(Vocabulary::ContentTypes, steps) { }

QByteArray ContentTypes::part()
{
    return QByteArrayLiteral("[Content_Types].xml");
}

void ContentTypes::enter(int node, const XmlAttributes &attributes)
{
    const QByteArray type = attributes.value("ContentType");
    if (node != OverrideNode
        || !(type.endsWith(".worksheet+xml") || type.endsWith(".styles+xml"))) {
        return;
    }
    if (m_sheetsAndStyles.size() >= limits().listEntries) {
        refuse(LoadError::TooLarge);
        return;
    }
    QByteArray name = attributes.value("PartName");
    while (name.startsWith('/')) {
        name.remove(0, 1);
    }
    m_sheetsAndStyles.append(QByteArray::fromPercentEncoding(name));
}
