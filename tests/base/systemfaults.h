// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

/// Lets a test decide how the system's calls for files go. Functions of the test program replace
/// the system's; each call between start() and stop() has a number, counted from 1.
namespace SystemFaults
{

enum class Kind {
    None,
    /// The call fails.
    Once,
    /// The call fails, and so do all later ones of the same function.
    FromThenOn,
    /// The call does half of what it is asked, if it can.
    Half,
    /// From this call on nothing reaches the system, as after a kill.
    End,
    /// The same, after half of the call.
    EndHalfway,
    /// The process is killed before the call.
    Kill,
};

struct Plan {
    Kind kind = Kind::None;
    /// The call that it happens to.
    int call = 0;
    int error = 0;
    /// Whether there are files without a name.
    bool hasUnnamedFiles = true;
};

void start(const Plan &plan);

/// The names of the calls since start().
std::vector<const char *> stop();

} // namespace SystemFaults
