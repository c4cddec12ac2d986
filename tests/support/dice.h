// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>

#include <QtGlobal>

/// Draws the same on each machine, unlike the distributions of the standard library.
class Dice
{
public:
    explicit Dice(unsigned seed) : m_engine(seed) { }

    /// A number from 0 to \p bound - 1; 0 without a positive bound.
    int below(qint64 bound) { return bound > 0 ? int(m_engine() % quint64(bound)) : 0; }
    /// True as often as \p percent says.
    bool chance(int percent) { return below(100) < percent; }
    /// One of \p choices, of which there is at least one.
    template<typename List>
    const typename List::value_type &pick(const List &choices)
    {
        return *(choices.begin() + below(static_cast<qint64>(choices.size())));
    }

private:
    std::mt19937 m_engine;
};
