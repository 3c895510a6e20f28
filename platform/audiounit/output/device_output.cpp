#include "platform/audiounit/output/device_output.h"

#include "platform/audiounit/output/device_cycle.h"
#include "platform/audiounit/output/device_watch.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/render.h"

namespace kvxplatform::audiounit {
namespace {

/// The client's side for the device's rate, and memory for its input. With lifeCycle.
OSStatus prepare(Unit& unit, DeviceOutput& state, const DeviceShape& shape)
{
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (state.isInputOn) {
        const AudioStreamBasicDescription& wanted = unit.output(1).format;
        if (wanted.mSampleRate != shape.sampleRate) return kAudioUnitErr_FormatNotSupported;
        state.inputSamples.assign(std::size_t{unit.sliceLimit} * wanted.mChannelsPerFrame, 0);
    }
    return state.client.prepare(unit, shape.sampleRate);
}

/// End to be called by the device, without waiting.
void leaveDevice(DeviceOutput& state)
{
    state.activeDevice = kAudioDeviceUnknown;
    if (!state.procedure) return;
    AudioDeviceStop(state.device, state.procedure);
    AudioDeviceDestroyIOProcID(state.device, state.procedure);
    endListening(state.device);
    state.device = kAudioDeviceUnknown;
    state.procedure = nullptr;
}

/// Leave the device. With lifeCycle. No slice runs afterwards.
void detach(Unit& unit, DeviceOutput& state)
{
    if (!state.procedure) return;
    forgetDevice(state);
    unit.scope.wait();
}

/// Have a device call us. With lifeCycle, attached to none.
OSStatus attach(Unit& unit, DeviceOutput& state, AudioDeviceID device)
{
    if (device == kAudioDeviceUnknown) return kAudioHardwareBadDeviceError;
    beginListening(device); // before it is looked at, so that no change is missed
    DeviceShape shape;
    OSStatus status = shapeOf(device, shape);
    if (!status) status = prepare(unit, state, shape);
    AudioDeviceIOProcID procedure = nullptr;
    if (!status) status = AudioDeviceCreateIOProcID(device, cycle, unit.self, &procedure);
    if (status) {
        endListening(device);
        return status;
    }
    state.device = device;
    state.shape = shape;
    state.procedure = procedure;
    state.activeDevice = device;
    status = AudioDeviceStart(device, procedure);
    if (status)
        detach(unit, state);
    else
        state.isRunning = true;
    return status;
}

/// With lifeCycle.
AudioDeviceID wantedDevice(Unit& unit, const DeviceOutput& state)
{
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (state.told) return state.told;
    // Untold, the HAL unit stays where it plays.
    return state.procedure && !state.follows ? state.device : defaultDevice(state.choice);
}

/// With lifeCycle. A unit that runs says so on its way, too: whoever wants it stopped asks that first.
OSStatus move(Unit& unit, DeviceOutput& state, AudioDeviceID device)
{
    if (state.procedure) {
        leaveDevice(state);
        unit.scope.wait();
    }
    OSStatus status = noErr;
    try {
        status = attach(unit, state, device);
    } catch (...) { // no memory for it
        endListening(device);
        status = memFullErr;
    }
    if (status) state.isRunning = false;
    return status;
}

} // namespace

void forgetDevice(DeviceOutput& state)
{
    state.isRunning = false;
    leaveDevice(state);
}

AudioDeviceID currentDevice(Unit& unit)
{
    const auto& state = stateOf<DeviceOutput>(unit);
    if (const AudioDeviceID active = state.activeDevice) return active;
    return state.told ? state.told : defaultDevice(state.choice);
}

OSStatus startDevice(Unit& unit)
{
    auto& state = stateOf<DeviceOutput>(unit);
    if (state.isStarted && state.procedure) return noErr;
    if (unit.scope.isInside()) return kAudioUnitErr_CannotDoInCurrentContext;
    beginWatching(unit.self);
    detach(unit, state); // what a stop inside a slice left
    if (state.startsAtZero) state.client.setSampleTime(0);
    const Float32 volume = parameterValue(unit, kHALOutputParam_Volume, kAudioUnitScope_Global, 0);
    state.gain = {volume, volume};
    state.isStarted = true;
    const OSStatus status = move(unit, state, wantedDevice(unit, state));
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
    // In the device's own cycle nobody may be waited for: the rest of the leaving is done outside it, even if
    // the unit is closed meanwhile.
    if (const AudioDeviceIOProcID procedure = state.procedure) AudioDeviceStop(state.activeDevice, procedure);
    askSoonFor(unit.self);
    return noErr;
}

void reconsiderDevice(Unit& unit)
{
    auto& state = stateOf<DeviceOutput>(unit);
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    if (!state.isStarted) {
        detach(unit, state);
        return;
    }
    const AudioDeviceID wanted = wantedDevice(unit, state);
    DeviceShape shape;
    if (wanted == state.device && state.procedure && (shapeOf(wanted, shape) || shape == state.shape)) return;
    move(unit, state, wanted); // if it refuses, the next change is the next chance
    if (!state.isStarted) detach(unit, state);
}

OSStatus tellDevice(Unit& unit, AudioDeviceID device)
{
    auto& state = stateOf<DeviceOutput>(unit);
    DeviceShape shape;
    if (device != kAudioDeviceUnknown && shapeOf(device, shape)) return kAudioUnitErr_InvalidPropertyValue;
    const auto tell = [&] {
        const std::lock_guard<std::mutex> guard(unit.settings);
        state.told = device;
    };
    if (unit.scope.isInside()) {
        tell();
        askSoon();
        return noErr;
    }
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    tell();
    if (!state.isStarted) return noErr;
    const AudioDeviceID wanted = wantedDevice(unit, state);
    return wanted == state.device && state.procedure ? noErr : move(unit, state, wanted);
}

} // namespace kvxplatform::audiounit
