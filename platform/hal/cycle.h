// One I/O cycle: calls a device's procedures for one slice of frames and mixes the procedures' output.
#pragma once

#include "platform/hal/device.h"

#include <optional>

namespace kvxplatform::hal {

/// The device whose cycle runs on this thread, or null outside a cycle. A thread inside a cycle never waits.
extern thread_local Device* deviceInCycle __attribute__((tls_model("initial-exec")));

/// Lets the calling thread run cycles of the device while this object lives.
class CycleScope {
public:
    /// Wait if another driver still runs its last cycle of the device.
    explicit CycleScope(Device& device);
    /// Do not wait: if another driver still runs a cycle of the device, the object converts to false.
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

// These functions are called inside a CycleScope.
// All functions: [audio & rendering].

/// The buffers and settings of the next cycle. Both are valid until the CycleScope ends.
CycleBuffers& buffersOfNextCycle(Device& device);

/// Call every started procedure with a silent output buffer, add the procedures' outputs, apply the levels,
/// and pass the result to the tap and the captures. Allocates nothing. At gain 1 the samples of a single
/// procedure are unchanged.
/// Shape    `buffers` come from buffersOfNextCycle(); `frames` is at most one slice; the result is
///          interleaved.
/// Owner    `buffers` owns the result, which is valid until the next cycle with these buffers.
/// `mayWait` says whether a capture may wait for its writer thread.
const float* runCycle(Device& device, CycleBuffers& buffers, UInt32 frames, bool mayWait);

} // namespace kvxplatform::hal
