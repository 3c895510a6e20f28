#include "tests/support/platform_spy.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace spy {

namespace {

/// One call. Fields that a function has no argument for stay zero.
struct Call {
    Function function;
    AudioDeviceID device;
    UInt32 selector, channel, size;
    Boolean isInput;
    const void* procedure;
    const void* client;
    unsigned long ticks;
    bool hasResult; ///< whether the caller gave a place for the answer
};

/// Guards the notes. It spins, so that noting a call neither allocates nor touches a lock that a test
/// watches.
class Guard {
public:
    Guard()
    {
        while (flag().test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Guard() { flag().clear(std::memory_order_release); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    static std::atomic_flag& flag()
    {
        static std::atomic_flag theFlag = ATOMIC_FLAG_INIT;
        return theFlag;
    }
};

// Fixed storage: a call may come from inside a render procedure, which must not allocate, nor must the spy
// for it.
std::array<Call, 65536> notes;
std::size_t noted = 0;
std::array<Installed, 64> procedures;
std::size_t procedureCount = 0;
std::map<const void*, std::string> names;
Platform thePlatform;

std::string code(UInt32 selector)
{
    const char text[] = {'\'',
                         static_cast<char>(selector >> 24),
                         static_cast<char>(selector >> 16),
                         static_cast<char>(selector >> 8),
                         static_cast<char>(selector),
                         '\'',
                         0};
    return text;
}

std::string nameOf(const void* pointer)
{
    if (!pointer) return "null";
    const auto found = names.find(pointer);
    return found == names.end() ? "?" : found->second;
}

std::string propertyText(const Call& call)
{
    return code(call.selector) + ", " + std::to_string(call.size) + " bytes" +
           (call.hasResult ? "" : ", nowhere");
}

std::string text(const Call& call)
{
    const std::string device = std::to_string(call.device),
                      procedure = device + ", " + nameOf(call.procedure);
    switch (call.function) {
    case Function::hardwareGetProperty:
        return "AudioHardwareGetProperty(" + propertyText(call) + ")";
    case Function::deviceGetProperty:
        return "AudioDeviceGetProperty(" + device + ", channel " + std::to_string(call.channel) +
               (call.isInput ? ", input, " : ", output, ") + propertyText(call) + ")";
    case Function::addIOProc:
        return "AudioDeviceAddIOProc(" + procedure + ", " + nameOf(call.client) + ")";
    case Function::removeIOProc:
        return "AudioDeviceRemoveIOProc(" + procedure + ")";
    case Function::start:
        return "AudioDeviceStart(" + procedure + ")";
    case Function::stop:
        return "AudioDeviceStop(" + procedure + ")";
    case Function::delay:
        return "Delay(" + std::to_string(call.ticks) + ")";
    }
    return "?";
}

/// Note the call, let the test do what it wants to happen meanwhile, and return the refusal, or noErr.
OSStatus note(const Call& call)
{
    {
        const Guard guard;
        if (noted == notes.size()) noted = 0;
        notes[noted++] = call;
    }
    const auto during = thePlatform.during.find(call.function);
    if (during != thePlatform.during.end() && during->second) {
        during->second();
    } else if (call.function == Function::delay) {
        std::fputs("platform spy: a wait that nothing will end\n", stderr);
        std::abort();
    }
    const auto refusal = thePlatform.refusal.find(call.function);
    return refusal == thePlatform.refusal.end() ? OSStatus{noErr} : refusal->second;
}

/// Answer a property: the value if it is the right property and fits, else a status - and rubbish where the
/// value would stand, so that whoever uses it all the same is found out.
template <class Value>
OSStatus answer(OSStatus refusal, bool isKnown, const Value& value, UInt32* size, void* data)
{
    OSStatus status = refusal;
    if (!status && !isKnown) status = kAudioHardwareUnknownPropertyError;
    if (!status && *size < sizeof value) status = kAudioHardwareBadPropertySizeError;
    if (status) {
        if (data) std::memset(data, 0x3F, *size);
        return status;
    }
    std::memcpy(data, &value, sizeof value);
    *size = sizeof value;
    return noErr;
}

Installed* find(AudioDeviceID device, AudioDeviceIOProc procedure)
{
    Installed* const end = procedures.data() + procedureCount;
    Installed* const found = std::find_if(procedures.data(), end, [&](const Installed& each) {
        return each.device == device && each.procedure == procedure;
    });
    return found == end ? nullptr : found;
}

} // namespace

Platform& platform() { return thePlatform; }

void reset()
{
    thePlatform = {};
    AudioStreamBasicDescription& format = thePlatform.streamFormat;
    format.mSampleRate = 44100;
    format.mFormatID = 'lpcm';
    format.mFormatFlags = 9;
    format.mBytesPerPacket = format.mBytesPerFrame = 8;
    format.mFramesPerPacket = 1;
    format.mChannelsPerFrame = 2;
    format.mBitsPerChannel = 32;
    names.clear();
    procedureCount = 0;
    forgetCalls();
}

std::vector<std::string> calls()
{
    const Guard guard;
    std::vector<std::string> texts;
    std::transform(notes.begin(), notes.begin() + static_cast<std::ptrdiff_t>(noted),
                   std::back_inserter(texts), text);
    return texts;
}

void forgetCalls()
{
    const Guard guard;
    noted = 0;
}

int count(Function function)
{
    const Guard guard;
    return static_cast<int>(std::count_if(notes.begin(), notes.begin() + static_cast<std::ptrdiff_t>(noted),
                                          [&](const Call& call) { return call.function == function; }));
}

void name(const void* pointer, const char* text) { names[pointer] = text; }

std::vector<Installed> installed()
{
    const Guard guard;
    return {procedures.begin(), procedures.begin() + static_cast<std::ptrdiff_t>(procedureCount)};
}

} // namespace spy

#pragma GCC visibility push(default)

extern "C" OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* size, void* data)
{
    spy::Call call = {};
    call.function = spy::Function::hardwareGetProperty;
    call.selector = selector;
    call.size = size ? *size : 0;
    call.hasResult = size && data;
    const OSStatus refusal = spy::note(call);
    return spy::answer(refusal, selector == 'dOut', spy::thePlatform.defaultOutputDevice, size, data);
}

extern "C" OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                           AudioDevicePropertyID selector, UInt32* size, void* data)
{
    spy::Call call = {};
    call.function = spy::Function::deviceGetProperty;
    call.device = device;
    call.channel = channel;
    call.isInput = isInput;
    call.selector = selector;
    call.size = size ? *size : 0;
    call.hasResult = size && data;
    const OSStatus refusal = spy::note(call);
    const auto& own = spy::thePlatform.streamFormatOf;
    const auto found = own.find(device);
    return spy::answer(refusal, selector == 'sfmt',
                       found == own.end() ? spy::thePlatform.streamFormat : found->second, size, data);
}

