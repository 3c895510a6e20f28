#include "tests/support/device_spy.h"

#include "tests/support/platform_text.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace device_spy {

namespace {

Platform thePlatform;
std::array<Installed, 64> procedures; // fixed memory, because the render thread may remove an I/O procedure
std::size_t procedureCount = 0;

Installed* find(AudioDeviceID device, AudioDeviceIOProc procedure)
{
    Installed* const end = procedures.data() + procedureCount;
    Installed* const found = std::find_if(procedures.data(), end, [&](const Installed& each) {
        return each.device == device && each.procedure == procedure;
    });
    return found == end ? nullptr : found;
}

void setStarted(AudioDeviceID device, AudioDeviceIOProc procedure, bool isStarted)
{
    const spy::Guard guard;
    if (Installed* const found = find(device, procedure)) found->isStarted = isStarted;
}

/// The caller's buffer of a property call, recorded as its size and ", null" for a null pointer.
struct Output {
    const UInt32* size;
    const void* data;
};
spy::Line& operator<<(spy::Line& line, Output output)
{
    return line << spy::Bytes{output.size ? *output.size : 0} << (output.size && output.data ? "" : ", null");
}

template <class Value>
OSStatus giveProperty(OSStatus status, bool isKnown, UInt32* size, void* data, const Value& value)
{
    if (!status && !isKnown) status = kAudioHardwareUnknownPropertyError;
    return spy::giveProperty(status, kAudioHardwareBadPropertySizeError, size, data, value);
}

} // namespace

Platform& platform() { return thePlatform; }

void reset()
{
    spy::reset();
    thePlatform = {};
    procedureCount = 0;
}

std::vector<Installed> installed()
{
    const spy::Guard guard;
    return {procedures.begin(), procedures.begin() + static_cast<std::ptrdiff_t>(procedureCount)};
}

} // namespace device_spy

using namespace device_spy;

#pragma GCC visibility push(default)
extern "C" {

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* size, void* data)
{
    const OSStatus status = spy::record(__func__, spy::Code{selector}, Output{size, data}).status;
    return giveProperty(status, selector == 'dOut', size, data, thePlatform.defaultOutputDevice);
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32* size, void* data)
{
    const OSStatus status = spy::record(__func__, device, "channel " + std::to_string(channel),
                                        isInput ? "input" : "output", spy::Code{selector}, Output{size, data})
                                .status;
    const auto found = thePlatform.streamFormatOf.find(device);
    const bool isListed = found != thePlatform.streamFormatOf.end();
    return giveProperty(status, selector == 'sfmt', size, data,
                        isListed ? found->second : thePlatform.streamFormat);
}

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc procedure, void* client)
{
    if (const OSStatus status = spy::record(__func__, device, procedure, client).status) return status;
    const spy::Guard guard;
    if (procedureCount == procedures.size()) return kAudioHardwareUnspecifiedError;
    procedures[procedureCount++] = {device, procedure, client, false};
    return noErr;
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc procedure)
{
    if (const OSStatus status = spy::record(__func__, device, procedure).status) return status;
    const spy::Guard guard;
    if (Installed* const found = find(device, procedure)) {
        std::copy(found + 1, procedures.data() + procedureCount, found);
        --procedureCount;
    }
    return noErr;
}

OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProcID procedure)
{
    const OSStatus status = spy::record(__func__, device, procedure).status;
    if (!status) setStarted(device, procedure, true);
    return status;
}

OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProcID procedure)
{
    const OSStatus status = spy::record(__func__, device, procedure).status;
    if (!status) setStarted(device, procedure, false);
    return status;
}

void Delay(unsigned long ticks, unsigned long* finalTicks)
{
    if (!spy::record(__func__, ticks).scripted.during) {
        std::fputs("device spy: a Delay without a scripted function would be repeated without end\n", stderr);
        std::abort();
    }
    if (finalTicks) *finalTicks = 0;
}

} // extern "C"
#pragma GCC visibility pop
