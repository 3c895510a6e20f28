// What the platform is asked when a file is loaded and all goes well, call by call.
#pragma once

#include "tests/auplayer/player_test.h"

#include <string>

namespace auplayer_test {

/// Where one load differs from another.
struct Choices {
    std::string outputUnit = "'ahal'";
    std::string timePitch = "'nutp'";
    std::string bypassed = "varispeed"; ///< empty: neither
    std::string sliceLimit;             ///< empty: not set
};

/// The calls that make the path of a folder item that exists, and those that load a file of 1000 frames at
/// 48 kHz as two channels of float. The path is url1.
Notes goodLoad(const Choices& choices = {});

/// The first of them that belong to the path; the last one gives it back.
constexpr std::size_t pathCalls = 1;

} // namespace auplayer_test
