// The level of what a device plays.
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

private:
    static void listen(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::atomic<float> peak_{0.0f};
};

} // namespace kvx
