// The level of what a device plays, and how much it was.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <atomic>
#include <cstdint>

namespace kvx {

/// While one lives, it listens to a device's output. The device must outlive it.
class Meter {
public:
    explicit Meter(KVXDeviceID device); ///< [main]
    ~Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    /// The greatest magnitude since the last call, full scale 1; 0 for silence. [main]
    float takePeak() { return peak_.exchange(0.0f, std::memory_order_relaxed); }

    /// Frames since construction. A slice under way is not counted yet. [any]
    std::uint64_t frames() const { return frames_.load(std::memory_order_relaxed); }

private:
    static void listen(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::atomic<float> peak_{0.0f};
    std::atomic<std::uint64_t> frames_{0};
};

} // namespace kvx
