// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/numberformats.h"

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
    const int end = int(code.indexOf(QLatin1Char(']'), position));
    if (end < 0) {
        return int(code.size());
    }
    const QString inside = code.mid(position + 1, end - position - 1).toLower();
    const QString letter = inside.left(1);
    *elapsed = !letter.isEmpty() && QStringLiteral("hms").contains(letter)
        && inside == letter.repeated(inside.size());
    return end + 1;
}

int skipQuotes(const QString &code, int position)
{
    const int end = int(code.indexOf(QLatin1Char('"'), position + 1));
    return end < 0 ? int(code.size()) : end + 1;
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

// Letters beyond ASCII are no part of words: nobody needs to quote a sign for "year" behind "yyyy".
bool isWordLetter(QChar character)
{
    return character.unicode() < 0x80 && character.isLetter();
}

// The position behind the letters side by side that begin at \p position.
int skipLetters(const QString &code, int position)
{
    while (position < code.size() && isWordLetter(code.at(position))) {
        ++position;
    }
    return position;
}

// Weekdays, years of an era and Buddhist years, which are codes only as a whole word: "EUR" and
// "General" hold their letters, too.
bool isCalendarWord(const QString &letters)
{
    static const QStringList words = {
        QStringLiteral("aaa"),  QStringLiteral("aaaa"), QStringLiteral("bb"),
        QStringLiteral("bbbb"), QStringLiteral("e"),    QStringLiteral("ee"),
        QStringLiteral("ge"),   QStringLiteral("gee"),  QStringLiteral("gge"),
        QStringLiteral("ggee"), QStringLiteral("ggge"), QStringLiteral("gggee"),
    };
    return words.contains(letters);
}

// The length of the code of dates and times that \p text begins with; 0 without one.
int dateCodeLength(QStringView text)
{
    for (const char *const code : {"am/pm", "a/p"}) {
        const QLatin1String latin(code);
        if (text.startsWith(latin, Qt::CaseInsensitive)) {
            return int(latin.size());
        }
    }
    return dateLetters.contains(text.at(0), Qt::CaseInsensitive) ? 1 : 0;
}

// Whether the letters side by side that \p text begins with are codes of dates and times, all of
// them. A T joins the day and the hour, as in "yyyymmddThhmm".
bool isDateWord(QStringView text)
{
    QChar before;
    while (!text.isEmpty() && isWordLetter(text.at(0))) {
        const bool joins = before.toLower() == QLatin1Char('d')
            && text.startsWith(QLatin1String("th"), Qt::CaseInsensitive);
        const int length = joins ? 1 : dateCodeLength(text);
        if (length == 0) {
            return false;
        }
        before = text.at(length - 1);
        text = text.mid(length);
    }
    return !before.isNull();
}

} // namespace

Kind builtinKind(int number)
{
    for (const Range &range : dateRanges) {
        if (number >= range.first && number <= range.last) {
            return Kind::Date;
        }
    }
    return Kind::Number;
}

bool isDateCode(const QString &code)
{
    int position = 0;
    while (position < code.size()) {
        const QChar character = code.at(position);
        if (isWordLetter(character)) {
            const int end = skipLetters(code, position);
            const QString letters = code.mid(position, end - position).toLower();
            if (isDateWord(QStringView(code).mid(position)) || isCalendarWord(letters)) {
                return true;
            }
            position = letters == QLatin1String("general") ? nextSection(code, position) : end;
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
