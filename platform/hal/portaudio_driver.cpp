#include "platform/hal/portaudio_driver.h"

#include "platform/hal/cycle.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <portaudio.h>
#include <utility>

namespace kvxplatform::hal {

namespace {

std::atomic<int> openStreams{0};

constexpr std::int64_t longestSilenceNanos = 2'000'000'000; // a running stream asks far more often
constexpr int spinsForLock = 20000;                         // well under a slice; holders need microseconds
constexpr UInt32 mostChannels = 32;                         // plug-like devices offer any number
constexpr double commonRates[] = {8000,  11025, 16000, 22050,  32000, 44100,
                                  48000, 88200, 96000, 176400, 192000};

std::mutex paLock; // PortAudio's own functions are not to be called by two threads at once

// ---- the libraries below PortAudio print what they try; a user wants to see none of it ----

void ignoreALSA(const char*, int, const char*, int, const char*, ...) {}
void ignoreJACK(const char*) {}

template <class Function, class Handler>
void setHandler(const char* name, Handler handler)
{
    if (void* address = dlsym(RTLD_DEFAULT, name)) reinterpret_cast<Function*>(address)(handler);
}

void silenceMessages()
{
    using ALSAHandler = void (*)(const char*, int, const char*, int, const char*, ...);
    setHandler<int(ALSAHandler)>("snd_lib_error_set_handler", ignoreALSA);
    setHandler<void(void (*)(const char*))>("jack_set_error_function", ignoreJACK);
    setHandler<void(void (*)(const char*))>("jack_set_info_function", ignoreJACK);
}

bool startPortAudio(std::string& error)
{
    static bool isStarted = false;
    if (isStarted) return true;
    silenceMessages();
    const PaError status = Pa_Initialize();
    silenceMessages(); // JACK's part sets its own
    isStarted = status == paNoError;
    if (!isStarted) error = std::string("PortAudio does not start: ") + Pa_GetErrorText(status);
    return isStarted;
}

PaStreamParameters parametersOf(const Device& device)
{
    PaStreamParameters parameters = {};
    parameters.device = device.hardwareIndex;
    parameters.channelCount = static_cast<int>(device.settings.outputChannels);
    parameters.sampleFormat = paFloat32;
    parameters.suggestedLatency = Pa_GetDeviceInfo(device.hardwareIndex)->defaultLowOutputLatency;
    return parameters;
}

/// cycleLock for a callback: others hold it for microseconds, so it is worth a short wait, and no longer one.
bool lockSoon(std::mutex& lock)
{
    for (int spin = 0; spin < spinsForLock; ++spin) {
        if (lock.try_lock()) return true;
        __builtin_ia32_pause();
    }
    return false;
}

int callback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
             PaStreamCallbackFlags, void* client)
{
    const HardwareStream& hardware = *static_cast<const HardwareStream*>(client);
    Device& device = *hardware.device;
    const UInt32 channels = hardware.channels;
    float* out = static_cast<float*>(output);
    if (!lockSoon(device.cycleLock)) {
        // Whoever reconfigures the device right now has closed this stream in a moment.
        std::fill_n(out, frames * channels, 0.0f);
        return paContinue;
    }
    for (unsigned long done = 0; done < frames;) {
        const UInt32 slice = std::min<UInt32>(static_cast<UInt32>(frames - done), device.running.sliceFrames);
        const float* mixed = turnCycle(device, slice, false);
        std::copy_n(mixed, std::size_t{slice} * channels, out + done * channels);
        done += slice;
    }
    device.cycleLock.unlock();
    return paContinue;
}

DeviceRef deviceOf(int index)
{
    const PaDeviceInfo& info = *Pa_GetDeviceInfo(index);
    const char* system = Pa_GetHostApiInfo(info.hostApi)->name;
    auto device = std::make_shared<Device>();
    device->hardwareIndex = index;
    device->name = info.name;
    device->manufacturer = system;
    device->uid = std::string(system) + ":" + info.name;
    device->driver = Driver::hardware;
    device->settings.rate = info.defaultSampleRate;
    const auto channels = static_cast<UInt32>(info.maxOutputChannels);
    device->settings.outputChannels = channels > mostChannels ? 2 : channels;
    device->settings.latencyFrames =
        static_cast<UInt32>(info.defaultLowOutputLatency * info.defaultSampleRate);
    device->ratesAreKnown = false;
    return device;
}

} // namespace

