// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QVector>

/// The colours of the patient graph, shared by all its windows: neighbours are easy to tell apart.
class GraphPalette
{
public:
    /// The one palette of the process, made by the first caller.
    static const GraphPalette &instance();

    /// How many colours there are: 63.
    int size() const { return int(colors.size()); }
    /// The colour of the patient with the index \p patient; the first colour follows the last one.
    QColor color(int patient) const { return colors.at(patient % colors.size()); }

private:
    GraphPalette();

    QVector<QColor> colors;
};
