// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <QImage>
#include <QPainter>
#include <QWidget>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"
#include "graphs/patientgraphgeometry.h"
#include "graphs/resultplotgeometry.h"
#include "support/recordingpaintdevice.h"

/// The operations with which a graph is drawn.
class GraphDrawing : public RecordingPaintDevice
{
public:
    template<typename Window>
    explicit GraphDrawing(const Window &window, double width = 700, double height = 400)
    {
        QPainter painter(this);
        window.drawGraph(&painter, width, height);
    }
};

/// Two pictures of one size: what \p window shows, and what it draws.
template<typename Window>
std::pair<QImage, QImage> shownAndDrawn(Window &window)
{
    QImage shown(window.size(), QImage::Format_ARGB32_Premultiplied);
    shown.setDotsPerMeterX(qRound(window.logicalDpiX() * 100 / 2.54));
    shown.setDotsPerMeterY(qRound(window.logicalDpiY() * 100 / 2.54));
    shown.fill(Qt::white);
    QImage drawn = shown;
    window.render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
    QPainter painter(&drawn);
    painter.setRenderHint(QPainter::Antialiasing);
    window.drawGraph(&painter, window.width(), window.height());
    painter.end();
    return {shown, drawn};
}

/// Patients "p0", "p1" and so on with these values.
inline QVector<PatientRecord> patientsOf(const QVector<QVector<double>> &values)
{
    QVector<PatientRecord> patients;
    for (const QVector<double> &series : values) {
        patients.append(
            {QString("p%1").arg(patients.size()), series, PatientRecord::noIdealKvadrant});
    }
    return patients;
}

/// The results of one patient by one convergence and one variability method.
struct Point {
    double convergence;
    double variability;
};

/// The results of patients "p0", "p1" and so on: \p points by the methods of index 1, and results
/// far off by the others.
inline QVector<PatientScoreRecord> scoresOf(const QVector<Point> &points)
{
    QVector<PatientScoreRecord> scores;
    for (const Point &point : points) {
        scores.append({QString("p%1").arg(scores.size()),
                       {-1000, point.convergence, 1000},
                       {-1000, point.variability, 1000}});
    }
    return scores;
}

/// Ten pixels per character.
inline double textWidth(const QString &text)
{
    return 10.0 * double(text.size());
}

inline QString described(const GraphText &text)
{
    return QString("%1 at %2,%3").arg(text.text).arg(text.position.x()).arg(text.position.y());
}

inline QString described(const ResultPlotGeometry::Dot &dot)
{
    return QString("%1,%2 ").arg(dot.center.x()).arg(dot.center.y()) + described(dot.name);
}

inline QString described(const PatientGraphGeometry::LegendEntry &entry)
{
    return QString("%1: %2,%3 %4x%5, ")
               .arg(entry.patient)
               .arg(entry.square.x())
               .arg(entry.square.y())
               .arg(entry.square.width())
               .arg(entry.square.height())
        + described(entry.name);
}

/// The descriptions of all \p items, with a semicolon between two.
template<typename Item>
QString described(const QVector<Item> &items)
{
    QStringList all;
    for (const Item &item : items) {
        all << described(item);
    }
    return all.join("; ");
}
