// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "analysis/patientscorerecord.h"

/// \file
/// Every rule that says better or worse. A lower value is the better one; the rules differ in how
/// they treat equality and NaN.
///
/// | Rule         | Where it shows              | below   | equal     | above  | NaN in either |
/// |--------------|-----------------------------|---------|-----------|--------|---------------|
/// | `markOf`     | patient table, convergence  | B       | W         | W      | W             |
/// | `markOf`     | patient table, variability  | B       | W         | W      | B             |
/// | `sideOf`     | colour in the score table   | Better  | OnCenter  | Worse  | OnCenter      |
/// | `kvadrantOf` | kvadrant of a pair          | better  | worse     | worse  | noKvadrant    |
/// | `worseFlag`  | flag of a method            | 0       | 1         | 1      | 0             |
///
/// They differ in the center as well. Mark, colour and flag compare each value with the center of
/// its own method; the kvadrants of all pairs compare with the centers of the first two methods.
/// Mark and colour use the center that the settings choose, kvadrant and flag always the median.

/// The mark of a patient: better or worse than the center.
struct Mark {
    bool convergenceBetter;
    bool variabilityBetter;
};

/// The mark of \p score against \p center, for the methods with these indices.
Mark markOf(const PatientScoreRecord &score, const PatientScoreRecord &center,
            int convergenceMethod, int variabilityMethod);

/// The side of a center on which a value lies.
enum class Side { Better, OnCenter, Worse };
Side sideOf(double value, double center);

/// How many pairs of a convergence and a variability method there are. A pair has the index
/// 3 * convergence method + variability method.
inline constexpr int pairCount = methodCount * methodCount;

/// What kvadrantOf() returns where a number is NaN.
inline constexpr int noKvadrant = 0;

/// The kvadrant of a point: 1 worse/worse, 2 better/worse, 3 better/better, 4 worse/better
/// (convergence first), or noKvadrant.
int kvadrantOf(double convergence, double variability, double convergenceCenter,
               double variabilityCenter);

/// The kvadrants of one patient by pair index, all against the medians of the first convergence and
/// the first variability method.
std::array<int, pairCount> pairKvadrants(const PatientScoreRecord &score,
                                         const PatientScoreRecord &medianCenter);

/// 1 where \p value is worse than \p center or equal to it, otherwise 0.
int worseFlag(double value, double center);

/// The flags of one patient for the methods of \p list, each against the median of its own method.
std::array<int, methodCount> worseFlags(const PatientScoreRecord &score,
                                        const PatientScoreRecord &medianCenter, ScoreList list);
