// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

/// The colours of the patient graph, the same in every window. Neighbours are easy to tell apart.
namespace GraphPalette
{

/// The colour of the patient at index \p patient; after the last of the 63 comes the first.
QColor color(int patient);

} // namespace GraphPalette
