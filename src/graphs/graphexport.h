// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QSize>
#include <QString>

class QTabWidget;

/// Where the A4 page of an export puts the two graphs, in points.
///
/// The page is that of the platform's printer: where its margins differ, the graphs move.
struct ExportPage {
    /// The page of this system.
    static ExportPage a4();

    /// The sheet with its margins.
    QSize paper;
    /// The part within the margins, which becomes the view box of the file.
    QRectF printable;

    /// The margins on the left and at the top if the printable part is in the middle of the sheet;
    /// also the top left corner of the result plot.
    QPointF margin() const;
    /// Size of either graph: the upper or the lower half of the printable part.
    QSizeF graphSize() const;
    /// Top left corner of the patient graph. Required as is: it has each margin twice.
    QPointF patientGraphCorner() const;
};

/// Writes the graphs of a tabbed sub-window (tab 0 a GraphSubWindow, tab 1 a ResultSubWindow) as
/// one SVG page: the result plot on the upper half, the patient graph on the lower half. The title
/// is the window title of the patient graph. A failure to write the file is not reported.
void exportGraphs(const QTabWidget &tabs, const QString &fileName);
