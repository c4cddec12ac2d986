// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/celltext.h"

#include <algorithm>
#include <cmath>

#include <QRegularExpression>

#include "base/xmltext.h"
#include "xlsx/formatlimits.h"

namespace CellText
{

namespace
{

constexpr QChar ellipsis(0x2026);
// More characters than any double has in full: 309 digits before and 1,074 after the point.
constexpr int longestNumber = 1500;
// Length of _xHHHH_, which nearly no text has.
constexpr int escapeLength = 7;
const QLatin1String escapeBegin("_x");

int hexDigit(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9') {
        return code - '0';
    }
    const int letter = code | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// The code unit of the escape with which \p text begins, or -1 if it begins with none.
int escapedUnit(QStringView text)
{
    const bool isFramed = text.size() >= escapeLength && text[0] == QLatin1Char('_')
        && text[1] == QLatin1Char('x') && text[escapeLength - 1] == QLatin1Char('_');
    int unit = isFramed ? 0 : -1;
    for (int i = 2; i < escapeLength - 1 && unit >= 0; ++i) {
        const int digit = hexDigit(text[i]);
        unit = digit < 0 ? -1 : unit * 16 + digit;
    }
    return unit;
}

// In place, because files can have hundreds of megabytes of them.
void decodeEscapes(QString *text)
{
    const int size = int(text->size());
    int to = int(text->indexOf(escapeBegin));
    if (to < 0) {
        return;
    }
    QChar *const units = text->data();
    for (int at = to; at < size; ++to) {
        const int unit = escapedUnit(QStringView(units + at, size - at));
        units[to] = unit < 0 ? units[at] : QChar(unit);
        at += unit < 0 ? 1 : escapeLength;
    }
    text->truncate(to);
}

void unifyLineEnds(QString *text)
{
    text->replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text->replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

// Whether the code unit may be a control character, half of a surrogate pair or no character at
// all. Nearly no text has such a unit.
bool isSuspect(QChar character)
{
    return character.unicode() < 0x20 || character.unicode() >= 0xd800;
}

// The toolkit drops a byte order mark in front, which is a character here.
QString fromUtf8(const QByteArray &utf8)
{
    return utf8.startsWith("\xef\xbb\xbf") ? QString::fromUtf8('.' + utf8).mid(1)
                                           : QString::fromUtf8(utf8);
}

} // namespace

QString decode(const QByteArray &utf8)
{
    QString text = fromUtf8(utf8);
    decodeEscapes(&text);
    if (std::any_of(text.cbegin(), text.cend(), isSuspect)) {
        unifyLineEnds(&text);
        text.replace(QLatin1Char('\v'), QLatin1Char(' '));
        text.replace(QLatin1Char('\f'), QLatin1Char(' '));
        text = xmlText(text);
    }
    if (text.size() > FormatLimits::textLength) {
        text = wholeCharacters(text, FormatLimits::textLength - 1) + ellipsis;
    }
    return text;
}

QByteArray encode(const QString &text)
{
    QString content = text;
    unifyLineEnds(&content);
    content = xmlText(content.left(FormatLimits::textLength));
    for (int at = int(content.size()) - escapeLength; at >= 0; --at) {
        if (escapedUnit(QStringView(content).mid(at)) >= 0) { // or what looks like one
            content.replace(at, 1, QStringLiteral("_x005F_"));
        }
    }
    return content.toHtmlEscaped().toUtf8();
}

std::optional<bool> toBool(const QByteArray &text)
{
    const QByteArray name = text.trimmed();
    if (name == "1" || name == "true") {
        return true;
    }
    return name == "0" || name == "false" ? std::optional<bool>(false) : std::nullopt;
}

// Below the smallest number the toolkit reports a failure, as for a text that is not a number; 0 is
// right. Beyond the largest one QByteArray gives infinity or 0 depending on the release, QString
// does not.
bool toNumber(const QByteArray &text, double *value)
{
    static const QRegularExpression decimal(
        QStringLiteral(R"(^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$)"));
    const QByteArray number = text.trimmed();
    bool isRead = number.size() <= longestNumber;
    *value = isRead ? number.toDouble(&isRead) : 0.0;
    if (!isRead && number.size() <= longestNumber) {
        const QString latin = QString::fromLatin1(number);
        isRead = decimal.match(latin).hasMatch();
        *value = latin.toDouble();
    }
    return isRead && std::isfinite(*value);
}

QString plainDigits(const QByteArray &number)
{
    static const QRegularExpression scientific(
        QStringLiteral(R"(^[+]?(-?)(\d*)\.?(\d*)[eE]([+-]?\d+)$)"));
    QString plain = QString::fromLatin1(number.trimmed());
    const QRegularExpressionMatch match = scientific.match(plain);
    if (!match.hasMatch()) {
        return plain;
    }
    bool isNear = false;
    const int exponent = match.captured(4).toInt(&isNear);
    // Beyond these exponents a finite number is 0 or rounds to 0.
    if (!isNear || exponent < -longestNumber || exponent > longestNumber) {
        return QStringLiteral("0");
    }
    const QLatin1Char zero('0');
    const int point = int(match.capturedLength(2)) + exponent;
    QString digits = QString(qMax(0, 1 - point), zero) + match.captured(2) + match.captured(3);
    digits = digits.leftJustified(point, zero).insert(qMax(1, point), QLatin1Char('.'));
    while (digits.endsWith(zero)) {
        digits.chop(1);
    }
    digits.chop(digits.endsWith(QLatin1Char('.')) ? 1 : 0);
    int zeros = 0;
    while (digits.at(zeros) == zero && digits.size() > zeros + 1
           && digits.at(zeros + 1) != QLatin1Char('.')) {
        ++zeros;
    }
    return match.captured(1) + digits.mid(zeros);
}

} // namespace CellText
