// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/kvadrants.h"

#include <cmath>

// Required as is: the two comparisons are not mirror images, so NaN is worse in the first and
// better in the second.
Mark markOf(const PatientScoreRecord &score, const PatientScoreRecord &center,
            int convergenceMethod, int variabilityMethod)
{
    const bool convergenceBetter =
        center.convergence.at(convergenceMethod) > score.convergence.at(convergenceMethod);
    const bool variabilityWorse =
        score.variability.at(variabilityMethod) >= center.variability.at(variabilityMethod);
    return {convergenceBetter, !variabilityWorse};
}

Side sideOf(double value, double center)
{
    if (value > center) {
        return Side::Worse;
    }
    return center > value ? Side::Better : Side::OnCenter;
}

int kvadrantOf(double convergence, double variability, double convergenceCenter,
               double variabilityCenter)
{
    if (std::isnan(convergence) || std::isnan(variability) || std::isnan(convergenceCenter)
        || std::isnan(variabilityCenter)) {
        return noKvadrant;
    }
    const bool convergenceBetter = convergence < convergenceCenter;
    if (variability < variabilityCenter) {
        return convergenceBetter ? 3 : 4;
    }
    return convergenceBetter ? 2 : 1;
}

std::array<int, pairCount> pairKvadrants(const PatientScoreRecord &score,
                                         const PatientScoreRecord &medianCenter)
{
    // Required as is: no pair is compared with the medians of its own methods.
    const double convergenceCenter = medianCenter.convergence.at(0);
    const double variabilityCenter = medianCenter.variability.at(0);
    std::array<int, pairCount> kvadrants{};
    for (int pair = 0; pair < pairCount; ++pair) {
        kvadrants.at(size_t(pair)) = kvadrantOf(score.convergence.at(pair / methodCount),
                                                score.variability.at(pair % methodCount),
                                                convergenceCenter, variabilityCenter);
    }
    return kvadrants;
}

int worseFlag(double value, double center)
{
    // Required as is: NaN counts as better here.
    return value >= center ? 1 : 0;
}

std::array<int, methodCount> worseFlags(const PatientScoreRecord &score,
                                        const PatientScoreRecord &medianCenter, ScoreList list)
{
    std::array<int, methodCount> flags{};
    for (int method = 0; method < methodCount; ++method) {
        flags.at(size_t(method)) =
            worseFlag((score.*list).at(method), (medianCenter.*list).at(method));
    }
    return flags;
}
