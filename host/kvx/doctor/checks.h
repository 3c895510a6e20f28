// Assesses the facts of a system: what is fine, what is a problem, and what helps.
// All functions: [any].
#pragma once

#include "host/kvx/doctor/system_facts.h"

#include <string>
#include <vector>

namespace kvx {

/// One line of `kvx doctor`.
struct Check {
    std::string subject; ///< what was checked: "libsndfile", "real time"
    bool isGood = true;  ///< false: a problem
    std::string finding;
    std::string advice; ///< what helps against the problem, with the command; "" if nothing is to be done
};

std::vector<Check> checksOf(const SystemFacts& facts);

/// Whether `kvx play` can play: the library loads, and there is a hardware device that opens, or the user
/// requests the simulated device.
bool canPlay(const SystemFacts& facts);

/// Format a check as a line: "problem  real time       SCHED_FIFO is refused; …".
std::string formatCheck(const Check& check);

} // namespace kvx
