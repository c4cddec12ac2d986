// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/recordingpaintdevice.h"

#include <QPaintEngine>
#include <QPainter>
#include <QStringList>

using Operation = RecordingPaintDevice::Operation;

class RecordingPaintDevice::Engine : public QPaintEngine
{
public:
    Engine() : QPaintEngine(AllFeatures) { }

    bool begin(QPaintDevice * /*device*/) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState & /*state*/) override { }

    void drawPath(const QPainterPath &path) override { note(Operation::Path).path = path; }
    void drawEllipse(const QRectF &rect) override { note(Operation::Ellipse).rect = rect; }
    void drawRects(const QRectF *rects, int count) override
    {
        for (int i = 0; i < count; ++i) {
            note(Operation::Rectangle).rect = rects[i];
        }
    }
    void drawTextItem(const QPointF &position, const QTextItem &item) override
    {
        Operation &operation = note(Operation::Text);
        operation.position = position;
        operation.text = item.text();
    }
    // The graphs draw no pixmap; a test that meets one finds a rectangle too many.
    void drawPixmap(const QRectF &rect, const QPixmap & /*pixmap*/,
                    const QRectF & /*source*/) override
    {
        note(Operation::Rectangle).rect = rect;
    }

    QVector<Operation> operations;

private:
    Operation &note(Operation::Kind kind)
    {
        Operation operation{};
        operation.kind = kind;
        operation.pen = painter()->pen();
        operation.brush = painter()->brush();
        operation.font = painter()->font();
        operation.antialiased = painter()->testRenderHint(QPainter::Antialiasing);
        operations.append(operation);
        return operations.last();
    }
};

QString Operation::summary() const
{
    switch (kind) {
    case Path:
        return "path";
    case Ellipse:
    case Rectangle:
        return QString("%1 %2 %3 %4 %5")
            .arg(kind == Ellipse ? "ellipse" : "rectangle")
            .arg(rect.x())
            .arg(rect.y())
            .arg(rect.width())
            .arg(rect.height());
    case Text:
        return QString("text %1 %2: ").arg(position.x()).arg(position.y()) + text;
    }
    return {};
}

RecordingPaintDevice::RecordingPaintDevice() : m_engine(std::make_unique<Engine>()) { }

RecordingPaintDevice::~RecordingPaintDevice() = default;

const QVector<Operation> &RecordingPaintDevice::operations() const
{
    return m_engine->operations;
}

QVector<Operation> RecordingPaintDevice::operations(Operation::Kind kind) const
{
    QVector<Operation> chosen;
    for (const Operation &operation : operations()) {
        if (operation.kind == kind) {
            chosen.append(operation);
        }
    }
    return chosen;
}

QStringList RecordingPaintDevice::summaries() const
{
    QStringList all;
    for (const Operation &operation : operations()) {
        all << operation.summary();
    }
    return all;
}

QPaintEngine *RecordingPaintDevice::paintEngine() const
{
    return m_engine.get();
}

int RecordingPaintDevice::metric(PaintDeviceMetric metric) const
{
    constexpr int dotsPerInch = 96;
    constexpr int size = 10000;
    switch (metric) {
    case PdmWidth:
    case PdmHeight:
        return size;
    case PdmWidthMM:
    case PdmHeightMM:
        return int(size / double(dotsPerInch) * 25.4);
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return dotsPerInch;
    case PdmDepth:
        return 32;
    case PdmNumColors:
        return 0;
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return int(devicePixelRatioFScale());
    default:
        return QPaintDevice::metric(metric);
    }
}

QString pathPoints(const QPainterPath &path)
{
    QStringList points;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        const bool starts = element.isMoveTo() && i > 0;
        points << (starts      ? "; "
                       : i > 0 ? " "
                               : QString())
                + QString("%1,%2").arg(element.x).arg(element.y);
    }
    return points.join(QString());
}
