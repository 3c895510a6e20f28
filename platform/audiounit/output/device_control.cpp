#include "platform/audiounit/output/device_control.h"

#include "platform/audiounit/output/device_cycle.h"
#include "platform/audiounit/output/device_watch.h"
#include "platform/audiounit/parameter.h"
#include "platform/support/border.h"

namespace kvxplatform::audiounit {
namespace {

// The callers of the functions in this namespace hold the `lifeCycle` lock, except those of removeProcedure()
// and updateDevice().

/// Allocate memory for a device's format.
OSStatus prepare(Unit& unit, DeviceOutput& state, const DeviceFormat& format)
{
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (state.isInputOn) {
        const AudioStreamBasicDescription& client = unit.output(1).format;
        if (client.mSampleRate != format.sampleRate) return kAudioUnitErr_FormatNotSupported;
        state.inputSamples.assign(std::size_t{unit.sliceLimit} * client.mChannelsPerFrame, 0);
    }
    return state.client.prepare(unit, format.sampleRate);
}

/// Remove the I/O procedure without waiting for a slice. Has no effect while the unit is attached to no
/// device.
void removeProcedure(DeviceOutput& state)
{
    state.activeDevice = kAudioDeviceUnknown;
    if (!state.procedure) return;
    AudioDeviceStop(state.device, state.procedure);
    AudioDeviceDestroyIOProcID(state.device, state.procedure);
    endListening(state.device);
    state.device = kAudioDeviceUnknown;
    state.procedure = nullptr;
}

/// Detach the unit from the device and wait for the slice in progress.
void detach(Unit& unit, DeviceOutput& state)
{
    if (!state.procedure) return;
    abandonDevice(state);
    unit.scope.wait();
}

/// Attach the unit to a device and start the device's I/O cycles. The unit must not be attached to any
/// device.
OSStatus attach(Unit& unit, DeviceOutput& state, AudioDeviceID device)
{
    if (device == kAudioDeviceUnknown) return kAudioHardwareBadDeviceError;
    // Listening begins before the device's format is read, so that no change is missed.
    beginListening(device);
    DeviceFormat format;
    AudioDeviceIOProcID procedure = nullptr;
    OSStatus status = withinBorder(memFullErr, [&]() -> OSStatus {
        if (const OSStatus failure = readFormat(device, format)) return failure;
        if (const OSStatus failure = prepare(unit, state, format)) return failure;
        return AudioDeviceCreateIOProcID(device, runCycle, unit.self, &procedure);
    });
    if (status) {
        endListening(device);
        return status;
    }
    state.device = device;
    state.format = format;
    state.procedure = procedure;
    state.activeDevice = device;
    status = AudioDeviceStart(device, procedure);
    if (status)
        detach(unit, state);
    else
        state.isRunning = true;
    return status;
}

AudioDeviceID deviceToUse(Unit& unit, const DeviceOutput& state)
{
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (state.selected) return state.selected;
    // A unit without a selected device that does not follow the default device stays on the device where it
    // runs.
    return state.procedure && !state.followsDefault ? state.device : defaultDevice(state.defaultSelector);
}

/// Attach the unit to a device in place of its present device. isRunning stays true during the move, because
/// a client reads it to decide whether to stop the unit.
OSStatus move(Unit& unit, DeviceOutput& state, AudioDeviceID device)
{
    if (state.procedure) {
        removeProcedure(state);
        unit.scope.wait();
    }
    const OSStatus status = attach(unit, state, device);
    if (status) state.isRunning = false;
    return status;
}

void updateDevice(Unit& unit)
{
    auto& state = stateOf<DeviceOutput>(unit);
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    if (!state.isStarted) {
        detach(unit, state);
        return;
    }
    const AudioDeviceID device = deviceToUse(unit, state);
    DeviceFormat format;
    if (device == state.device && state.procedure && (readFormat(device, format) || format == state.format))
        return;
    move(unit, state, device); // after a failed move, the next change of a device causes another attempt
    if (!state.isStarted) detach(unit, state);
}

} // namespace

void abandonDevice(DeviceOutput& state)
{
    state.isRunning = false;
    removeProcedure(state);
}

AudioDeviceID currentDevice(Unit& unit)
{
    const auto& state = stateOf<DeviceOutput>(unit);
    if (const AudioDeviceID active = state.activeDevice) return active;
    return state.selected ? state.selected : defaultDevice(state.defaultSelector);
}

OSStatus startDevice(Unit& unit)
{
    auto& state = stateOf<DeviceOutput>(unit);
    if (state.isStarted && state.procedure) return noErr;
    if (unit.scope.isInside()) return kAudioUnitErr_CannotDoInCurrentContext;
    beginWatching(unit.self, updateDevice);
    detach(unit, state); // a stop inside a slice may not have been completed yet
    if (state.startsAtZero) state.client.setSampleTime(0);
    const Float32 volume = parameterValue(unit, kHALOutputParam_Volume, kAudioUnitScope_Global, 0);
    state.gain = {volume, volume};
    state.isStarted = true;
    const OSStatus status = move(unit, state, deviceToUse(unit, state));
    if (status) state.isStarted = false;
    return status;
}

OSStatus stopDevice(Unit& unit)
{
    auto& state = stateOf<DeviceOutput>(unit);
    state.isStarted = false;
    if (!unit.scope.isInside()) {
        detach(unit, state);
        return noErr;
    }
    // The thread of an I/O cycle cannot wait for the end of that cycle, so another thread detaches the unit,
    // even if the unit is closed first.
    if (const AudioDeviceIOProcID procedure = state.procedure) AudioDeviceStop(state.activeDevice, procedure);
    updateSoon(unit.self, updateDevice);
    return noErr;
}

OSStatus selectDevice(Unit& unit, AudioDeviceID device)
{
    auto& state = stateOf<DeviceOutput>(unit);
    DeviceFormat format;
    if (device != kAudioDeviceUnknown && readFormat(device, format))
        return kAudioUnitErr_InvalidPropertyValue;
    const auto select = [&] {
        const std::lock_guard<std::mutex> guard(unit.settings);
        state.selected = device;
    };
    if (unit.scope.isInside()) {
        select();
        updateSoon();
        return noErr;
    }
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    select();
    if (!state.isStarted) return noErr;
    const AudioDeviceID next = deviceToUse(unit, state);
    return next == state.device && state.procedure ? noErr : move(unit, state, next);
}

} // namespace kvxplatform::audiounit
