// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/resultplotgeometry.h"

#include <cmath>

#include "base/xmltext.h"

namespace
{

// Distance from the center in the unit of the axis, and the number that the label shows.
struct Tick {
    double distance;
    double label;
};

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

} // namespace

void ResultPlotAxis::include(double value)
{
    if (value < lowest) {
        lowest = value;
    }
    if (value > highest) {
        highest = value;
    }
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
    : xScale((plotWidth - 60) / (data.convergence.span() * 2)),
      yScale((plotHeight - 80) / (data.variability.span() * 2)), width(plotWidth),
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
    placeText(kvadrantLabels, left, upper, texts.betterWorse);
    placeText(kvadrantLabels, right, upper, texts.worseWorse);
    placeText(kvadrantLabels, left, lower, texts.betterBetter);
    placeText(kvadrantLabels, right, lower, texts.worseBetter);
}

void ResultPlotGeometry::buildCross()
{
    placeLine(axesPath, {10, halfHeight}, {width - 10, halfHeight});
    placeLine(axesPath, {halfWidth, 10}, {halfWidth, height - 10});
}

void ResultPlotGeometry::buildHorizontalTicks(const ResultPlotAxis &axis)
{
    if (axis.isEmpty()) {
        return;
    }
    const double low = axis.lowest - axis.center;
    const double high = axis.highest - axis.center;
    // Required as is: the last label tells half the distance, the others a value of the axis.
    for (const Tick &tick :
         {Tick{low, axis.lowest}, Tick{low * 0.5, (axis.center + axis.lowest) * 0.5},
          Tick{high, axis.highest}, Tick{high * 0.5, high * 0.5}}) {
        const double x = xAt(tick.distance);
        if (placeLine(axesPath, {x, halfHeight}, {x, halfHeight + 10})) {
            placeText(tickLabels, x + 2, halfHeight + 12, number(tick.label));
        }
    }
}

void ResultPlotGeometry::buildVerticalTicks(const ResultPlotAxis &axis, const TextWidth &textWidth)
{
    if (axis.isEmpty()) {
        return;
    }
    const double low = axis.lowest - axis.center;
    const double high = axis.highest - axis.center;
    for (const Tick &tick :
         {Tick{low, axis.lowest}, Tick{low * 0.5, (axis.center + axis.lowest) * 0.5},
          Tick{high, axis.highest}, Tick{high * 0.5, (axis.center + axis.highest) * 0.5}}) {
        const double y = yAt(tick.distance);
        if (placeLine(axesPath, {halfWidth, y}, {halfWidth - 10, y})) {
            const QString label = number(tick.label);
            placeText(tickLabels, halfWidth - textWidth(label), y + 10, label);
        }
    }
}

void ResultPlotGeometry::buildCenterLabels(const ResultPlotData &data, const TextWidth &textWidth)
{
    const QString centerY = number(data.variability.center);
    placeText(centerLabels, halfWidth + 2, halfHeight + 10, number(data.convergence.center));
    placeText(centerLabels, halfWidth - textWidth(centerY) - 3, halfHeight - 2, centerY);
}

void ResultPlotGeometry::buildDots(const ResultPlotData &data)
{
    dots.reserve(data.patients.size());
    for (const ResultPlotData::Patient &patient : data.patients) {
        const QPointF center(xAt(patient.convergence - data.convergence.center),
                             yAt(patient.variability - data.variability.center));
        if (isPlaceable(center)) {
            const QPoint position(int(center.x() + 4), int(center.y() + 4));
            dots.append({center, {position, patient.id}});
        }
    }
}

void ResultPlotGeometry::buildAxisNames(const ResultPlotTexts &texts, const TextWidth &textWidth)
{
    placeText(axisNames, width - textWidth(texts.convergence) - 10, halfHeight + 25,
              texts.convergence);
    placeText(axisNames, halfWidth - textWidth(texts.variability) - 3, 30, texts.variability);
}

void ResultPlotGeometry::buildMethodLines(const ResultPlotTexts &texts)
{
    placeText(methodLines, 5, height - 2, texts.convergenceMethod);
    placeText(methodLines, 5, height - 15, texts.variabilityMethod);
}
