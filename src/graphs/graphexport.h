// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QSize>
#include <QString>

class QTabWidget;

/// Where the A4 page of an export puts the two graphs, in points.
///
/// The printer of the platform gives the page: on a system with other margins the graphs move.
struct ExportPage {
    /// The page of this system.
    static ExportPage a4();

    /// Size of the sheet, margins included.
    QSize paper;
    /// The part of it that can be printed on; the view box of the file.
    QRectF printable;

    /// Margin on each side when the printable part stands in the middle of the sheet.
    QPointF margin() const;
    /// Size of either graph: the upper or the lower half of the printable part.
    QSizeF graph() const;
    /// Top left corner of the result plot.
    QPointF resultPlot() const;
    /// Top left corner of the patient graph. Required as is: the margins count twice here.
    QPointF patientGraph() const;
};

/// Writes the graphs of a tabbed sub-window (tab 0 a GraphSubWindow, tab 1 a ResultSubWindow) as
/// one SVG page: the result plot on the upper half, the patient graph on the lower half. The title
/// is the graph's name. A file that cannot be written is not reported.
void exportGraphs(const QTabWidget &tabs, const QString &fileName);
