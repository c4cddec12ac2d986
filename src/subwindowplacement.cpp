// SPDX-License-Identifier: GPL-3.0-or-later
#include "subwindowplacement.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScrollBar>

namespace SubWindowPlacement
{

namespace
{

int thickness(const QScrollBar *bar)
{
    const bool isNeeded = bar->minimum() < bar->maximum();
    return !isNeeded                           ? 0
        : bar->orientation() == Qt::Horizontal ? bar->sizeHint().height()
                                               : bar->sizeHint().width();
}

// The room beside the scroll bars that will be needed; the viewport shrinks for them only later.
QSize roomBesideBars(const QMdiArea &area)
{
    return area.maximumViewportSize()
        - QSize(thickness(area.verticalScrollBar()), thickness(area.horizontalScrollBar()));
}

void place(QMdiSubWindow &subWindow, const QSize &room)
{
    const int height =
        openingHeight(subWindow.sizeHint().height(), subWindow.minimumHeight(), room.height());
    subWindow.resize(subWindow.width(), height);
    subWindow.move(inside(subWindow.geometry(), room));
}

void scroll(const QMdiArea &area, const QRect &window, const QSize &room)
{
    const QPoint way = window.topLeft() - inside(window, room);
    area.horizontalScrollBar()->setValue(area.horizontalScrollBar()->value() + way.x());
    area.verticalScrollBar()->setValue(area.verticalScrollBar()->value() + way.y());
}

} // namespace

QPoint inside(const QRect &window, const QSize &room)
{
    return {qMax(0, qMin(window.x(), room.width() - window.width())),
            qMax(0, qMin(window.y(), room.height() - window.height()))};
}

int openingHeight(int asked, int least, int room)
{
    return qMax(least, qMin(asked, room));
}

void showInside(const QMdiArea &area, QMdiSubWindow &subWindow)
{
    subWindow.show();
    const bool isMaximized = subWindow.isMaximized();
    if (isMaximized) {
        subWindow.showNormal();
    }
    place(subWindow, area.maximumViewportSize());
    place(subWindow, roomBesideBars(area));
    if (isMaximized) {
        subWindow.showMaximized();
    }
}

void scrollTo(const QMdiArea &area, const QMdiSubWindow &subWindow)
{
    scroll(area, subWindow.geometry(), area.viewport()->size());
}

void scrollBack(const QMdiArea &area)
{
    QRect all;
    for (const QMdiSubWindow *subWindow : area.subWindowList()) {
        if (subWindow->isMaximized()) {
            return;
        }
        // Minimized ones stay at the lower edge.
        if (!subWindow->isMinimized()) {
            all |= subWindow->geometry();
        }
    }
    const QSize room = area.maximumViewportSize();
    if (all.size().boundedTo(room) == all.size()) {
        scroll(area, all, room);
    }
}

} // namespace SubWindowPlacement
