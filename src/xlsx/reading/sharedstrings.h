// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "xlsx/reading/xmlcursor.h"

/// Appends the text of the element at which \p xml stands to \p text, in UTF-8:
///
///     <si><t>50</t></si>
///     <is><r><rPr><b/></rPr><t>5</t></r><r><t>0</t></r><rPh sb="0" eb="1"><t>go</t></rPh></is>
///
/// both are "50". Phonetic runs repeat in another script what the others say.
void readRichText(XmlCursor *xml, QByteArray *text);

/// The texts that cells refer to by their index:
///
///     <sst count="3" uniqueCount="2">
///       <si><t>Patient</t></si>
///       <si><r><t>P</t></r><r><t>1</t></r></si>
///     </sst>
QVector<QString> readSharedStrings(XmlCursor *xml);
