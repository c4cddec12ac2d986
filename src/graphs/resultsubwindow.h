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
/// Patients, methods and centers are fixed when the widget is made.
class ResultSubWindow : public QWidget
{
    Q_OBJECT

public:
    /// The indices name the methods shown (their whole part counts), the centers belong to them.
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
