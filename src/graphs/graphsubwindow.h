// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVector>
#include <QWidget>

#include "analysis/patientrecord.h"
#include "graphs/patientgraphgeometry.h"

class QPainter;

/// The line chart of a group: measurement number across, value in mmol/mol up, one coloured
/// polyline per patient, and a legend of identifiers below.
///
/// The widget keeps a copy of the patients and does not follow later changes.
class GraphSubWindow : public QWidget
{
    Q_OBJECT

public:
    /// \p name becomes the window title.
    GraphSubWindow(QString name, QVector<PatientRecord> shownPatients);

    /// Draws the chart from (0, 0) to (\p width, \p height) in the painter's coordinates; a long
    /// legend reaches below that. Leaves the painter with a black pen and antialiasing on.
    void drawGraph(QPainter *painter, double width, double height) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVector<PatientRecord> patients;
    PatientGraphBounds bounds;
};
