// SPDX-License-Identifier: GPL-3.0-or-later
#include "leftcolumn.h"

#include <QHeaderView>
#include <QMdiArea>
#include <QScrollBar>
#include <QTableView>

LeftColumn::LeftColumn(QMdiArea *graphs, QWidget *strip, const QTableView *results, int graphHeight)
    : graphArea(graphs), resultTable(results), leastGraphHeight(graphHeight),
      stripItem(new Strip(strip))
{
    addWidget(graphs);
    addChildWidget(strip);
    addItem(stripItem);
}

void LeftColumn::setGeometry(const QRect &rect)
{
    const int allRows = heightForAllRows();
    const int leftForGraphs = rect.height() - spacing() - allRows - 2 * graphArea->frameWidth();
    const int least = leftForGraphs < leastGraphHeight ? 0 : allRows;
    if (least != stripItem->leastHeight) {
        stripItem->leastHeight = least;
        invalidate();
    }
    QVBoxLayout::setGeometry(rect);
}

// With the scroll bar for more patients, which may come and go as the window gets wider.
int LeftColumn::heightForAllRows() const
{
    if (!resultTable->model()) {
        return 0;
    }
    const QMargins margins = stripItem->widget()->layout()->contentsMargins();
    return margins.top() + resultTable->frameWidth()
        + resultTable->horizontalHeader()->sizeHint().height()
        + resultTable->verticalHeader()->length()
        + resultTable->horizontalScrollBar()->sizeHint().height() + resultTable->frameWidth()
        + margins.bottom();
}

int LeftColumn::Strip::heightForWidth(int width) const
{
    return qMax(leastHeight, QWidgetItem::heightForWidth(width));
}
