// Injects faults into a process that preloads this library, or reports calls of the process. Environment
// variables select the faults:
//   KVX_FAULT_THREADS=N   only the first N threads start
//   KVX_FAULT_THREAD=N    the Nth thread does not start
//   KVX_FAULT_BLOCK=N     allocations of N bytes or more fail; N is at least 100,000
//   KVX_FAULT_LOAD=1      the plug-in's reads of a sound file hang; a line on stdout reports the hang
//   KVX_FAULT_HARDWARE=1  the start of PortAudio ends the process with exit code 99
//   KVX_FAULT_DEVICES=1   PortAudio finds no device
//   KVX_FAULT_READS=1     no fault; each read of the size or the data of a property prints a line on stderr
#include <AudioToolbox/ExtendedAudioFile.h>
#include <CoreAudio/CoreAudio.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace {

template <class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

unsigned long numberOf(const char* name, unsigned long fallback)
{
    const char* text = std::getenv(name);
    return text ? std::strtoul(text, nullptr, 10) : fallback;
}

bool isPlugIn(const void* code)
{
    Dl_info info = {};
    return dladdr(code, &info) && info.dli_fname && std::strstr(info.dli_fname, "KVXAudio.so");
}

void report(const char* function, const void* caller)
{
    if (numberOf("KVX_FAULT_READS", 0) && isPlugIn(caller)) dprintf(STDERR_FILENO, "%s\n", function);
}

std::atomic<unsigned long> threads{0};

} // namespace

extern "C" {

void* __libc_malloc(std::size_t size);

#define INTERPOSED __attribute__((visibility("default")))

INTERPOSED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    const unsigned long number = ++threads;
    if (number > numberOf("KVX_FAULT_THREADS", ~0ul) || number == numberOf("KVX_FAULT_THREAD", 0))
        return EAGAIN;
    return next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create")(
        thread, attributes, start, argument);
}

INTERPOSED void* malloc(std::size_t size)
{
    if (size < 100'000 || size < numberOf("KVX_FAULT_BLOCK", ~0ul)) return __libc_malloc(size);
    errno = ENOMEM;
    return nullptr;
}

INTERPOSED OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* frames, AudioBufferList* buffers)
{
    if (numberOf("KVX_FAULT_LOAD", 0) && isPlugIn(__builtin_return_address(0))) {
        constexpr char text[] = "the load hangs\n";
        if (write(STDOUT_FILENO, text, sizeof text - 1) > 0)
            for (;;) pause();
    }
    return next<OSStatus(ExtAudioFileRef, UInt32*, AudioBufferList*)>("ExtAudioFileRead")(file, frames,
                                                                                          buffers);
}

INTERPOSED OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                                   const AudioObjectPropertyAddress* address,
                                                   UInt32 qualifierSize, const void* qualifier, UInt32* size)
{
    report(__func__, __builtin_return_address(0));
    return next<decltype(AudioObjectGetPropertyDataSize)>(__func__)(object, address, qualifierSize, qualifier,
                                                                    size);
}

INTERPOSED OSStatus AudioObjectGetPropertyData(AudioObjectID object,
                                               const AudioObjectPropertyAddress* address,
                                               UInt32 qualifierSize, const void* qualifier, UInt32* size,
                                               void* data)
{
    report(__func__, __builtin_return_address(0));
    return next<decltype(AudioObjectGetPropertyData)>(__func__)(object, address, qualifierSize, qualifier,
                                                                size, data);
}

INTERPOSED int Pa_Initialize()
{
    if (numberOf("KVX_FAULT_HARDWARE", 0)) _exit(99);
    return next<int()>("Pa_Initialize")();
}

INTERPOSED int Pa_GetDeviceCount()
{
    return numberOf("KVX_FAULT_DEVICES", 0) ? 0 : next<int()>("Pa_GetDeviceCount")();
}

INTERPOSED int Pa_GetDefaultOutputDevice()
{
    return numberOf("KVX_FAULT_DEVICES", 0) ? -1 : next<int()>("Pa_GetDefaultOutputDevice")();
}

} // extern "C"
