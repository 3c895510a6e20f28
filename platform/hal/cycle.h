// One I/O cycle: a slice of a device's time.
#pragma once

#include "platform/hal/device.h"

#include <optional>

namespace kvxplatform::hal {

/// The device whose cycle runs on this thread, or null. A thread inside a cycle never waits.
extern thread_local Device* deviceInCycle __attribute__((tls_model("initial-exec")));

/// The calling thread runs cycles of the device while this object lives.
class CycleScope {
public:
    /// Waits while another driver runs its last cycle.
    explicit CycleScope(Device& device);
    /// Does not wait: false if another driver still runs a cycle.
    CycleScope(Device& device, std::try_to_lock_t);
    ~CycleScope();
    CycleScope(const CycleScope&) = delete;
    CycleScope& operator=(const CycleScope&) = delete;
    explicit operator bool() const { return entry_.has_value(); }

private:
    void enter(Device& device);

    std::unique_lock<std::mutex> lock_;
    std::optional<RenderScope::Entry> entry_;
};

// Both functions: [audio & rendering], inside a CycleScope.

/// The buffers and settings of the next cycle; valid until the scope ends.
CycleBuffers& buffersOfNextCycle(Device& device);

/// Call every started procedure with silence, add their output, apply the levels, and pass the sum to the
/// tap and the captures. Allocates nothing. A single procedure's samples stay exact.
/// Shape    `buffers` are those of the next cycle, `frames` at most its slice; the result is interleaved.
/// Owner    the buffers; valid until their next cycle.
/// `mayWait`: whether a capture may wait for its writer thread.
const float* runCycle(Device& device, CycleBuffers& buffers, UInt32 frames, bool mayWait);

} // namespace kvxplatform::hal
