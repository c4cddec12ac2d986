// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>
#include <QWidget>

#include "analysis/patientscorerecord.h"
#include "graphs/resultplotgeometry.h"

class QPainter;

/// The plot that places each patient in one of four kvadrants: convergence across, variability up,
/// the axes crossing at the centers.
///
/// The widget keeps a copy of the results and does not follow later changes of them or of the
/// settings.
class ResultSubWindow : public QWidget
{
    Q_OBJECT

public:
    /// The indices of the methods to show, truncated toward zero (the line of an unknown one names
    /// no method), and the centers of these methods.
    ResultSubWindow(QVector<PatientScoreRecord> scores, double variability, double convergence,
                    double centerY, double centerX);

    /// Draws the plot from (0, 0) to (\p width, \p height) in the painter's coordinates, and leaves
    /// the painter as it was.
    void drawGraph(QPainter *painter, double width, double height) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ResultPlotTexts texts() const;

    int variabilityIndex;
    int convergenceIndex;
    ResultPlotData data;
};
