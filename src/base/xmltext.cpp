// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/xmltext.h"

bool fitsXml(QChar character)
{
    const ushort code = character.unicode();
    return !character.isSurrogate() && code <= 0xFFFD
        && (code >= ' ' || code == '\t' || code == '\n' || code == '\r');
}

bool isSurrogatePairAt(const QString &text, int index)
{
    return index >= 0 && index + 1 < text.size() && text.at(index).isHighSurrogate()
        && text.at(index + 1).isLowSurrogate();
}

QString wholeCharacters(const QString &text, int length)
{
    return text.left(isSurrogatePairAt(text, length - 1) ? length - 1 : length);
}

QString xmlText(const QString &text)
{
    QString result = text;
    for (int i = 0; i < result.size(); ++i) {
        if (isSurrogatePairAt(result, i)) {
            ++i;
        } else if (!fitsXml(result.at(i))) {
            result[i] = QChar::ReplacementCharacter;
        }
    }
    return result;
}
