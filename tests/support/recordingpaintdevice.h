// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QBrush>
#include <QFont>
#include <QPaintDevice>
#include <QPainterPath>
#include <QPen>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

/// A paint device that paints nothing and lists, in order, what it is told to paint.
///
/// Positions are in the painter's own coordinates. It has the 96 dots per inch for which test
/// programs measure fonts.
class RecordingPaintDevice : public QPaintDevice
{
public:
    struct Operation {
        enum Kind { Path, Ellipse, Rectangle, Text };

        Kind kind;
        /// Path: what was drawn.
        QPainterPath path;
        /// Ellipse and Rectangle: their rectangle.
        QRectF rect;
        /// Text: the left end of its baseline.
        QPointF position;
        QString text;
        /// The painter's state at that time.
        QPen pen;
        QBrush brush;
        QFont font;
        bool antialiased;

        /// "path", "ellipse x y w h", "rectangle x y w h" or "text x y: ...".
        QString summary() const;
    };

    RecordingPaintDevice();
    ~RecordingPaintDevice() override;
    Q_DISABLE_COPY_MOVE(RecordingPaintDevice)

    const QVector<Operation> &operations() const;
    QVector<Operation> operations(Operation::Kind kind) const;
    /// The summaries of all operations.
    QStringList summaries() const;

    QPaintEngine *paintEngine() const override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    class Engine;

    std::unique_ptr<Engine> m_engine;
};

/// "x,y x,y; x,y x,y": the points of \p path, a semicolon before each move.
QString pathPoints(const QPainterPath &path);
