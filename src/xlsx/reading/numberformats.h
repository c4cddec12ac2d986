// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Which number formats of a workbook show a number as a date or a time.
namespace NumberFormats
{

enum class Kind { Number, Date, Missing };

/// The kind of the built-in format \p number; Number for one that is not built in.
Kind builtinKind(int number);

/// The kind of the custom format \p code, such as "[Red]dd.mm.yyyy" or "0.0 \"mmol\"": a date if it
/// has a section in which a code of dates and times comes before the first placeholder of digits,
/// as in "mm:ss.0". Missing if nobody can tell, as of a million characters.
///
/// Letters side by side are such codes only when all of them are: years, months, days, hours,
/// minutes and seconds in any order, with AM/PM or A/P ("yyyymmdd", "hAM/PM"), or one of the words
/// for weekdays and eras. So "USD 0.00" and "Standard" are numbers, whose letters stand for
/// themselves. Quoted and escaped texts, colours, conditions and currencies mean nothing; elapsed
/// times such as "[h]" are times. "0.0 mmol/mol" without quotes is a number.
Kind customKind(const QString &code);

} // namespace NumberFormats
