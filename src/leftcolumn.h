// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVBoxLayout>
#include <QWidgetItem>

class QMdiArea;
class QTableView;

/// The graphs above the strip with the results. Once a file is open, the strip is as high as all
/// rows of the results need, if that leaves the graphs the room for one.
///
/// The least and the preferred size are those of any column with these two.
class LeftColumn : public QVBoxLayout
{
public:
    /// \p results is the table in \p strip, \p graphHeight the least height of a graph in pixels.
    LeftColumn(QMdiArea *graphs, QWidget *strip, const QTableView *results, int graphHeight);

    void setGeometry(const QRect &rect) override;

private:
    /// The strip, whose height depends on its width, because a text in it wraps.
    class Strip : public QWidgetItem
    {
    public:
        using QWidgetItem::QWidgetItem;
        int heightForWidth(int width) const override;

        int leastHeight = 0;
    };

    int heightForAllRows() const;

    const QMdiArea *const graphArea;
    const QTableView *const resultTable;
    const int leastGraphHeight;
    Strip *const stripItem;
};
