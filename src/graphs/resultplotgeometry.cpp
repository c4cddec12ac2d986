// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/resultplotgeometry.h"

#include <algorithm>
#include <cmath>

#include "base/xmltext.h"

namespace
{

// In pixels.
constexpr double sideMargin = 30; // between the farthest value and the left or right edge
constexpr double verticalMargin = 40; // between the farthest value and the upper or lower edge
constexpr double crossMargin = 10; // between the ends of the cross and all edges

// In pixels, from what is labelled to the left end of the label's baseline.
constexpr QPointF xTickLabelOffset(2, 12);
constexpr QPointF xCenterLabelOffset(2, 10);
constexpr QPointF dotNameOffset(4, 4);
constexpr QPointF convergenceMethodOffset(5, -2); // from the lower left corner
constexpr QPointF variabilityMethodOffset(5, -15); // from the lower left corner
// The same to its right end.
constexpr QPointF yTickLabelOffset(0, 10);
constexpr QPointF yCenterLabelOffset(-3, -2);
constexpr QPointF xAxisNameOffset(-10, 25); // from the right edge
constexpr QPointF yAxisNameOffset(-3, 30); // from the upper edge

struct Tick {
    double distance; // from the center, in the unit of the axis
    double label;
};

// At the lowest value and halfway to it from the center, then the same for the highest value.
QVector<Tick> ticksOf(const ResultPlotAxis &axis, double lastLabel)
{
    if (axis.isEmpty()) {
        return {};
    }
    const double low = axis.lowest - axis.center;
    const double high = axis.highest - axis.center;
    return {{low, axis.lowest},
            {low * 0.5, (axis.center + axis.lowest) * 0.5},
            {high, axis.highest},
            {high * 0.5, lastLabel}};
}

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

void placeTextBefore(const QPointF &end, const QPointF &offset, QVector<GraphText> &texts,
                     const QString &text, const TextWidth &textWidth)
{
    placeText(texts, QPointF(end.x() - textWidth(text), end.y()) + offset, text);
}

} // namespace

void ResultPlotAxis::include(double value)
{
    // The bound comes first, so that a comparison with NaN leaves it.
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
}

double ResultPlotAxis::span() const
{
    return qMax(std::abs(highest - center), std::abs(center - lowest));
}

ResultPlotData::ResultPlotData(const QVector<PatientScoreRecord> &scores, int variabilityIndex,
                               int convergenceIndex, double centerY, double centerX)
{
    convergence.center = centerX;
    variability.center = centerY;
    patients.reserve(scores.size());
    for (const PatientScoreRecord &score : scores) {
        const double x = score.convergence.value(convergenceIndex, qQNaN());
        const double y = score.variability.value(variabilityIndex, qQNaN());
        convergence.include(x);
        variability.include(y);
        patients.append({xmlText(score.id), x, y});
    }
}

ResultPlotGeometry::ResultPlotGeometry(const ResultPlotData &data, const ResultPlotTexts &texts,
                                       double plotWidth, double plotHeight,
                                       const TextWidth &textWidth)
    : xScale((plotWidth - 2 * sideMargin) / (data.convergence.span() * 2)),
      yScale((plotHeight - 2 * verticalMargin) / (data.variability.span() * 2)), width(plotWidth),
      height(plotHeight), halfWidth(plotWidth * 0.5), halfHeight(plotHeight * 0.5)
{
    buildKvadrantLabels(texts);
    buildCross();
    buildHorizontalTicks(data.convergence);
    buildVerticalTicks(data.variability, textWidth);
    buildCenterLabels(data, textWidth);
    buildDots(data);
    buildAxisNames(texts, textWidth);
    buildMethodLines(texts);
}

void ResultPlotGeometry::buildKvadrantLabels(const ResultPlotTexts &texts)
{
    const double left = halfWidth * 0.5;
    const double right = halfWidth * 0.5 + halfWidth;
    const double upper = halfHeight * 0.5;
    const double lower = halfHeight * 0.5 + halfHeight;
    placeText(kvadrantLabels, {left, upper}, texts.betterWorse);
    placeText(kvadrantLabels, {right, upper}, texts.worseWorse);
    placeText(kvadrantLabels, {left, lower}, texts.betterBetter);
    placeText(kvadrantLabels, {right, lower}, texts.worseBetter);
}

void ResultPlotGeometry::buildCross()
{
    placeLine(axesPath, {crossMargin, halfHeight}, {width - crossMargin, halfHeight});
    placeLine(axesPath, {halfWidth, crossMargin}, {halfWidth, height - crossMargin});
}

void ResultPlotGeometry::buildHorizontalTicks(const ResultPlotAxis &axis)
{
    // Required as is: the last label is half the distance, all others are values on the axis.
    for (const Tick &tick : ticksOf(axis, (axis.highest - axis.center) * 0.5)) {
        const QPointF start(xAt(tick.distance), halfHeight);
        if (placeLine(axesPath, start, start + QPointF(0, tickLength))) {
            placeText(tickLabels, start + xTickLabelOffset, number(tick.label));
        }
    }
}

void ResultPlotGeometry::buildVerticalTicks(const ResultPlotAxis &axis, const TextWidth &textWidth)
{
    for (const Tick &tick : ticksOf(axis, (axis.center + axis.highest) * 0.5)) {
        const QPointF start(halfWidth, yAt(tick.distance));
        if (placeLine(axesPath, start, start - QPointF(tickLength, 0))) {
            placeTextBefore(start, yTickLabelOffset, tickLabels, number(tick.label), textWidth);
        }
    }
}

void ResultPlotGeometry::buildCenterLabels(const ResultPlotData &data, const TextWidth &textWidth)
{
    const QPointF cross(halfWidth, halfHeight);
    placeText(centerLabels, cross + xCenterLabelOffset, number(data.convergence.center));
    placeTextBefore(cross, yCenterLabelOffset, centerLabels, number(data.variability.center),
                    textWidth);
}

void ResultPlotGeometry::buildDots(const ResultPlotData &data)
{
    dots.reserve(data.patients.size());
    for (const ResultPlotData::Patient &patient : data.patients) {
        const QPointF center(xAt(patient.convergence - data.convergence.center),
                             yAt(patient.variability - data.variability.center));
        if (isPlaceable(center)) {
            dots.append({center, textAt(center + dotNameOffset, patient.id)});
        }
    }
}

void ResultPlotGeometry::buildAxisNames(const ResultPlotTexts &texts, const TextWidth &textWidth)
{
    placeTextBefore({width, halfHeight}, xAxisNameOffset, axisNames, texts.convergence, textWidth);
    placeTextBefore({halfWidth, 0}, yAxisNameOffset, axisNames, texts.variability, textWidth);
}

void ResultPlotGeometry::buildMethodLines(const ResultPlotTexts &texts)
{
    const QPointF corner(0, height);
    placeText(methodLines, corner + convergenceMethodOffset, texts.convergenceMethod);
    placeText(methodLines, corner + variabilityMethodOffset, texts.variabilityMethod);
}