std::vector<DeviceRef> readHardware(std::string& error)
{
    const std::lock_guard<std::mutex> lock(paLock);
    std::vector<DeviceRef> devices;
    if (!startPortAudio(error)) return devices;
    static bool isFirst = true;
    if (!std::exchange(isFirst, false) && openStreams == 0) { // its list is only read at its start
        Pa_Terminate();
        Pa_Initialize();
        silenceMessages();
    }
    // The user's own default first, then in its order.
    std::vector<int> order;
    const int preferred = Pa_GetDefaultOutputDevice();
    if (preferred >= 0) order.push_back(preferred);
    for (int i = 0; i < Pa_GetDeviceCount(); ++i)
        if (i != preferred) order.push_back(i);
    for (int index : order)
        if (Pa_GetDeviceInfo(index)->maxOutputChannels > 0) devices.push_back(deviceOf(index));
    return devices;
}

bool canOpen(const Device& device)
{
    const std::lock_guard<std::mutex> lock(paLock);
    const PaStreamParameters parameters = parametersOf(device);
    PaStream* stream = nullptr;
    if (Pa_OpenStream(&stream, nullptr, &parameters, device.settings.rate, device.settings.sliceFrames,
                      paNoFlag, nullptr, nullptr) != paNoError)
        return false;
    Pa_CloseStream(stream);
    return true;
}

std::vector<double> findRates(const Device& device)
{
    const std::lock_guard<std::mutex> lock(paLock);
    const PaStreamParameters parameters = parametersOf(device);
    std::vector<double> rates;
    for (double rate : commonRates)
        if (rate == device.settings.rate ||
            Pa_IsFormatSupported(nullptr, &parameters, rate) == paFormatIsSupported)
            rates.push_back(rate);
    if (rates.empty()) rates.push_back(device.settings.rate);
    return rates;
}

OSStatus openHardware(const DeviceRef& device)
{
    if (device->hardware) return noErr;
    const std::lock_guard<std::mutex> lock(paLock);
    Settings running;
    {
        const std::lock_guard<std::mutex> cycle(device->cycleLock);
        running = device->running;
    }
    PaStreamParameters parameters = parametersOf(*device);
    parameters.channelCount = static_cast<int>(running.outputChannels);
    auto hardware = std::make_unique<HardwareStream>();
    hardware->device = device.get();
    hardware->channels = running.outputChannels;
    if (Pa_OpenStream(&hardware->stream, nullptr, &parameters, running.rate, running.sliceFrames, paNoFlag,
                      callback, hardware.get()) != paNoError)
        return kAudioHardwareUnspecifiedError;
    hardware->openedNanos = static_cast<std::int64_t>(AudioGetCurrentHostTime());
    if (Pa_StartStream(hardware->stream) != paNoError) {
        Pa_CloseStream(hardware->stream);
        return kAudioHardwareUnspecifiedError;
    }
    device->hardware = std::move(hardware);
    ++openStreams;
    return noErr;
}

void closeHardware(const DeviceRef& device)
{
    if (!device->hardware) return;
    const std::lock_guard<std::mutex> lock(paLock);
    if (Pa_IsStreamActive(device->hardware->stream) == 1) Pa_AbortStream(device->hardware->stream);
    Pa_CloseStream(device->hardware->stream);
    device->hardware = nullptr;
    --openStreams;
}

bool hasHardwareEnded(Device& device)
{
    const std::lock_guard<std::mutex> control(device.control);
    if (!device.hardware) return false;
    const std::lock_guard<std::mutex> lock(paLock);
    const std::int64_t last = std::max(device.lastCycleNanos.load(), device.hardware->openedNanos);
    const bool isSilent = static_cast<std::int64_t>(AudioGetCurrentHostTime()) - last > longestSilenceNanos;
    return isSilent || Pa_IsStreamActive(device.hardware->stream) != 1;
}

bool isAnyHardwareOpen() { return openStreams > 0; }

} // namespace kvxplatform::hal
