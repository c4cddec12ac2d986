// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QPainterPath>
#include <QPoint>
#include <QString>
#include <QVector>

class QPainter;

/// How far from the origin, in pixels, a graph places anything. Text layout counts 64ths of a pixel
/// in an int and so ends at 2^25; this leaves it room for the text itself.
inline constexpr double farthestPosition = 16777216.0; // 2^24

/// Whether \p point is finite and within farthestPosition on both axes.
bool isPlaceable(const QPointF &point);

/// \p position held to farthestPosition, on its side. NaN stays NaN.
double heldToRange(double position);

/// A text and the left end of its baseline.
struct GraphText {
    QPoint position;
    QString text;
};
Q_DECLARE_TYPEINFO(GraphText, Q_MOVABLE_TYPE);

/// The width of a text in pixels, in the font in which it is measured.
using TextWidth = std::function<double(const QString &)>;

/// Appends \p text at (\p x, \p y), each truncated toward zero; nothing when that is not placeable.
void placeText(QVector<GraphText> &texts, double x, double y, const QString &text);

/// Adds a line to \p path; returns false, and adds nothing, when an end of it is not placeable.
bool placeLine(QPainterPath &path, const QPointF &from, const QPointF &to);

/// Draws \p texts in order, in the painter's font and pen.
void drawTexts(QPainter *painter, const QVector<GraphText> &texts);
