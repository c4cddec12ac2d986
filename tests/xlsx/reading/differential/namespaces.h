// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The namespaces of a workbook's parts.
namespace Namespaces
{

inline QString transitional()
{
    return QStringLiteral("http://schemas.openxmlformats.org/spreadsheetml/2006/main");
}
inline QString strict()
{
    return QStringLiteral("http://purl.oclc.org/ooxml/spreadsheetml/main");
}
inline QString transitionalLinks()
{
    return QStringLiteral("http://schemas.openxmlformats.org/officeDocument/2006/relationships");
}
inline QString strictLinks()
{
    return QStringLiteral("http://purl.oclc.org/ooxml/officeDocument/relationships");
}
inline QString package()
{
    return QStringLiteral("http://schemas.openxmlformats.org/package/2006/relationships");
}
inline QString compatibility()
{
    return QStringLiteral("http://schemas.openxmlformats.org/markup-compatibility/2006");
}
inline QString xml()
{
    return QStringLiteral("http://www.w3.org/XML/1998/namespace");
}
/// One that nobody understands.
inline QString unknown()
{
    return QStringLiteral("urn:unknown");
}
/// One that a newer version understands, and that parts declare ignorable.
inline QString newer()
{
    return QStringLiteral("urn:newer");
}

} // namespace Namespaces
