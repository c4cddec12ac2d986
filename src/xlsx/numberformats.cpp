// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/numberformats.h"

#include <algorithm>
#include <array>

#include <QStringList>

namespace NumberFormats
{

namespace
{

struct Range {
    int first;
    int last;
};

// Dates and times for all, for East Asia (27 to 36, 50 to 58) and for Thailand (71 to 81).
constexpr std::array<Range, 5> dateRanges = {{{14, 22}, {27, 36}, {45, 47}, {50, 58}, {71, 81}}};

const QString dateLetters = QStringLiteral("ymdhs");
const QString digitPlaceholders = QStringLiteral("0#?");

// The position behind the bracket that begins at \p position. Sets \p elapsed when it is an elapsed
// time: nothing but one letter of times, once or several times.
int skipBracket(const QString &code, int position, bool *elapsed)
{
    const int end = code.indexOf(QLatin1Char(']'), position);
    if (end < 0) {
        return code.size();
    }
    const QString inside = code.mid(position + 1, end - position - 1).toLower();
    const QString letter = inside.left(1);
    *elapsed = !letter.isEmpty() && QStringLiteral("hms").contains(letter)
        && inside == letter.repeated(inside.size());
    return end + 1;
}

int skipQuotes(const QString &code, int position)
{
    const int end = code.indexOf(QLatin1Char('"'), position + 1);
    return end < 0 ? code.size() : end + 1;
}

int nextSection(const QString &code, int position)
{
    while (position < code.size() && code.at(position) != QLatin1Char(';')) {
        switch (code.at(position).toLatin1()) {
        case '"':
            position = skipQuotes(code, position);
            break;
        case '\\':
        case '_':
        case '*':
            position += 2;
            break;
        default:
            ++position;
        }
    }
    return position + 1;
}

// Whether \p letters, all that stand side by side, ask for a part of a date. Weekdays, years of an
// era and Buddhist years are a date only alone: "EUR" and "General" hold their letters, too.
bool isDateWord(const QString &letters)
{
    static const QStringList calendarWords = {
        QStringLiteral("aaa"),  QStringLiteral("aaaa"), QStringLiteral("bb"),
        QStringLiteral("bbbb"), QStringLiteral("e"),    QStringLiteral("ee"),
        QStringLiteral("ge"),   QStringLiteral("gee"),  QStringLiteral("gge"),
        QStringLiteral("ggee"), QStringLiteral("ggge"), QStringLiteral("gggee"),
    };
    const bool hasDateLetter = std::any_of(
        letters.begin(), letters.end(), [](QChar letter) { return dateLetters.contains(letter); });
    return hasDateLetter || calendarWords.contains(letters);
}

QString lettersAt(const QString &code, int position)
{
    int end = position;
    while (end < code.size() && code.at(end).isLetter()) {
        ++end;
    }
    return code.mid(position, end - position).toLower();
}

} // namespace

Kind builtinKind(int number)
{
    for (const Range &range : dateRanges) {
        if (number >= range.first && number <= range.last) {
            return Kind::Date;
        }
    }
    return number < firstCustom ? Kind::Number : Kind::Unknown;
}

bool isDateCode(const QString &code)
{
    int position = 0;
    while (position < code.size()) {
        const QChar character = code.at(position);
        if (const QString letters = lettersAt(code, position); !letters.isEmpty()) {
            if (isDateWord(letters)) {
                return true;
            }
            position = letters == QLatin1String("general") ? nextSection(code, position)
                                                           : position + letters.size();
            continue;
        }
        bool elapsed = false;
        switch (character.toLatin1()) {
        case '"':
            position = skipQuotes(code, position);
            break;
        case '[':
            position = skipBracket(code, position, &elapsed);
            if (elapsed) {
                return true;
            }
            break;
        case '\\': // the next character as it stands
        case '_': // a blank as wide as the next character
        case '*': // the next character as often as it fits
            position += 2;
            break;
        default:
            position =
                digitPlaceholders.contains(character) ? nextSection(code, position) : position + 1;
        }
    }
    return false;
}

} // namespace NumberFormats
