// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/graphplacement.h"

#include <cmath>

#include <QPainter>

namespace
{

// False for NaN, with which every comparison is false.
bool isInRange(double position)
{
    return std::abs(position) <= farthestPosition;
}

} // namespace

bool isPlaceable(const QPointF &point)
{
    return isInRange(point.x()) && isInRange(point.y());
}

double heldToRange(double position)
{
    if (position > farthestPosition) {
        return farthestPosition;
    }
    return position < -farthestPosition ? -farthestPosition : position;
}

void placeText(QVector<GraphText> &texts, double x, double y, const QString &text)
{
    if (isPlaceable({x, y})) {
        texts.append({{static_cast<int>(x), static_cast<int>(y)}, text});
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
        painter->drawText(text.position.x(), text.position.y(), text.text);
    }
}
