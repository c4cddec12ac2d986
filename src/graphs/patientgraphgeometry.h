// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QVector>

#include "analysis/patientrecord.h"
#include "graphs/graphplacement.h"

/// What the values of a group decide about its patient graph at any size.
struct PatientGraphBounds {
    /// The bounds of \p patients, taken value by value.
    explicit PatientGraphBounds(const QVector<PatientRecord> &patients);

    /// The highest value truncated to a whole number, at most the largest unsigned number; 0 if
    /// no value is above 0.
    quint64 maxValue = 0;
    /// The largest number of values of any one patient, -1 if none has a value.
    double maxCount = -1.0;
};

/// Where everything of the patient graph lies on a rectangle from (0, 0) to (width, height), in
/// pixels. What is not placeable is left out of all lists.
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
    /// How many bands of ten mmol/mol the vertical axis has.
    double bands;
    /// Pixels from one measurement to the next; negative and unused if there is no value.
    double xStep;
    /// Pixels per mmol/mol; not finite without a band.
    double yScale;

    /// Axes, grid lines and ticks.
    QPainterPath axesPath;
    /// One polyline per patient, empty for a patient without values and on a graph without a scale.
    /// A value beyond the range is moved to its edge, so that the lines to it leave the rectangle.
    /// NaN is left out: the line goes on to the next value.
    QVector<QPainterPath> patientPaths;
    /// Numbers of the measurements, with "x" after that of the first patient's last one.
    QVector<GraphText> horizontalLabels;
    /// Numbers of the grid lines, then the unit.
    QVector<GraphText> verticalLabels;
    QVector<LegendEntry> legend;

private:
    /// x of the vertical axis and of every first measurement.
    static constexpr double axisX = 60;

    double xAt(int measurement) const { return measurement * xStep + axisX; }
    double yAt(double value) const { return axisY - value * yScale; }

    void buildAxes(const PatientGraphBounds &bounds);
    void buildGrid();
    QPainterPath patientPath(const QVector<double> &values) const;
    void buildHorizontalLabels(const PatientGraphBounds &bounds, int firstPatientCount);
    void buildLegend(const QVector<PatientRecord> &patients, double width,
                     const TextWidth &textWidth);
};
