// The state of an output unit that drives a device.
#pragma once

#include "platform/audiounit/output/client_input.h"
#include "platform/audiounit/output/device_info.h"
#include "platform/pcm/gain.h"

namespace kvxplatform::audiounit {

struct DeviceOutput {
    explicit DeviceOutput(AudioHardwarePropertyID selector, bool followsIt)
        : defaultSelector(selector), followsDefault(followsIt)
    {
    }

    /// The property of the system object that names the device to use when no device is selected.
    const AudioHardwarePropertyID defaultSelector;
    /// Whether the unit moves when the default device changes. No device can be selected for such a unit.
    const bool followsDefault;

    // The following fields are guarded by the `settings` lock.
    AudioDeviceID selected = kAudioDeviceUnknown;
    bool isOutputOn = true, isInputOn = false;
    Published<const pcm::ChannelMap> map;
    Published<const AURenderCallbackStruct> inputCallback;

    // The following fields are guarded by the `lifeCycle` lock.
    AudioDeviceID device = kAudioDeviceUnknown; ///< device that has the unit's I/O procedure
    DeviceFormat format{};

    // The following fields are shared with the device's I/O cycle.
    std::atomic<AudioDeviceIOProcID> procedure{nullptr};
    std::atomic<bool> isStarted{false}; ///< whether the client has started the unit
    /// The only device whose I/O cycles render the unit.
    std::atomic<AudioDeviceID> activeDevice{kAudioDeviceUnknown};
    std::atomic<bool> isRunning{false}; ///< whether the device has started the I/O procedure
    /// Whether the client's sample time restarts at 0 with each start of the unit.
    std::atomic<bool> startsAtZero{true};

    // The following fields belong to the render thread, or to the holder of the `lifeCycle` lock while the
    // unit is attached to no device.
    // [audio & rendering]
    ClientInput client;
    pcm::Gain gain = {1, 1};
    const AudioBufferList* cycleInput = nullptr; ///< input of the device during an I/O cycle
    UInt32 cycleFrames = 0;                      ///< number of frames in cycleInput
    /// A slice of cycleInput as floats: [frame * channels + channel].
    std::vector<Float32> inputSamples;
};

} // namespace kvxplatform::audiounit
