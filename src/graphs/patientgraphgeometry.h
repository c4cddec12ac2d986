// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QVector>

#include "analysis/patientrecord.h"
#include "graphs/graphplacement.h"

/// What the values of a group decide about its patient graph, whatever the size.
struct PatientGraphBounds {
    /// The bounds of \p patients, taken value by value.
    explicit PatientGraphBounds(const QVector<PatientRecord> &patients);

    /// The highest value truncated to a whole number: 0 when none is above 0, the largest unsigned
    /// number for what lies beyond it.
    quint64 maxValue = 0;
    /// The largest number of values of any one patient, -1 when nobody has a value.
    double maxCount = -1.0;
};

/// Where everything of the patient graph lies on a rectangle from (0, 0) to (width, height), in
/// pixels. What is not placeable is in none of the lists.
struct PatientGraphGeometry {
    /// One patient in the legend.
    struct LegendEntry {
        /// Index of the patient in the group, which decides the colour.
        int patient;
        QRectF square;
        GraphText name;
    };

    /// \p textWidth measures the identifiers of the legend.
    PatientGraphGeometry(const QVector<PatientRecord> &patients, const PatientGraphBounds &bounds,
                         double width, double height, const TextWidth &textWidth);

    /// y of the horizontal axis.
    double axisY;
    /// x at which the horizontal axis and the grid lines end.
    double axisRight;
    /// Number of bands of ten mmol/mol of the vertical axis.
    double bands;
    /// Pixels from one measurement to the next; negative, and of no use, without any value.
    double xStep;
    /// Pixels a mmol/mol; not finite without a band.
    double yScale;

    /// Axes, grid lines and ticks.
    QPainterPath axesPath;
    /// One polyline a patient, empty for a patient without values and on a graph without a scale. A
    /// value beyond the range is held to its edge, so that the lines to it leave the rectangle. NaN
    /// is left out: the line goes on to the next value.
    QVector<QPainterPath> patientPaths;
    /// Numbers of the measurements, and "x" behind that of the first patient's last.
    QVector<GraphText> horizontalLabels;
    /// Numbers of the grid lines, then the unit.
    QVector<GraphText> verticalLabels;
    QVector<LegendEntry> legend;

private:
    double xAt(int measurement) const { return measurement * xStep + 60; }
    double yAt(double value) const { return axisY - value * yScale; }

    void buildAxes(const PatientGraphBounds &bounds);
    void buildGrid();
    void buildPatientPaths(const QVector<PatientRecord> &patients);
    QPainterPath patientPath(const QVector<double> &values) const;
    void buildHorizontalLabels(const PatientGraphBounds &bounds, int firstPatientCount,
                               double width);
    void buildLegend(const QVector<PatientRecord> &patients, double width,
                     const TextWidth &textWidth);
};
