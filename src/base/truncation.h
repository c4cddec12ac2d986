// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// \p value truncated toward zero. A negative number wraps modulo 2^64; NaN, and what lies beyond
/// the range, give the largest unsigned number.
quint64 toUnsigned(double value);
