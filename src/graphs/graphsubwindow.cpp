// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/graphsubwindow.h"

#include <QFontMetrics>
#include <QPainter>

#include "graphs/graphpalette.h"

namespace
{

constexpr double axisWidth = 1.0; // pixels
constexpr double patientLineWidth = 2.0; // pixels

// Required as is: the legend is measured in this font but drawn in the painter's own.
QFont legendMeasure(const QPainter *painter)
{
    QFont font = painter->font();
    font.setStyleHint(QFont::Times, QFont::PreferAntialias);
    return font;
}

void drawPatientPaths(QPainter *painter, QPen pen, const QVector<QPainterPath> &paths)
{
    pen.setWidthF(patientLineWidth);
    for (int patient = 0; patient < paths.size(); ++patient) {
        pen.setColor(GraphPalette::color(patient));
        painter->setPen(pen);
        painter->drawPath(paths.at(patient));
    }
}

void drawLegend(QPainter *painter, const QVector<PatientGraphGeometry::LegendEntry> &legend)
{
    for (const PatientGraphGeometry::LegendEntry &entry : legend) {
        painter->fillRect(entry.square, GraphPalette::color(entry.patient));
        painter->drawText(entry.name.position, entry.name.text);
    }
}

} // namespace

GraphSubWindow::GraphSubWindow(QString name, // NOLINT(performance-unnecessary-value-param)
                               QVector<PatientRecord> shownPatients)
    : patients(std::move(shownPatients)), bounds(patients)
{
    setWindowTitle(name);
    setMinimumSize(700, 400);
}

void GraphSubWindow::drawGraph(QPainter *painter, double width, double height) const
{
    const QFontMetrics metrics(legendMeasure(painter));
    const PatientGraphGeometry geometry(
        patients, bounds, width, height,
        [&metrics](const QString &text) { return metrics.horizontalAdvance(text); });

    painter->setRenderHint(QPainter::Antialiasing);
    const QPen axisPen(QBrush(Qt::black, Qt::SolidPattern), axisWidth, Qt::SolidLine, Qt::SquareCap,
                       Qt::BevelJoin);
    painter->setPen(axisPen);
    painter->drawPath(geometry.axesPath);
    drawPatientPaths(painter, axisPen, geometry.patientPaths);
    painter->setPen(axisPen);
    drawTexts(painter, geometry.horizontalLabels);
    drawTexts(painter, geometry.verticalLabels);
    drawLegend(painter, geometry.legend);
}

void GraphSubWindow::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawGraph(&painter, width(), height());
}
