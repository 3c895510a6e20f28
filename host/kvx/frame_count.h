// How many frames a device has rendered.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <atomic>
#include <cstdint>

namespace kvx {

/// While one lives, it counts the frames of a device's output. The device must outlive it.
class FrameCount {
public:
    explicit FrameCount(KVXDeviceID device); ///< [main]
    ~FrameCount();
    FrameCount(const FrameCount&) = delete;
    FrameCount& operator=(const FrameCount&) = delete;

    /// Since construction. A slice under way is not counted yet. [any]
    std::uint64_t frames() const { return frames_.load(std::memory_order_relaxed); }

private:
    static void count(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::atomic<std::uint64_t> frames_{0};
};

} // namespace kvx
