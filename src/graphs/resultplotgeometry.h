// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>

#include <QPainterPath>
#include <QPointF>
#include <QString>
#include <QVector>

#include "analysis/patientscorerecord.h"
#include "graphs/graphplacement.h"

/// One axis of the result plot: its center and the bounds of the values shown.
struct ResultPlotAxis {
    /// Takes \p value into the bounds; NaN changes nothing.
    void include(double value);
    /// Whether no value has set the bounds: there was none, or all were NaN.
    bool isEmpty() const { return lowest > highest; }
    /// The larger of the distances from the center to the two bounds.
    double span() const;

    double center = 0.0;
    double lowest = std::numeric_limits<double>::max();
    double highest = std::numeric_limits<double>::lowest();
};

/// What a result plot shows at any size.
struct ResultPlotData {
    struct Patient {
        QString id;
        double convergence;
        double variability;
    };

    /// Takes the values of the two methods from each of \p scores; NaN for an index that names no
    /// method.
    ResultPlotData(const QVector<PatientScoreRecord> &scores, int variabilityIndex,
                   int convergenceIndex, double centerY, double centerX);

    QVector<Patient> patients;
    ResultPlotAxis convergence;
    ResultPlotAxis variability;
};

/// The translated texts of a result plot.
struct ResultPlotTexts {
    /// The four kvadrants: convergence first, better or worse.
    QString betterWorse, worseWorse, betterBetter, worseBetter;
    /// The axis names.
    QString convergence, variability;
    /// The lines that name the methods.
    QString convergenceMethod, variabilityMethod;
};

/// Where everything of the result plot lies on a rectangle from (0, 0) to (width, height), in
/// pixels. What is not placeable is left out of all lists. So are dots beyond the range, because no
/// line would show where they are.
///
/// The axes cross in the middle, at the center; the farthest value of each axis lies a fixed margin
/// from the edge. An axis without spread, or on which every value is NaN, has no scale: only the
/// label of its center is placed.
struct ResultPlotGeometry {
    struct Dot {
        QPointF center;
        GraphText name;
    };

    /// \p textWidth measures the texts that end at the vertical axis or the right edge.
    ResultPlotGeometry(const ResultPlotData &data, const ResultPlotTexts &texts, double plotWidth,
                       double plotHeight, const TextWidth &textWidth);

    /// Pixels per unit of convergence; not finite without spread.
    double xScale;
    /// Pixels per unit of variability; not finite without spread.
    double yScale;

    QVector<GraphText> kvadrantLabels;
    /// The cross, the ticks of the horizontal axis, those of the vertical one.
    QPainterPath axesPath;
    /// In the order of the ticks.
    QVector<GraphText> tickLabels;
    QVector<GraphText> centerLabels;
    /// In the order of the patients.
    QVector<Dot> dots;
    QVector<GraphText> axisNames;
    QVector<GraphText> methodLines;

private:
    double xAt(double distance) const { return distance * xScale + halfWidth; }
    double yAt(double distance) const { return halfHeight - distance * yScale; }

    void buildKvadrantLabels(const ResultPlotTexts &texts);
    void buildCross();
    void buildHorizontalTicks(const ResultPlotAxis &axis);
    void buildVerticalTicks(const ResultPlotAxis &axis, const TextWidth &textWidth);
    void buildCenterLabels(const ResultPlotData &data, const TextWidth &textWidth);
    void buildDots(const ResultPlotData &data);
    void buildAxisNames(const ResultPlotTexts &texts, const TextWidth &textWidth);
    void buildMethodLines(const ResultPlotTexts &texts);

    double width;
    double height;
    double halfWidth;
    double halfHeight;
};
