// One slice of a device's time.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Call every started procedure with a zeroed slice of its own, add them up, apply the levels, and hand the
/// sum to the tap and the capture. A single procedure's samples pass as they are. Shape   `frames` at most
/// the running slice; the result is interleaved, valid until the next cycle. Thread  whoever turns the
/// device, with its cycleLock held. Allocates nothing, and takes no lock.
const float* turnCycle(Device& device, UInt32 frames, bool mayWait);

/// The slice buffers for these settings, made outside the cycle; exchanged with the device's by applyBuffers.
struct Buffers {
    explicit Buffers(const Settings& settings);
    std::vector<float> mix, scratch, inputSilence, gains, targetGains;
};

/// With cycleLock held: the former buffers are in `buffers` afterwards, to be freed outside.
void applyBuffers(Device& device, const Settings& settings, Buffers& buffers);

} // namespace kvxplatform::hal
