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

    const AudioHardwarePropertyID defaultSelector; ///< of the system object: the device when none is selected
    const bool followsDefault; ///< moves when the default device changes; none can be selected

    // Under the settings lock.
    AudioDeviceID selected = kAudioDeviceUnknown;
    bool isOutputOn = true, isInputOn = false;
    Published<const pcm::ChannelMap> map;
    Published<const AURenderCallbackStruct> inputCallback;

    // Under the lifeCycle lock.
    AudioDeviceID device = kAudioDeviceUnknown; ///< that has the unit's I/O procedure
    DeviceFormat format{};

    // Shared with the device's I/O cycle.
    std::atomic<AudioDeviceIOProcID> procedure{nullptr};          ///< null while attached to no device
    std::atomic<bool> isStarted{false};                           ///< by the client
    std::atomic<AudioDeviceID> activeDevice{kAudioDeviceUnknown}; ///< only its I/O cycles render the unit
    std::atomic<bool> isRunning{false};                           ///< the device has started the procedure
    std::atomic<bool> startsAtZero{true};                         ///< the client's sample time, at each start

    // [audio & rendering], or with the lifeCycle lock while attached to no device.
    ClientInput client;
    pcm::Gain gain = {1, 1};
    const AudioBufferList* cycleInput = nullptr; ///< the device's input, during an I/O cycle
    UInt32 cycleFrames = 0;                      ///< of cycleInput
    std::vector<Float32> inputSamples;           ///< a slice of cycleInput: [frame * channels + channel]
};

} // namespace kvxplatform::audiounit
