// SPDX-License-Identifier: GPL-3.0-or-later
// Included before everything else on ARM, so that Eigen finds a processor that cannot multiply and
// add in one step. What it takes from the compiler's header is declared by then.
#pragma once

#include <arm_neon.h>

#undef __ARM_FEATURE_FMA
