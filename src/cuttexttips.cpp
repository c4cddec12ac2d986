// SPDX-License-Identifier: GPL-3.0-or-later
#include "cuttexttips.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QRegularExpression>
#include <QTableView>
#include <QTextDocument>
#include <QToolTip>

namespace
{

/// A text in a widget, the room that it needs, and the place that it has.
struct ShownText {
    QString text;
    QSize needed;
    QRect place;

    bool isCut(const QWidget &widget) const
    {
        // Other widgets and the edges of the window hide a part of the place.
        const QSize room = (place & widget.visibleRegion().boundingRect()).size();
        return needed.width() > room.width() || needed.height() > room.height();
    }
};

ShownText textOf(const QLabel &label)
{
    const QSize needed = label.hasHeightForWidth()
        ? QSize(label.width(), label.heightForWidth(label.width()))
        : label.sizeHint();
    return {label.text(), needed, label.rect()};
}

ShownText textAt(const QTableView &table, const QPoint &position)
{
    const QModelIndex cell = table.indexAt(position);
    return {cell.data().toString(), table.sizeHintForIndex(cell), table.visualRect(cell)};
}

// Headings of selected cells are bold.
QFont fontOf(const QHeaderView &header, int section)
{
    QFont font = header.font();
    const QItemSelectionModel *const selection = header.selectionModel();
    font.setBold(header.orientation() == Qt::Horizontal
                     ? selection->columnIntersectsSelection(section, {})
                     : selection->rowIntersectsSelection(section, {}));
    return font;
}

ShownText textAt(const QHeaderView &header, const QPoint &position)
{
    const int section = header.logicalIndexAt(position);
    if (section < 0) {
        return {};
    }
    const QString text = header.model()->headerData(section, header.orientation()).toString();
    const int margin = 2 * header.style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, &header);
    const QSize needed =
        QFontMetrics(fontOf(header, section)).size(0, text) + QSize(margin, margin);
    const int start = header.sectionViewportPosition(section);
    const int length = header.sectionSize(section);
    return {text, needed,
            header.orientation() == Qt::Horizontal ? QRect(start, 0, length, header.height())
                                                   : QRect(0, start, header.width(), length)};
}

ShownText textAt(QWidget *widget, const QPoint &position)
{
    if (const auto *label = qobject_cast<QLabel *>(widget)) {
        return textOf(*label);
    }
    if (const auto *header = qobject_cast<QHeaderView *>(widget->parentWidget())) {
        return textAt(*header, position);
    }
    const auto *table = qobject_cast<QTableView *>(widget->parentWidget());
    return table ? textAt(*table, position) : ShownText();
}

// Never read as markup, and with places at which a long word can break: nobody could read a tip
// that is wider than the screen.
QString tipOf(QString text)
{
    static const QRegularExpression longWord(QStringLiteral("(\\S{60})(?=\\S)"));
    return Qt::convertFromPlainText(text.replace(longWord, QStringLiteral("\\1\u200b")));
}

} // namespace

CutTextTips::CutTextTips(QWidget *window) : QObject(window)
{
    for (QLabel *label : window->findChildren<QLabel *>()) {
        label->installEventFilter(this);
    }
    for (const auto *table : window->findChildren<QTableView *>()) {
        for (const QAbstractScrollArea *area :
             {static_cast<const QAbstractScrollArea *>(table),
              static_cast<const QAbstractScrollArea *>(table->horizontalHeader()),
              static_cast<const QAbstractScrollArea *>(table->verticalHeader())}) {
            area->viewport()->installEventFilter(this);
        }
    }
}

bool CutTextTips::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ToolTip) {
        return QObject::eventFilter(watched, event);
    }
    auto *const widget = static_cast<QWidget *>(watched);
    const auto *const rest = static_cast<QHelpEvent *>(event);
    const ShownText shown = textAt(widget, rest->pos());
    if (shown.text.isEmpty() || !shown.isCut(*widget)) {
        return QObject::eventFilter(watched, event);
    }
    QToolTip::showText(rest->globalPos(), tipOf(shown.text), widget, shown.place);
    return true;
}
