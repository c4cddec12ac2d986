// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// Texts and numbers as they stand in the XML of a workbook.
namespace CellText
{

/// The text of \p utf8, with escapes such as _x000D_ decoded. Tabs and line feeds stay, and CR and
/// CR LF become line feeds; a blank stands for what else moves to another line, U+FFFD for other
/// control characters, for halves of surrogate pairs and for code points that are no characters. A
/// text longer than the format allows is cut and ends with an ellipsis, so that what is left of it
/// never reads as a number.
QString decode(const QByteArray &utf8);

/// \p text as the content of an XML element, in UTF-8. CR and CR LF become line feeds, characters
/// that a workbook cannot hold U+FFFD, and it ends after as many UTF-16 units as the format allows.
/// What looks like an escape is escaped, so that decode() gives it back as it is.
QByteArray encode(const QString &text);

/// Sets \p value to the finite number that \p text is, blanks around it allowed, and returns true;
/// false if it is none. The notation is that of XML Schema, without its names for infinity and NaN.
bool toNumber(const QByteArray &text, double *value);

/// The digits of \p number, for which toNumber holds, as they stand there without blanks around
/// them; written out in full where an exponent shortens them: "1E+06" gives "1000000".
QString plainDigits(const QByteArray &number);

} // namespace CellText
