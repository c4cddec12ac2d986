// SPDX-License-Identifier: GPL-3.0-or-later
#include "graphs/graphexport.h"

#include <QBuffer>
#include <QPainter>
#include <QPrinter>
#include <QSvgGenerator>
#include <QTabWidget>

#include "base/atomicsave.h"
#include "base/xmltext.h"
#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"

namespace
{

// Some releases of Qt write the title of an SVG file without escaping it.
QByteArray withEscapedTitle(QByteArray svg, const QString &title)
{
    const auto element = [](const QString &text) { return "<title>" + text.toUtf8() + "</title>"; };
    return svg.replace(element(title), element(title.toHtmlEscaped()));
}

} // namespace

ExportPage ExportPage::a4()
{
    QPrinter printer(QPrinter::ScreenResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    return {printer.paperRect(QPrinter::Point).toRect().size(), printer.pageRect(QPrinter::Point)};
}

QPointF ExportPage::margin() const
{
    return {(paper.width() - printable.width()) * 0.5, (paper.height() - printable.height()) * 0.5};
}

QSizeF ExportPage::graphSize() const
{
    return {printable.width(), printable.height() * 0.5};
}

QPointF ExportPage::patientGraphCorner() const
{
    return 2 * margin() + QPointF(0.0, graphSize().height());
}

void exportGraphs(const QTabWidget &tabs, const QString &fileName)
{
    auto *patientGraph = static_cast<GraphSubWindow *>(tabs.widget(0));
    auto *resultPlot = static_cast<ResultSubWindow *>(tabs.widget(1));
    const ExportPage page = ExportPage::a4();
    const QSizeF graphSize = page.graphSize();

    QBuffer svg;
    QSvgGenerator generator;
    generator.setOutputDevice(&svg);
    const QString title = xmlText(patientGraph->windowTitle());
    generator.setTitle(title);
    generator.setSize(page.paper);
    generator.setViewBox(page.printable.toRect());

    QPainter painter(&generator);
    painter.translate(page.margin());
    resultPlot->drawGraph(&painter, graphSize.width(), graphSize.height());
    painter.translate(page.patientGraphCorner() - page.margin());
    patientGraph->drawGraph(&painter, graphSize.width(), graphSize.height());
    painter.end();
    saveAtomically(fileName, withEscapedTitle(svg.data(), title));
    patientGraph->update();
    resultPlot->update();
}
