#include "tests/platform/hal/test_device.h"

#include <array>
#include <chrono>
#include <thread>

namespace haltest {

std::string text(UInt32 code)
{
    std::string result;
    for (int shift = 24; shift >= 0; shift -= 8) result += static_cast<char>(code >> shift & 0xFF);
    return result;
}

// ---- devices ----

KVXSimulatedDevice Device::stepped()
{
    KVXSimulatedDevice description = {};
    description.name = "Test Device";
    description.sliceFrames = 64;
    description.isStepped = 1;
    return description;
}

KVXSimulatedDevice Device::paced()
{
    KVXSimulatedDevice description = stepped();
    description.isStepped = 0;
    return description;
}

Device::Device(const KVXSimulatedDevice& description) : id_(KVXPlatformAddSimulatedDevice(&description))
{
    EXPECT_NE(id_, 0u);
}

Device::~Device() { unplug(); }

void Device::unplug() { KVXPlatformRemoveSimulatedDevice(static_cast<KVXDeviceID>(id_)); }

// ---- procedures ----

Procedure::Procedure(AudioDeviceID device, Body body) : device_(device), body_(std::move(body))
{
    EXPECT_EQ(AudioDeviceCreateIOProcID(device, call, this, &id_), noErr);
}

Procedure::~Procedure() { remove(); }

OSStatus Procedure::remove()
{
    const OSStatus status = id_ ? AudioDeviceDestroyIOProcID(device_, id_) : OSStatus{noErr};
    id_ = nullptr;
    return status;
}

OSStatus Procedure::call(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
                         const AudioTimeStamp* inputTime, AudioBufferList* output,
                         const AudioTimeStamp* outputTime, void* client)
{
    auto& self = *static_cast<Procedure*>(client);
    ++self.calls_;
    self.body_({device, now, input, inputTime, output, outputTime});
    return noErr;
}

// ---- output ----

Recording::Recording(AudioDeviceID device) : device_(device)
{
    EXPECT_EQ(KVXPlatformSetOutputTap(static_cast<KVXDeviceID>(device), take, this), 0);
}

Recording::~Recording() { KVXPlatformSetOutputTap(static_cast<KVXDeviceID>(device_), nullptr, nullptr); }

void Recording::take(void* context, const float* samples, uint32_t frames, uint32_t channels)
{
    auto& self = *static_cast<Recording*>(context);
    self.samples.insert(self.samples.end(), samples, samples + std::size_t{frames} * channels);
    self.slices.push_back(frames);
}

// ---- properties ----

AudioObjectPropertyAddress address(AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
                                   AudioObjectPropertyElement element)
{
    return {selector, scope, element};
}

AudioDeviceID defaultOutput()
{
    return get<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDefaultOutputDevice));
}

uint32_t liveCount(const std::string& kind)
{
    std::array<KVXLiveCount, 32> rows = {};
    const uint32_t count = KVXPlatformGetLiveCounts(rows.data(), rows.size());
    for (uint32_t i = 0; i < count; ++i)
        if (rows[i].kind == kind) return rows[i].count;
    return 0;
}

void waitFor(const std::function<bool()>& condition)
{
    while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace haltest
