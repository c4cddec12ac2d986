// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include <QByteArray>
#include <QString>

/// Texts and numbers as the XML of a workbook holds them.
namespace CellText
{

/// The text of \p utf8, with escapes such as _x000D_ decoded. Each character that XML can hold
/// stays, except that CR and CR LF become line feeds. Of the characters that only an escape can
/// give, those that start a line become blanks; all others, and unpaired surrogates, become U+FFFD.
/// A text longer than the format allows is cut and ends with an ellipsis, so that the rest never
/// reads as a number.
QString decode(const QByteArray &utf8);

/// \p text as the content of an XML element, in UTF-8. CR and CR LF become line feeds, characters
/// that a workbook cannot hold become U+FFFD, and a text longer than the format allows is cut. What
/// looks like an escape is escaped, so that decode() returns it unchanged.
QByteArray encode(const QString &text);

/// Whether \p text says true or false, with blanks around it or not; nothing if neither.
std::optional<bool> toBool(const QByteArray &text);

/// Sets \p value to the finite number in \p text, with blanks around it or not, and returns true;
/// false if it holds no number. The notation is that of XML Schema, without its names for infinity
/// and NaN.
bool toNumber(const QByteArray &text, double *value);

/// The digits of \p number, which toNumber() accepts, without the blanks around them, and in full
/// where it has an exponent: "1E+06" gives "1000000".
QString plainDigits(const QByteArray &number);

} // namespace CellText
