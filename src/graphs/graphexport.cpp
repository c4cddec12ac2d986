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

// Later releases of the toolkit escape the title, earlier ones write it as it is.
bool escapesTitles()
{
    QBuffer page;
    QSvgGenerator generator;
    generator.setOutputDevice(&page);
    generator.setTitle(QStringLiteral("&"));
    QPainter painter(&generator);
    painter.end();
    return page.data().contains("&amp;");
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

QSizeF ExportPage::graph() const
{
    return {printable.width(), printable.height() * 0.5};
}

QPointF ExportPage::resultPlot() const
{
    return margin();
}

QPointF ExportPage::patientGraph() const
{
    return 2 * margin() + QPointF(0.0, graph().height());
}

void exportGraphs(const QTabWidget &tabs, const QString &fileName)
{
    auto *patientGraph = static_cast<GraphSubWindow *>(tabs.widget(0));
    auto *resultPlot = static_cast<ResultSubWindow *>(tabs.widget(1));
    const ExportPage page = ExportPage::a4();

    QBuffer file;
    QSvgGenerator generator;
    generator.setOutputDevice(&file);
    const QString title = xmlText(patientGraph->windowTitle());
    generator.setTitle(escapesTitles() ? title : title.toHtmlEscaped());
    generator.setSize(page.paper);
    generator.setViewBox(page.printable.toRect());

    QPainter painter;
    painter.begin(&generator);
    painter.translate(page.resultPlot());
    resultPlot->drawGraph(&painter, page.graph().width(), page.graph().height());
    painter.translate(page.patientGraph() - page.resultPlot());
    patientGraph->drawGraph(&painter, page.graph().width(), page.graph().height());
    painter.end();
    saveAtomically(fileName, file.data());
    patientGraph->update();
    resultPlot->update();
}
