#include "resultsubwindow.h"

#include <array>
#include <cmath>

#include <QFontMetrics>
#include <QPainter>

namespace
{

using MethodNames = std::array<const char *, methodCount>;

constexpr MethodNames convergenceNames = {
    QT_TRANSLATE_NOOP("ResultSubWindow", "Median difference"),
    QT_TRANSLATE_NOOP("ResultSubWindow", "Linear least squares fitting"),
    QT_TRANSLATE_NOOP("ResultSubWindow", "C*e^(k*x)"),
};
constexpr MethodNames variabilityNames = {
    QT_TRANSLATE_NOOP("ResultSubWindow", "Standard deviation"),
    QT_TRANSLATE_NOOP("ResultSubWindow", "Difference standard deviation offset"),
    QT_TRANSLATE_NOOP("ResultSubWindow", "Interquartile range"),
};

// -1 for what is the number of no method.
int methodIndex(double index)
{
    const double whole = std::trunc(index);
    return whole >= 0 && whole < methodCount ? int(whole) : -1;
}

QString methodName(const MethodNames &names, int index)
{
    return index < 0 ? QString() : ResultSubWindow::tr(names.at(size_t(index)));
}

void drawKvadrantLabels(QPainter *painter, const QVector<GraphText> &labels)
{
    const QFont font = painter->font();
    const QPen pen = painter->pen();
    QPen grey;
    grey.setColor(QColor(128, 128, 128, 100));
    painter->setFont(QFont(QStringLiteral("Arial"), 30));
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
        painter->drawEllipse(dot.center, 2.0, 2.0);
        painter->drawText(dot.name.position.x(), dot.name.position.y(), dot.name.text);
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
    painter.end();
}

ResultPlotTexts ResultSubWindow::texts() const
{
    return {tr("B/W"),
            tr("W/W"),
            tr("B/B"),
            tr("W/B"),
            tr("Convergence"),
            tr("Variability"),
            tr("Convergence: ") + methodName(convergenceNames, convergenceIndex),
            tr("Variability: ") + methodName(variabilityNames, variabilityIndex)};
}
