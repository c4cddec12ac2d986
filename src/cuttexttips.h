// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// Shows the whole text of labels, cells and headings that do not have the room for it, as a tool
/// tip. A text that has the room has none.
class CutTextTips : public QObject
{
public:
    /// For all labels and tables that \p window has now.
    explicit CutTextTips(QWidget *window);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
