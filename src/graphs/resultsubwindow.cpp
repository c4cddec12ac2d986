// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/resultsubwindow.h"

#include <cmath>

#include <QFontMetrics>
#include <QPainter>

#include "analysis/methodlabels.h"

namespace
{

constexpr int noMethod = -1;
constexpr int kvadrantLabelPointSize = 30;
constexpr double dotRadius = 2.0; // pixels

// The integer part of \p number if a method has that index, otherwise noMethod.
int methodIndex(double number)
{
    const double index = std::trunc(number);
    return index >= 0 && index < methodCount ? int(index) : noMethod;
}

QString methodName(const Methods &methods, int index)
{
    return index == noMethod ? QString() : ResultSubWindow::tr(methods.at(size_t(index)).plot);
}

void drawKvadrantLabels(QPainter *painter, const QVector<GraphText> &labels)
{
    const QFont font = painter->font();
    const QPen pen = painter->pen();
    QPen grey;
    grey.setColor(QColor(128, 128, 128, 100));
    painter->setFont(QFont(QStringLiteral("Arial"), kvadrantLabelPointSize));
    painter->setPen(grey);
    drawTexts(painter, labels);
    painter->setFont(font);
    painter->setPen(pen);
}

void drawDots(QPainter *painter, const QVector<ResultPlotGeometry::Dot> &dots)
{
    const QBrush brush = painter->brush();
    painter->setBrush(QBrush(Qt::black, Qt::SolidPattern));
    for (const ResultPlotGeometry::Dot &dot : dots) {
        painter->drawEllipse(dot.center, dotRadius, dotRadius);
        painter->drawText(dot.name.position, dot.name.text);
    }
    painter->setBrush(brush);
}

} // namespace

ResultSubWindow::ResultSubWindow(
    QVector<PatientScoreRecord> scores, // NOLINT(performance-unnecessary-value-param)
    double variability, double convergence, double centerY, double centerX)
    : variabilityIndex(methodIndex(variability)), convergenceIndex(methodIndex(convergence)),
      data(scores, variabilityIndex, convergenceIndex, centerY, centerX)
{
}

void ResultSubWindow::drawGraph(QPainter *painter, double width, double height) const
{
    const QFontMetrics metrics(painter->font());
    const ResultPlotGeometry geometry(
        data, texts(), width, height,
        [&metrics](const QString &text) { return metrics.horizontalAdvance(text); });

    drawKvadrantLabels(painter, geometry.kvadrantLabels);
    drawTexts(painter, geometry.tickLabels);
    painter->drawPath(geometry.axesPath);
    drawTexts(painter, geometry.centerLabels);
    drawDots(painter, geometry.dots);
    drawTexts(painter, geometry.axisNames);
    drawTexts(painter, geometry.methodLines);
}

void ResultSubWindow::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawGraph(&painter, width(), height());
}

ResultPlotTexts ResultSubWindow::texts() const
{
    return {tr("B/W"),
            tr("W/W"),
            tr("B/B"),
            tr("W/B"),
            tr("Convergence"),
            tr("Variability"),
            tr("Convergence: ") + methodName(convergenceMethods, convergenceIndex),
            tr("Variability: ") + methodName(variabilityMethods, variabilityIndex)};
}
