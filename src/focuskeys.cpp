// SPDX-License-Identifier: GPL-3.0-or-later
#include "focuskeys.h"

#include <algorithm>

#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QShortcut>
#include <QTableView>

#include "subwindowplacement.h"

namespace
{

template<typename Slot>
void addShortcut(const char *keys, QWidget *owner, Qt::ShortcutContext context, Slot slot)
{
    auto *shortcut = new QShortcut(QKeySequence(QLatin1String(keys)), owner);
    shortcut->setContext(context);
    QObject::connect(shortcut, &QShortcut::activated, owner, slot);
}

} // namespace

FocusKeys::FocusKeys(QTableView *patients, QTableView *results, QMdiArea *graphs)
    : QObject(graphs), patientTable(patients), resultTable(results), graphArea(graphs)
{
    QWidget *const window = graphs->window();
    addShortcut("f6", window, Qt::WindowShortcut, [this] { focusPart(1); });
    addShortcut("shift+f6", window, Qt::WindowShortcut, [this] { focusPart(-1); });
    for (QWidget *part : {patients->parentWidget(), results->parentWidget()}) {
        addShortcut("ctrl+tab", part, Qt::WidgetWithChildrenShortcut,
                    [this] { focusOtherGraph(&QMdiArea::activateNextSubWindow); });
        addShortcut("ctrl+shift+tab", part, Qt::WidgetWithChildrenShortcut,
                    [this] { focusOtherGraph(&QMdiArea::activatePreviousSubWindow); });
    }
}

QList<QWidget *> FocusKeys::parts() const
{
    QList<QWidget *> all = {patientTable->parentWidget(), resultTable->parentWidget()};
    if (graphArea->currentSubWindow()) {
        all << graphArea;
    }
    return all;
}

void FocusKeys::focusPart(int step)
{
    const QList<QWidget *> all = parts();
    const auto count = int(all.size());
    const auto here = std::find_if(all.begin(), all.end(), [](const QWidget *part) {
        return part->isAncestorOf(QApplication::focusWidget());
    });
    int next = step > 0 ? 0 : count - 1;
    if (here != all.end()) {
        next = (int(here - all.begin()) + step + count) % count;
    }
    if (all.at(next) == graphArea) {
        focusGraph();
    } else {
        (next == 0 ? patientTable : resultTable)->setFocus(Qt::ShortcutFocusReason);
    }
}

void FocusKeys::focusOtherGraph(void (QMdiArea::*activate)())
{
    (graphArea->*activate)();
    focusGraph();
}

void FocusKeys::focusGraph() const
{
    QMdiSubWindow *const graph = graphArea->currentSubWindow();
    if (!graph) {
        return;
    }
    // Where the focus was when it left; a minimized graph hides that.
    QWidget *const inside = graph->focusWidget();
    (inside && inside->isVisible() ? inside : graph)->setFocus(Qt::ShortcutFocusReason);
    SubWindowPlacement::scrollTo(*graphArea, *graph);
}
