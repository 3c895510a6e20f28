// A host with the built library loaded, and the check that a test leaves the host clean.
// All functions: [main].
#pragma once

#include "host/runtime/host.h"
#include "tests/endtoend/simulated_devices.h"

#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace endtoend {

inline const char* const libraryPath = KVX_BINARY_DIR "/KVXAudio.so";
inline const char* const playerClass = "CoreAudioPlayerKVX";

struct LoadedHost {
    host::Host host;

    explicit LoadedHost(host::Options options = {}) : host(std::move(options)) { host.load(libraryPath); }
};

inline std::vector<KVXLiveCount> livePlatformObjects()
{
    std::vector<KVXLiveCount> counts(32);
    counts.resize(std::min(KVXPlatformGetLiveCounts(counts.data(), 32), 32u));
    return counts;
}

/// Return the live-object counts of the host and the platform, one line per kind; empty without live objects.
inline std::string liveObjects(const host::Host& host)
{
    std::string text = host.leaks().text();
    for (const KVXLiveCount& each : livePlatformObjects())
        text += std::to_string(each.count) + " " + each.kind + " of the platform\n";
    return text;
}

/// Expect that no host value and no platform object is alive, and that the library has misused no host
/// service.
inline void expectCleanHost(const host::Host& host)
{
    EXPECT_EQ(liveObjects(host), "");
    EXPECT_EQ(host.misuses(), std::vector<std::string>());
}

/// The base of tests with one host. Its destructor runs after that of the test's members, and expects a clean
/// host.
struct LoadedHostTest : testing::Test {
    LoadedHost loaded;

    ~LoadedHostTest() override { expectCleanHost(loaded.host); }
};

} // namespace endtoend
