// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Whether the code unit at \p index and the next one are one character beyond U+FFFF.
bool isSurrogatePairAt(const QString &text, int index);

/// Whether an XML document can hold \p character, which is no half of a surrogate pair.
bool fitsXml(QChar character);

/// \p text with each character that an XML document cannot hold (most control characters, halves of
/// surrogate pairs, U+FFFE and U+FFFF) replaced by U+FFFD. Markup is not escaped.
QString xmlText(const QString &text);
