#include "host/kvx/terminal/meter.h"

#include <cmath>

namespace kvx {

Meter::Meter(KVXDeviceID device) : device_(device) { KVXPlatformSetOutputTap(device, listen, this); }

Meter::~Meter() { KVXPlatformSetOutputTap(device_, nullptr, nullptr); }

void Meter::listen(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels)
{
    float peak = 0.0f;
    for (std::size_t i = 0; i < std::size_t(frames) * channels; ++i) {
        const float magnitude = std::fabs(samples[i]);
        if (magnitude > peak) peak = magnitude;
    }
    // The only other writer resets to 0: a peak lost to that is shown by the next slice.
    Meter& self = *static_cast<Meter*>(context);
    if (peak > self.peak_.load(std::memory_order_relaxed)) self.peak_.store(peak, std::memory_order_relaxed);
    self.frames_.fetch_add(frames, std::memory_order_relaxed);
}

} // namespace kvx
