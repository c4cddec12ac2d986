// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/patientgraphgeometry.h"

#include <cmath>

#include "base/truncation.h"
#include "base/xmltext.h"

namespace
{

constexpr quint64 bandHeight = 10; // mmol/mol
constexpr double mostBandsDrawn = 1000;

// 1, or the power of ten at which few enough bands are drawn.
quint64 bandStride(double bands)
{
    quint64 stride = 1;
    while (std::floor(bands / double(stride)) > mostBandsDrawn) {
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
    : axisY(height - 120), axisRight(width - 25),
      bands(std::ceil(double(bounds.maxValue) / double(bandHeight))),
      xStep((width - 75) / bounds.maxCount), yScale((height - 150) / (bands * double(bandHeight)))
{
    buildAxes(bounds);
    buildPatientPaths(patients);
    buildHorizontalLabels(bounds, patients.isEmpty() ? 0 : int(patients.first().values.size()),
                          width);
    buildLegend(patients, width, textWidth);
}

void PatientGraphGeometry::buildAxes(const PatientGraphBounds &bounds)
{
    placeLine(axesPath, {50, axisY}, {axisRight, axisY});
    placeLine(axesPath, {60, axisY + 10}, {60, 15});
    buildGrid();
    for (int i = 1; i < bounds.maxCount; ++i) {
        placeLine(axesPath, {xAt(i), axisY}, {xAt(i), axisY + 10});
    }
}

void PatientGraphGeometry::buildGrid()
{
    const quint64 stride = bandStride(bands);
    const auto lines = int(bands / double(stride));
    for (int line = 1; line <= lines; ++line) {
        const quint64 band = quint64(line) * stride;
        const double y = axisY - yScale * 10 * double(band);
        if (placeLine(axesPath, {50, y}, {axisRight, y})) {
            placeText(verticalLabels, 35, y + 12, QString::number(bandHeight * band));
        }
    }
    if (lines > 0) {
        placeText(verticalLabels, 10, 25, QStringLiteral("mmol/mol"));
    }
}

void PatientGraphGeometry::buildPatientPaths(const QVector<PatientRecord> &patients)
{
    patientPaths.reserve(patients.size());
    for (const PatientRecord &patient : patients) {
        patientPaths.append(patientPath(patient.values));
    }
}

QPainterPath PatientGraphGeometry::patientPath(const QVector<double> &values) const
{
    QPainterPath path;
    // Without a scale no value has a position, and on a rectangle beyond the range none has either.
    if (!std::isfinite(yScale) || !isPlaceable({xStep, axisY})) {
        return path;
    }
    for (int i = 0; i < values.size(); ++i) {
        const QPointF point(xAt(i), heldToRange(yAt(values.at(i))));
        if (!isPlaceable(point)) {
            continue;
        }
        if (path.elementCount() == 0) {
            path.moveTo(point);
        } else {
            path.lineTo(point);
        }
    }
    return path;
}

void PatientGraphGeometry::buildHorizontalLabels(const PatientGraphBounds &bounds,
                                                 int firstPatientCount, double width)
{
    for (int i = 0; i < bounds.maxCount; ++i) {
        placeText(horizontalLabels, i * xStep + 57, axisY + 21, QString::number(i + 1));
        // Required as is: the first patient, not the longest, decides whether the "x" is there.
        if (i == firstPatientCount - 1) {
            placeText(horizontalLabels, width - 25, axisY + 10, QStringLiteral("x"));
        }
    }
}

void PatientGraphGeometry::buildLegend(const QVector<PatientRecord> &patients, double width,
                                       const TextWidth &textWidth)
{
    constexpr double left = 20;
    constexpr double lineHeight = 30;
    constexpr double squareSize = 20;
    double x = left;
    double y = axisY + lineHeight;
    legend.reserve(patients.size());
    for (int i = 0; i < patients.size(); ++i) {
        const QString name = xmlText(patients.at(i).id);
        const double entryWidth = 25 + textWidth(name) + 15;
        // Required as is: an entry wider than the graph leaves a line empty above it.
        if (x + entryWidth >= width) {
            y += lineHeight;
            x = left;
        }
        if (isPlaceable({x, y})) {
            const QPoint position(int(x + 25), int(y + 15));
            legend.append({i, {x, y, squareSize, squareSize}, {position, name}});
        }
        x += entryWidth;
    }
}
