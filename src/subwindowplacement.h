// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

class QMdiArea;
class QMdiSubWindow;

/// Where sub-windows lie in the visible part of their area, in pixels.
namespace SubWindowPlacement
{

/// Where \p window goes so that it lies inside \p room, which begins at (0, 0), moved no farther
/// than that takes. What is wider or higher than \p room begins at its left or upper edge.
QPoint inside(const QRect &window, const QSize &room);

/// The height of a window whose content asks for \p asked: as high as \p room at most, and never
/// below \p least.
int openingHeight(int asked, int least, int room);

/// Shows \p subWindow, a new one, as high as its content asks for and inside \p area as far as it
/// fits. Opens maximized if the current one is, and takes that place when it is restored.
void showInside(const QMdiArea &area, QMdiSubWindow &subWindow);

/// Scrolls \p area until \p subWindow lies inside as far as it fits.
void scrollTo(const QMdiArea &area, const QMdiSubWindow &subWindow);

/// Scrolls \p area until all its sub-windows lie inside, if there is room for them. To be called
/// when the area has got another size and has not yet looked for what lies outside: two scroll bars
/// that only take each other's room would stay.
void scrollBack(const QMdiArea &area);

} // namespace SubWindowPlacement
