// The platform calls of a successful load.
#pragma once

#include "tests/auplayer/player_test.h"

#include <string>

namespace auplayer_test {

/// What differs between loads.
struct Choices {
    std::string outputUnit = "'ahal'";
    std::string timePitch = "'nutp'";
    std::string bypassed = "varispeed"; ///< empty: neither
    std::string sliceLimit;             ///< empty: not set
};

/// The calls that make the URL of an existing folder item (url1) and load a file of 1000 frames at 48 kHz as
/// two channels of float.
Notes goodLoad(const Choices& choices = {});

/// The number of calls that make the URL; the last call of the load releases it.
constexpr std::size_t pathCalls = 1;

} // namespace auplayer_test
