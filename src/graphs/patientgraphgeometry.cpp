// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/patientgraphgeometry.h"

#include <cmath>

#include "base/truncation.h"
#include "base/xmltext.h"

namespace
{

constexpr quint64 bandHeight = 10; // mmol/mol
constexpr double mostGridLines = 1000;

// In pixels.
constexpr double gridLeft = 50; // left end of the horizontal axis and of the grid lines
constexpr double gridTop = 30; // y of the highest grid line
constexpr double axisTop = 15;
constexpr double axisRightMargin = 25;
constexpr double stepsRightMargin = 15; // one step after the last measurement
constexpr double legendHeight = 120; // below the horizontal axis
constexpr QPointF unitPosition(10, 25);

// In pixels, from what is labelled to the left end of the label's baseline.
constexpr QPointF measurementOffset(-3, 21);
constexpr QPointF axisLetterOffset(0, 10);
constexpr QPointF gridLabelOffset(-15, 12);

// The legend, in pixels.
constexpr double legendLeft = 20;
constexpr double legendLineHeight = 30;
constexpr QSizeF legendSquareSize(20, 20);
constexpr QPointF legendNameOffset(25, 15); // from the top left corner of the square
constexpr double legendGap = 15; // after the name

// Every how many bands there is a grid line: 1, or the power of ten that makes them few enough.
quint64 bandStride(double bands)
{
    quint64 stride = 1;
    while (std::floor(bands / double(stride)) > mostGridLines) {
        stride *= 10;
    }
    return stride;
}

} // namespace

PatientGraphBounds::PatientGraphBounds(const QVector<PatientRecord> &patients)
{
    for (const PatientRecord &patient : patients) {
        for (const double value : patient.values) {
            // A value in this branch is above 0, so that toUnsigned() does not wrap.
            if (value > double(maxValue)) {
                maxValue = toUnsigned(value);
            }
        }
        if (!patient.values.isEmpty()) {
            maxCount = qMax(maxCount, double(patient.values.size()));
        }
    }
}

PatientGraphGeometry::PatientGraphGeometry(const QVector<PatientRecord> &patients,
                                           const PatientGraphBounds &bounds, double width,
                                           double height, const TextWidth &textWidth)
    : axisY(height - legendHeight), axisRight(width - axisRightMargin),
      bands(std::ceil(double(bounds.maxValue) / double(bandHeight))),
      xStep((width - (axisX + stepsRightMargin)) / bounds.maxCount),
      yScale((height - (legendHeight + gridTop)) / (bands * double(bandHeight)))
{
    buildAxes(bounds);
    patientPaths.reserve(patients.size());
    for (const PatientRecord &patient : patients) {
        patientPaths.append(patientPath(patient.values));
    }
    buildHorizontalLabels(bounds, patients.isEmpty() ? 0 : int(patients.first().values.size()));
    buildLegend(patients, width, textWidth);
}

void PatientGraphGeometry::buildAxes(const PatientGraphBounds &bounds)
{
    placeLine(axesPath, {gridLeft, axisY}, {axisRight, axisY});
    placeLine(axesPath, {axisX, axisY + tickLength}, {axisX, axisTop});
    buildGrid();
    for (int i = 1; i < bounds.maxCount; ++i) {
        placeLine(axesPath, {xAt(i), axisY}, {xAt(i), axisY + tickLength});
    }
}

void PatientGraphGeometry::buildGrid()
{
    const quint64 stride = bandStride(bands);
    const auto lines = int(bands / double(stride));
    for (int line = 1; line <= lines; ++line) {
        const quint64 band = quint64(line) * stride;
        const QPointF start(gridLeft, axisY - yScale * double(bandHeight) * double(band));
        if (placeLine(axesPath, start, {axisRight, start.y()})) {
            placeText(verticalLabels, start + gridLabelOffset, QString::number(bandHeight * band));
        }
    }
    if (lines > 0) {
        placeText(verticalLabels, unitPosition, QStringLiteral("mmol/mol"));
    }
}

QPainterPath PatientGraphGeometry::patientPath(const QVector<double> &values) const
{
    QPainterPath path;
    // No value has a position without a scale or on a rectangle beyond the range.
    if (!std::isfinite(yScale) || !isPlaceable({xStep, axisY})) {
        return path;
    }
    for (int i = 0; i < values.size(); ++i) {
        const QPointF point(xAt(i), clampedToRange(yAt(values.at(i))));
        if (isPlaceable(point)) {
            path.elementCount() == 0 ? path.moveTo(point) : path.lineTo(point);
        }
    }
    return path;
}

void PatientGraphGeometry::buildHorizontalLabels(const PatientGraphBounds &bounds,
                                                 int firstPatientCount)
{
    for (int i = 0; i < bounds.maxCount; ++i) {
        // In one addition: that of xAt() and one more would round differently.
        const double x = i * xStep + (axisX + measurementOffset.x());
        placeText(horizontalLabels, {x, axisY + measurementOffset.y()}, QString::number(i + 1));
        // Required as is: the first patient, not the longest, decides whether the "x" is there.
        if (i == firstPatientCount - 1) {
            placeText(horizontalLabels, QPointF(axisRight, axisY) + axisLetterOffset,
                      QStringLiteral("x"));
        }
    }
}

void PatientGraphGeometry::buildLegend(const QVector<PatientRecord> &patients, double width,
                                       const TextWidth &textWidth)
{
    QPointF corner(legendLeft, axisY + legendLineHeight);
    legend.reserve(patients.size());
    for (int i = 0; i < patients.size(); ++i) {
        const QString name = xmlText(patients.at(i).id);
        const double entryWidth = legendNameOffset.x() + textWidth(name) + legendGap;
        // Required as is: an entry wider than the graph leaves a line empty above it.
        if (corner.x() + entryWidth >= width) {
            corner = {legendLeft, corner.y() + legendLineHeight};
        }
        if (isPlaceable(corner)) {
            legend.append(
                {i, QRectF(corner, legendSquareSize), textAt(corner + legendNameOffset, name)});
        }
        corner.rx() += entryWidth;
    }
}
