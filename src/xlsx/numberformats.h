// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Which number formats of a workbook show a number as a date or a time.
namespace NumberFormats
{

enum class Kind {
    Number,
    Date,
    /// Nothing says whether it is a date.
    Unknown
};

/// Numbers from this one on have no meaning but that of the format code given with them.
constexpr int firstCustom = 164;

/// The kind of the built-in format \p number; Unknown from firstCustom on.
Kind builtinKind(int number);

/// Whether \p code, a custom format such as "[Red]dd.mm.yyyy" or "0.0 \"mmol\"", has a section
/// whose first meaningful character is a letter of dates and times, as in "mm:ss.0". Quoted and
/// escaped texts, colours, conditions and currencies mean nothing; elapsed times such as "[h]" are
/// times. A section that starts with a placeholder of digits stays a number, so that "0.0 mmol/mol"
/// without quotes is one.
bool isDateCode(const QString &code);

} // namespace NumberFormats
