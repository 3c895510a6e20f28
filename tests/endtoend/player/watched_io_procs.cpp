#include "tests/endtoend/player/watched_io_procs.h"

#include "tests/support/allocator_hook.h"

#include <CoreAudio/CoreAudio.h>

#include <atomic>
#include <dlfcn.h>

namespace {

std::atomic<bool> isWatching{false};
std::atomic<int> callCount{0};
std::atomic<AudioDeviceIOProc> watchedProc{nullptr}; // the I/O procedure of all players

OSStatus callWatched(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
                     const AudioTimeStamp* inputTime, AudioBufferList* output,
                     const AudioTimeStamp* outputTime, void* client)
{
    const bool isWatched = isWatching;
    callCount += isWatched;
    allocator_hook::watchThisThread(isWatched);
    const OSStatus status = watchedProc.load()(device, now, input, inputTime, output, outputTime, client);
    allocator_hook::watchThisThread(false);
    return status;
}

template <class Function>
Function* platformFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc procedure, void* client)
{
    watchedProc = procedure;
    return platformFunction<decltype(AudioDeviceAddIOProc)>("AudioDeviceAddIOProc")(device, callWatched,
                                                                                    client);
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceRemoveIOProc)>("AudioDeviceRemoveIOProc")(device,
                                                                                          callWatched);
}

OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceStart)>("AudioDeviceStart")(device, callWatched);
}

OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProc)
{
    return platformFunction<decltype(AudioDeviceStop)>("AudioDeviceStop")(device, callWatched);
}

} // extern "C"

namespace endtoend {

void watchIoProcs(bool isOn)
{
    if (isOn) callCount = 0;
    isWatching = isOn;
}

int watchedIoProcCalls() { return callCount; }

} // namespace endtoend
