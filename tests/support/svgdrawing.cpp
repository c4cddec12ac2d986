// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/svgdrawing.h"

#include <QBuffer>
#include <QPainter>
#include <QRegularExpression>
#include <QStringList>
#include <QSvgGenerator>
#include <QXmlStreamReader>

namespace SvgDrawing
{

QByteArray drawn(const QSize &size, const std::function<void(QPainter *)> &draw)
{
    QBuffer buffer;
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(size);
    generator.setViewBox(QRect(QPoint(0, 0), size));
    QPainter painter(&generator);
    draw(&painter);
    painter.end();
    return buffer.data();
}

QString fault(const QByteArray &svg)
{
    static const QRegularExpression noNumber("(?<![a-z])(nan|inf)(?![a-z])",
                                             QRegularExpression::CaseInsensitiveOption);
    QXmlStreamReader reader(svg);
    while (!reader.atEnd()) {
        reader.readNext();
        const QXmlStreamAttributes attributes = reader.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            if (noNumber.match(attribute.value().toString()).hasMatch()) {
                return attribute.name().toString() + '=' + attribute.value().toString();
            }
        }
    }
    return reader.hasError() ? reader.errorString() : QString();
}

QString texts(const QByteArray &svg)
{
    QStringList all;
    QXmlStreamReader reader(svg);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement
            && reader.name() == QLatin1String("text")) {
            all << reader.readElementText().trimmed();
        }
    }
    return all.join('\n');
}

} // namespace SvgDrawing
