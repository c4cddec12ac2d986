// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The natural logarithm, the same to the last bit on every machine: those of the standard
/// libraries differ in it, some even with the processor.
///
/// At most 0.52 units in the last place from the exact value. Minus infinity for 0, NaN for a
/// negative number.
double naturalLogarithm(double x);
