// Whether a cycle is under way, for those who wait until what they took away is not being used any more.
#pragma once

#include "platform/support/wait_until.h"

#include <atomic>
#include <cstdint>

namespace kvxplatform::hal {

/// Odd while a cycle is under way. All operations are sequentially consistent: whoever takes something away
/// and then looks here either finds the cycle that may still use it, or that cycle finds it gone.
class CycleCount {
public:
    using Stamp = std::uint32_t;

    // ---- the thread that turns ----
    void begin() { count_.fetch_add(1); }
    void end() { count_.fetch_add(1); }

    // ---- everybody else ----
    Stamp now() const { return count_.load(); }
    /// Whether the cycle that was under way at that time, if there was one, has ended.
    bool hasPassed(Stamp stamp) const { return stamp % 2 == 0 || count_.load() != stamp; }
    void waitForEnd() const
    {
        const Stamp stamp = now();
        waitUntil([&] { return hasPassed(stamp); });
    }

private:
    std::atomic<Stamp> count_{0};
};

} // namespace kvxplatform::hal
