// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Whether the code unit at \p index and the next one are one character beyond U+FFFF.
bool isSurrogatePairAt(const QString &text, int index);

/// The first \p length code units of \p text, or one fewer if those would end within a character.
QString wholeCharacters(const QString &text, int length);

/// Whether an XML document can hold \p character, which is no half of a surrogate pair.
bool fitsXml(QChar character);

/// \p text with each character that an XML document cannot hold (most control characters, halves of
/// surrogate pairs, U+FFFE and U+FFFF) replaced by U+FFFD. Markup is not escaped.
QString xmlText(const QString &text);
