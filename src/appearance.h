// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// How the program looks on this desktop, whatever it shows.
namespace Appearance
{

/// Lets the toolkit scale the whole program where the screen has more than 96 dots an inch: fixed
/// widths grow with the fonts. At 96 nothing changes. To be called before there is an application.
void prepare();

/// Takes the light palette of the style where the desktop's is dark, now and whenever the desktop
/// changes: the colours of cells and graphs are made for a light ground. To be called once there is
/// an application.
void settle();

} // namespace Appearance
