// One walk through all that a host program does with a player, with the outcome of every step as text: so
// that hosts of different versions, and hosts that lack something, can be compared step by step.
#pragma once

#include "host/runtime/host.h"

#include <string>
#include <vector>

namespace endtoend {

struct Outcome {
    std::string step;
    std::string
        result; ///< as a program would print it; "Class: message" for an exception, "-" when not reached
};

/// Walk through it. Steps that fail are told, not thrown; what is left alive at the end is the last outcome.
std::vector<Outcome> walkScenario(host::Host& host);

/// What a complete host of any version gives.
const std::vector<Outcome>& completeOutcomes();

} // namespace endtoend
