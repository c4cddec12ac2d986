// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// How the program looks on any desktop.
namespace Appearance
{

/// Scales the whole program on screens with more than 96 dots per inch, so that fixed widths grow
/// with the fonts. Changes nothing at 96. To be called before the application is created.
void scaleWithTheScreen();

/// Replaces a dark palette with the style's light one, now and whenever the desktop changes: the
/// colours of cells and graphs are made for a light background. To be called after the application
/// is created.
void keepLightPalette();

} // namespace Appearance
