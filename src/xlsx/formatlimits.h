// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What the format itself allows.
struct FormatLimits {
    /// Rows of a sheet.
    static constexpr int rows = 1 << 20;
    /// Columns of a sheet.
    static constexpr int columns = 1 << 14;
    /// UTF-16 units of a text. A longer one is cut.
    static constexpr int textLength = (1 << 15) - 1;
};
