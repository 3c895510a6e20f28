#include "tests/platform/audiounit/stepped_device.h"

namespace test {

SteppedDevice::SteppedDevice(Float64 rate, UInt32 channels, UInt32 sliceFrames, bool isStepped)
{
    KVXSimulatedDevice description = {};
    description.name = "Device under test";
    description.sampleRate = rate;
    description.outputChannels = static_cast<uint32_t>(channels);
    description.sliceFrames = static_cast<uint32_t>(sliceFrames);
    description.isStepped = isStepped;
    device = KVXPlatformAddSimulatedDevice(&description);
    played.reserve(1 << 20);
    KVXPlatformSetOutputTap(device, tap, this);
}

SteppedDevice::~SteppedDevice() { remove(); }

void SteppedDevice::remove()
{
    if (!device) return;
    KVXPlatformSetOutputTap(device, nullptr, nullptr);
    KVXPlatformRemoveSimulatedDevice(device);
    device = 0;
}

void SteppedDevice::makeDefault(AudioHardwarePropertyID role) const
{
    const AudioObjectPropertyAddress address = {role, kAudioObjectPropertyScopeGlobal, 0};
    const AudioDeviceID chosen = device;
    AudioObjectSetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, sizeof chosen, &chosen);
}

bool SteppedDevice::isRunning() const
{
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyDeviceIsRunning,
                                                kAudioObjectPropertyScopeGlobal, 0};
    UInt32 isRunning = 0, size = sizeof isRunning;
    return AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &isRunning) == noErr && isRunning;
}

void SteppedDevice::tap(void* context, const float* samples, uint32_t frames, uint32_t channels)
{
    auto& self = *static_cast<SteppedDevice*>(context);
    self.played.insert(self.played.end(), samples, samples + std::size_t{frames} * channels);
}

} // namespace test
