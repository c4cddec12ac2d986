// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/celltext.h"

#include <algorithm>
#include <cmath>

#include "base/xmltext.h"
#include "xlsx/formatlimits.h"

namespace CellText
{

namespace
{

constexpr QChar replacement = QChar::ReplacementCharacter;
constexpr QChar ellipsis(0x2026);
// Length of _xHHHH_.
constexpr int escapeLength = 7;
// More characters than any double has in full: 309 digits before and 1,074 after the point.
constexpr int longestNumber = 1500;

int hexDigit(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9') {
        return code - '0';
    }
    const int letter = code | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// The code unit of the escape at \p position, or -1 if none begins there.
int escapedUnit(const QString &text, int position)
{
    if (position + escapeLength > text.size() || text.at(position + 1) != QLatin1Char('x')
        || text.at(position + escapeLength - 1) != QLatin1Char('_')) {
        return -1;
    }
    int unit = 0;
    for (int i = position + 2; i < position + escapeLength - 1; ++i) {
        const int digit = hexDigit(text.at(i));
        if (digit < 0) {
            return -1;
        }
        unit = unit * 16 + digit;
    }
    return unit;
}

void decodeEscapes(QString *text)
{
    int from = int(text->indexOf(QLatin1String("_x")));
    if (from < 0) {
        return;
    }
    QString decoded = text->left(from);
    while (from < text->size()) {
        const int unit = text->at(from) == QLatin1Char('_') ? escapedUnit(*text, from) : -1;
        decoded += unit < 0 ? text->at(from) : QChar(unit);
        from += unit < 0 ? 1 : escapeLength;
    }
    *text = decoded;
}

// Where a text looks like an escape, escape its first character.
void escapeEscapes(QString *text)
{
    static const QString escapedUnderscore = QStringLiteral("_x005F_");
    int from = int(text->indexOf(QLatin1String("_x")));
    while (from >= 0) {
        const bool escape = escapedUnit(*text, from) >= 0;
        if (escape) {
            text->replace(from, 1, escapedUnderscore);
        }
        from = int(text->indexOf(QLatin1String("_x"), from + (escape ? escapeLength : 1)));
    }
}

void unifyLineEnds(QString *text)
{
    if (!text->contains(QLatin1Char('\r'))) {
        return;
    }
    text->replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text->replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

// Whether the code unit may be a control character, half of a surrogate pair or no character at
// all. Nearly no text has such a unit.
bool isSuspect(ushort unit)
{
    return unit < 0x20 || unit >= 0xd800;
}

QChar printable(QChar character)
{
    const ushort unit = character.unicode();
    if (unit == '\v' || unit == '\f') {
        return QLatin1Char(' ');
    }
    return fitsXml(character) ? character : replacement;
}

// The toolkit drops a byte order mark in front, which is a character here.
QString fromUtf8(const QByteArray &utf8)
{
    return utf8.startsWith("\xef\xbb\xbf") ? QString::fromUtf8('.' + utf8).mid(1)
                                           : QString::fromUtf8(utf8);
}

void replaceControls(QString *text)
{
    const ushort *const first = text->utf16();
    const ushort *const last = first + text->size();
    const ushort *const suspect = std::find_if(first, last, isSuspect);
    for (int i = static_cast<int>(suspect - first); i < text->size(); ++i) {
        if (isSurrogatePairAt(*text, i)) {
            ++i;
        } else if (const QChar character = printable(text->at(i)); character != text->at(i)) {
            (*text)[i] = character;
        }
    }
}

void cut(QString *text)
{
    if (text->size() <= FormatLimits::textLength) {
        return;
    }
    int end = FormatLimits::textLength - 1;
    if (isSurrogatePairAt(*text, end - 1)) {
        --end;
    }
    text->truncate(end);
    text->append(ellipsis);
}

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

const char *skipDigits(const char *from)
{
    while (isDigit(*from)) {
        ++from;
    }
    return from;
}

// [+-] digits [. digits] [e [+-] digits], with digits on at least one side of the point.
bool isDecimal(const QByteArray &text)
{
    const char *at = text.constData();
    at += *at == '+' || *at == '-' ? 1 : 0;
    const char *const whole = at;
    at = skipDigits(at);
    auto digits = at - whole;
    if (*at == '.') {
        const char *const fraction = ++at;
        at = skipDigits(at);
        digits += at - fraction;
    }
    if (digits == 0) {
        return false;
    }
    if (*at == 'e' || *at == 'E') {
        ++at;
        at += *at == '+' || *at == '-' ? 1 : 0;
        const char *const exponent = at;
        at = skipDigits(at);
        if (at == exponent) {
            return false;
        }
    }
    return at == text.constData() + text.size();
}

QByteArray withoutBlanks(const QByteArray &text)
{
    const bool blanks = !text.isEmpty() && (isBlank(text.front()) || isBlank(text.back()));
    return blanks ? text.trimmed() : text;
}

QByteArray withoutLeadingZeros(const QByteArray &digits)
{
    int zeros = 0;
    while (zeros < digits.size() - 1 && digits.at(zeros) == '0') {
        ++zeros;
    }
    return digits.mid(zeros);
}

} // namespace

QString decode(const QByteArray &utf8)
{
    QString text = fromUtf8(utf8);
    decodeEscapes(&text);
    unifyLineEnds(&text);
    replaceControls(&text);
    cut(&text);
    return text;
}

QByteArray encode(const QString &text)
{
    QString content = text;
    unifyLineEnds(&content);
    content = xmlText(content.left(FormatLimits::textLength));
    escapeEscapes(&content);
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

bool toNumber(const QByteArray &text, double *value)
{
    const QByteArray number = withoutBlanks(text);
    if (number.isEmpty() || number.size() > longestNumber || !isDecimal(number)) {
        return false;
    }
    // Below the smallest number the conversion reports a failure and gives 0, which is right.
    // Beyond the largest one QByteArray gives infinity or 0 depending on the Qt release, QString
    // does not.
    bool isInRange = false;
    *value = number.toDouble(&isInRange);
    if (!isInRange) {
        *value = QString::fromLatin1(number).toDouble();
    }
    return std::isfinite(*value);
}

QString plainDigits(const QByteArray &number)
{
    QByteArray mantissa = withoutBlanks(number);
    const int exponentAt = int(qMax(mantissa.indexOf('e'), mantissa.indexOf('E')));
    if (exponentAt < 0) {
        return QString::fromLatin1(mantissa);
    }
    bool ok = false;
    const int exponent = mantissa.mid(exponentAt + 1).toInt(&ok);
    mantissa.truncate(exponentAt);
    // Beyond these exponents a finite number is 0 or rounds to 0.
    if (!ok || exponent < -longestNumber || exponent > longestNumber) {
        return QStringLiteral("0");
    }
    const QByteArray sign = mantissa.startsWith('-') ? "-" : "";
    if (mantissa.startsWith('-') || mantissa.startsWith('+')) {
        mantissa.remove(0, 1);
    }
    const int point = int(mantissa.indexOf('.') < 0 ? mantissa.size() : mantissa.indexOf('.'));
    QByteArray digits = mantissa.left(point) + mantissa.mid(point + 1);
    int wholeDigits = point + exponent;
    if (wholeDigits < 1) {
        digits.prepend(QByteArray(1 - wholeDigits, '0'));
        wholeDigits = 1;
    }
    digits.append(QByteArray(qMax(0, wholeDigits - int(digits.size())), '0'));
    QByteArray fraction = digits.mid(wholeDigits);
    while (fraction.endsWith('0')) {
        fraction.chop(1);
    }
    const QByteArray whole = withoutLeadingZeros(digits.left(wholeDigits));
    return QString::fromLatin1(sign + whole + (fraction.isEmpty() ? "" : '.' + fraction));
}

} // namespace CellText
