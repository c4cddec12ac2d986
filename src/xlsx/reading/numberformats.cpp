// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/numberformats.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QRegularExpression>

namespace NumberFormats
{

namespace
{

// Dates and times for all, for East Asia (27 to 36, 50 to 58) and for Thailand (71 to 81).
constexpr std::array<std::pair<int, int>, 5> dateRanges = {
    {{14, 22}, {27, 36}, {45, 47}, {50, 58}, {71, 81}}};

// Letters are spelled out in both cases: without regard to case some beyond ASCII would match, too.
// Those are not part of words: nobody needs to quote a sign for "year" after "yyyy".

// All letters side by side are codes: of dates and times, where a T joins the day and the hour, or
// a word for weekdays, Buddhist years and years of an era. Or an elapsed time.
const QString date = QStringLiteral(
    R"((?:(?:[aA][mM]/[pP][mM]|[aA]/[pP]|[dD][tT](?=[hH])|[ymdhsYMDHS])++)"
    R"(|[aA]{3,4}|[bB]{2}|[bB]{4}|[gG]{0,3}[eE]{1,2})(?![A-Za-z])|\[(?:[hH]+|[mM]+|[sS]+)\])");
// Texts in quotes, and characters after one that makes them plain, wide or repeated.
const QString literal = QStringLiteral(R"("[^"]*+"?|[\\_*].?)");
// From a placeholder of digits on, a section holds no date.
const QString placeholder = QStringLiteral(R"((?:[0#?]|[gG][eE][nN][eE][rR][aA][lL](?![A-Za-z])))");

} // namespace

Kind builtinKind(int number)
{
    const bool isDate =
        std::any_of(dateRanges.begin(), dateRanges.end(), [number](const auto &range) {
            return number >= range.first && number <= range.second;
        });
    return isDate ? Kind::Date : Kind::Number;
}

Kind customKind(const QString &code)
{
    static const QRegularExpression shape(
        QStringLiteral(
            R"((?s)^(?:(?!%1)(?:%2|%3(?:%2|[^;])*+;?|\[[^]]*+\]?|[A-Za-z]++|.))*+(?:%1))")
            .arg(date, literal, placeholder));
    const QRegularExpressionMatch match = shape.match(code);
    return match.hasMatch() ? Kind::Date : match.isValid() ? Kind::Number : Kind::Missing;
}

} // namespace NumberFormats