extern "C" OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc procedure, void* client)
{
    spy::Call call = {};
    call.function = spy::Function::addIOProc;
    call.device = device;
    call.procedure = reinterpret_cast<const void*>(procedure);
    call.client = client;
    if (const OSStatus refusal = spy::note(call)) return refusal;
    const spy::Guard guard;
    if (spy::procedureCount == spy::procedures.size()) return kAudioHardwareUnspecifiedError;
    spy::procedures[spy::procedureCount++] = {device, procedure, client, false};
    return noErr;
}

extern "C" OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc procedure)
{
    spy::Call call = {};
    call.function = spy::Function::removeIOProc;
    call.device = device;
    call.procedure = reinterpret_cast<const void*>(procedure);
    if (const OSStatus refusal = spy::note(call)) return refusal;
    const spy::Guard guard;
    if (spy::Installed* found = spy::find(device, procedure)) {
        std::copy(found + 1, spy::procedures.data() + spy::procedureCount, found);
        --spy::procedureCount;
    }
    return noErr;
}

extern "C" OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProcID procedure)
{
    spy::Call call = {};
    call.function = spy::Function::start;
    call.device = device;
    call.procedure = reinterpret_cast<const void*>(procedure);
    if (const OSStatus refusal = spy::note(call)) return refusal;
    const spy::Guard guard;
    if (spy::Installed* found = spy::find(device, procedure)) found->isStarted = true;
    return noErr;
}

extern "C" OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProcID procedure)
{
    spy::Call call = {};
    call.function = spy::Function::stop;
    call.device = device;
    call.procedure = reinterpret_cast<const void*>(procedure);
    if (const OSStatus refusal = spy::note(call)) return refusal;
    const spy::Guard guard;
    if (spy::Installed* found = spy::find(device, procedure)) found->isStarted = false;
    return noErr;
}

extern "C" void Delay(unsigned long ticks, unsigned long* finalTicks)
{
    spy::Call call = {};
    call.function = spy::Function::delay;
    call.ticks = ticks;
    call.hasResult = finalTicks;
    spy::note(call);
    if (finalTicks) *finalTicks = 0;
}

#pragma GCC visibility pop
