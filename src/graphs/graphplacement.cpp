// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/graphplacement.h"

#include <cmath>

#include <QPainter>

bool isPlaceable(const QPointF &point)
{
    // NaN fails every comparison.
    return std::abs(point.x()) <= farthestPosition && std::abs(point.y()) <= farthestPosition;
}

double clampedToRange(double position)
{
    return std::abs(position) > farthestPosition ? std::copysign(farthestPosition, position)
                                                 : position;
}

GraphText textAt(const QPointF &start, const QString &text)
{
    return {{static_cast<int>(start.x()), static_cast<int>(start.y())}, text};
}

void placeText(QVector<GraphText> &texts, const QPointF &start, const QString &text)
{
    if (isPlaceable(start)) {
        texts.append(textAt(start, text));
    }
}

bool placeLine(QPainterPath &path, const QPointF &from, const QPointF &to)
{
    if (!isPlaceable(from) || !isPlaceable(to)) {
        return false;
    }
    path.moveTo(from);
    path.lineTo(to);
    return true;
}

void drawTexts(QPainter *painter, const QVector<GraphText> &texts)
{
    for (const GraphText &text : texts) {
        painter->drawText(text.position, text.text);
    }
}
