// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QPainterPath>
#include <QPoint>
#include <QString>
#include <QVector>

class QPainter;

/// How far from the origin, in pixels, a graph places anything. Text layout counts 64ths of a pixel
/// in an int, which ends at 2^25; half of that leaves room for the text itself.
inline constexpr double farthestPosition = 16777216.0; // 2^24

/// Length of a tick in either graph, in pixels.
inline constexpr double tickLength = 10;

/// Whether \p point is finite and within farthestPosition on both axes.
bool isPlaceable(const QPointF &point);

/// \p position, at most farthestPosition away from 0 on its side. NaN stays NaN.
double clampedToRange(double position);

/// A text and the left end of its baseline, in whole pixels.
struct GraphText {
    QPoint position;
    QString text;
};
Q_DECLARE_TYPEINFO(GraphText, Q_MOVABLE_TYPE);

/// The width of a text in pixels, in the font in which it is measured.
using TextWidth = std::function<double(const QString &)>;

/// \p text at \p start, which must be placeable; its coordinates are truncated toward zero.
GraphText textAt(const QPointF &start, const QString &text);

/// Appends textAt(\p start, \p text), or nothing if \p start is not placeable.
void placeText(QVector<GraphText> &texts, const QPointF &start, const QString &text);

/// Adds a line to \p path; returns false, and adds nothing, if an end of it is not placeable.
bool placeLine(QPainterPath &path, const QPointF &from, const QPointF &to);

/// Draws \p texts in order, with the painter's font and pen.
void drawTexts(QPainter *painter, const QVector<GraphText> &texts);
