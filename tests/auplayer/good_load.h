// The platform calls of a successful load.
#pragma once

#include "tests/auplayer/player_fixture.h"

#include <string>

namespace auplayer_test {

/// The choices that change the platform calls of a load.
struct Choices {
    std::string outputUnit = "'ahal'";
    std::string timePitch = "'nutp'";
    std::string bypassed = "varispeed"; ///< unit that the load bypasses; empty for none
    std::string sliceLimit;             ///< slice limit that the load sets; empty if it sets none
};

/// Return the platform calls that make the URL of an existing folder item (url1) and load a file of 1000
/// frames at 48 kHz as two channels of float.
Notes goodLoad(const Choices& choices = {});

/// The number of calls at the beginning of goodLoad() that make the URL. The last call of the load releases
/// the URL.
constexpr std::size_t pathCalls = 1;

} // namespace auplayer_test
