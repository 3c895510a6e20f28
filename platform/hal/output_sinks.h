// Receivers of a device's output other than the device itself: a tap and captures. They can be set while the
// device plays.
#pragma once

#include "platform/hal/capture.h"

#include <KVXPlatform/KVXPlatform.h>

#include <array>
#include <memory>

namespace kvxplatform::hal {

/// The two owners of captures: the program, through the control header, and KVX_AUDIO_CAPTURE. Both may
/// capture the same device.
enum class CaptureOwner { program, environment };
constexpr std::size_t captureOwners = 2;

/// The tap and the captures that a device publishes to its cycles.
struct OutputSinks {
    KVXOutputTap tap = nullptr;
    void* tapContext = nullptr;
    /// Captures, indexed by CaptureOwner; null without a capture.
    std::array<std::shared_ptr<Capture>, captureOwners> captures;
};

} // namespace kvxplatform::hal
