// What the output units that drive a device have in common.
#pragma once

#include "platform/audiounit/output/channel_map.h"
#include "platform/audiounit/output/client_side.h"
#include "platform/audiounit/output/device_facts.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

struct DeviceOutput {
    explicit DeviceOutput(AudioHardwarePropertyID selector, bool followsIt)
        : choice(selector), follows(followsIt)
    {
    }

    const AudioHardwarePropertyID choice; // of the system object: the device when none was told
    const bool follows;                   // the choice while it plays, and cannot be told

    // under settings
    AudioDeviceID told = kAudioDeviceUnknown;
    bool isOutputOn = true, isInputOn = false;
    Published<const ChannelMap> map;
    Published<const AURenderCallbackStruct> inputCallback;

    // under lifeCycle
    AudioDeviceID device = kAudioDeviceUnknown; // whose procedure we have
    DeviceShape shape{};

    // shared with the device's cycle; a procedure's ID stays good until the cycle that is in it has ended
    std::atomic<AudioDeviceIOProcID> procedure{nullptr};
    std::atomic<bool> isStarted{false};                           // the client wants it to run
    std::atomic<AudioDeviceID> activeDevice{kAudioDeviceUnknown}; // the one whose cycles count
    std::atomic<bool> isRunning{false};                           // the device has taken it on
    std::atomic<bool> startsAtZero{true};

    // [audio & in a slice], or attached to no device and with lifeCycle
    ClientSide client;
    pcm::Gain gain = {1, 1};                     // before the next slice
    const AudioBufferList* cycleInput = nullptr; // the device's, during its cycle
    UInt32 cycleFrames = 0;
    std::vector<Float32> inputSamples; // a piece of the device's input, in the client's channels
};

/// Begin, and end, to be called by the device. With lifeCycle; inside a slice of the unit without, where
/// a unit that was stopped cannot start.
OSStatus startDevice(Unit& unit);
OSStatus stopDevice(Unit& unit);

/// Leave the device for good, without waiting: nobody uses the unit any more.
void forgetDevice(DeviceOutput& state);

/// Look at the device again and move or adapt to it. Thread [any but audio], without a lock.
void reconsiderDevice(Unit& unit);

/// The device the unit plays on, or would. With settings.
AudioDeviceID currentDevice(Unit& unit);

/// Tell the unit its device; 0 takes it back. InvalidPropertyValue: no such device. While it runs, the unit
/// moves over, and the status is that of the start there. Without a lock.
OSStatus tellDevice(Unit& unit, AudioDeviceID device);

/// A callback's pull from the device's input, inside the unit's slice.
OSStatus renderInput(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
