#pragma once

#include <QString>

/// \p text with each character that an XML document cannot hold (most control characters, halves of
/// surrogate pairs, U+FFFE and U+FFFF) replaced by U+FFFD. Markup is not escaped.
QString xmlText(const QString &text);
