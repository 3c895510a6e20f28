// What receives a device's output beside the device: a tap and captures, set while it plays.
#pragma once

#include "platform/hal/capture.h"

#include <KVXPlatform/KVXPlatform.h>

#include <array>
#include <memory>

namespace kvxplatform::hal {

/// The control header's caller and KVX_AUDIO_CAPTURE may capture the same device.
enum class CaptureOwner { program, environment };
constexpr std::size_t captureOwners = 2;

/// Published to a device's cycles.
struct OutputSinks {
    KVXOutputTap tap = nullptr;
    void* tapContext = nullptr;
    std::array<std::shared_ptr<Capture>, captureOwners> captures; ///< by CaptureOwner; null: none
};

} // namespace kvxplatform::hal
