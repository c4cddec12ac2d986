// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/graphsubwindow.h"

#include <QFontMetrics>
#include <QPainter>

#include "graphs/graphpalette.h"

namespace
{

// Required as is: the legend is measured in this font, and drawn in the painter's own.
QFont legendMeasure(const QPainter *painter)
{
    QFont font = painter->font();
    font.setStyleHint(QFont::Times, QFont::PreferAntialias);
    return font;
}

void drawPatientPaths(QPainter *painter, QPen pen, const QVector<QPainterPath> &paths)
{
    pen.setWidth(2);
    for (int i = 0; i < paths.size(); ++i) {
        pen.setColor(GraphPalette::instance().color(i));
        painter->setPen(pen);
        painter->drawPath(paths.at(i));
    }
}

void drawLegend(QPainter *painter, const QVector<PatientGraphGeometry::LegendEntry> &legend)
{
    for (const PatientGraphGeometry::LegendEntry &entry : legend) {
        painter->fillRect(entry.square, GraphPalette::instance().color(entry.patient));
        painter->drawText(entry.name.position.x(), entry.name.position.y(), entry.name.text);
    }
}

} // namespace

GraphSubWindow::GraphSubWindow(QString name, // NOLINT(performance-unnecessary-value-param)
                               QVector<PatientRecord> shownPatients)
    : patients(std::move(shownPatients)), bounds(patients)
{
    setWindowTitle(name);
    setMinimumWidth(700);
    setMinimumHeight(400);
}

void GraphSubWindow::drawGraph(QPainter *painter, double width, double height) const
{
    const QFontMetrics metrics(legendMeasure(painter));
    const PatientGraphGeometry geometry(
        patients, bounds, width, height,
        [&metrics](const QString &text) { return metrics.horizontalAdvance(text); });

    painter->setRenderHint(QPainter::Antialiasing);
    const QPen pen(QBrush(Qt::black, Qt::SolidPattern), 1.0, Qt::SolidLine, Qt::SquareCap,
                   Qt::BevelJoin);
    painter->setPen(pen);
    painter->drawPath(geometry.axesPath);
    drawPatientPaths(painter, pen, geometry.patientPaths);
    painter->setPen(pen);
    drawTexts(painter, geometry.horizontalLabels);
    drawTexts(painter, geometry.verticalLabels);
    drawLegend(painter, geometry.legend);
}

void GraphSubWindow::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawGraph(&painter, width(), height());
    painter.end();
}
