#include "platform/hal/portaudio_driver.h"

#include "platform/hal/cycle.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <portaudio.h>
#include <unistd.h>
#include <utility>

namespace kvxplatform::hal {

namespace {

std::mutex paLock; // PortAudio's own functions are not to be called by two threads at once

std::atomic<int> openStreams{0};

// Streams that ended by themselves. Closing one can wait for ever for a server that is gone, so they are
// kept, and PortAudio is not started anew either, which would close them.
std::vector<std::unique_ptr<HardwareStream>> endedStreams; // under paLock

constexpr std::int64_t longestSilenceNanos = 2'000'000'000; // a running stream asks far more often
constexpr UInt32 mostOffered = 32;                          // plug-like devices offer any number of channels
constexpr double commonRates[] = {8000,  11025, 16000, 22050,  32000, 44100,
                                  48000, 88200, 96000, 176400, 192000};

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

/// Standard error, led nowhere for a moment: JACK's data base has no handler to set, and complains of a
/// server of the other architecture.
class StandardErrorAside {
public:
    StandardErrorAside() : kept_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0))
    {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (kept_ >= 0 && nowhere >= 0) dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0) close(nowhere);
    }
    ~StandardErrorAside()
    {
        if (kept_ < 0) return;
        dup2(kept_, STDERR_FILENO);
        close(kept_);
    }
    StandardErrorAside(const StandardErrorAside&) = delete;
    StandardErrorAside& operator=(const StandardErrorAside&) = delete;

private:
    int kept_;
};

PaError initialize()
{
    const StandardErrorAside aside;
    return Pa_Initialize();
}

bool isStarted = false; // under paLock

bool startPortAudio(std::string& error)
{
    if (isStarted) return true;
    silenceMessages();
    const PaError status = initialize();
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

int callback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
             PaStreamCallbackFlags, void* client)
{
    const HardwareStream& hardware = *static_cast<const HardwareStream*>(client);
    float* out = static_cast<float*>(output);
    std::fill_n(out, frames * hardware.channels, 0.0f);
    if (hardware.isAbandoned) return paAbort;
    Device& device = *hardware.device;
    // Nobody else wants the lock, unless another driver is just taking over: then this stream is closed in a
    // moment.
    const std::unique_lock<std::mutex> lock(device.turnLock, std::try_to_lock);
    if (!lock || device.driver != Driver::hardware) return paContinue;
    const Settings& settings = takeUpSettings(device);
    if (settings.outputChannels != hardware.channels) return paContinue;
    for (unsigned long done = 0; done < frames;) {
        const UInt32 slice = std::min<UInt32>(static_cast<UInt32>(frames - done), settings.sliceFrames);
        const float* mixed = turnCycle(device, slice, false);
        std::copy_n(mixed, std::size_t{slice} * hardware.channels, out + done * hardware.channels);
        done += slice;
    }
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
    device->settings.outputChannels = channels > mostOffered ? 2 : channels;
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
    if (!std::exchange(isFirst, false) && openStreams == 0 &&
        endedStreams.empty()) { // its list is only read at its start
        Pa_Terminate();
        initialize();
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
        const std::lock_guard<std::mutex> turn(device->turnLock); // no stream, so nobody turns it
        running = takeUpSettings(*device);
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
    --openStreams;
    const std::lock_guard<std::mutex> lock(paLock);
    if (device->hardware->isAbandoned || Pa_IsStreamActive(device->hardware->stream) != 1) {
        device->hardware->isAbandoned = true;
        endedStreams.push_back(std::move(device->hardware));
        return;
    }
    Pa_StopStream(device->hardware->stream); // what was handed over is heard to its end
    Pa_CloseStream(device->hardware->stream);
    device->hardware = nullptr;
}

bool hasHardwareEnded(Device& device)
{
    const std::lock_guard<std::mutex> control(device.control);
    if (!device.hardware) return false;
    const std::lock_guard<std::mutex> lock(paLock);
    const std::int64_t last = std::max(device.lastCycleNanos.load(), device.hardware->openedNanos);
    const bool isSilent = static_cast<std::int64_t>(AudioGetCurrentHostTime()) - last > longestSilenceNanos;
    if (isSilent || Pa_IsStreamActive(device.hardware->stream) != 1) device.hardware->isAbandoned = true;
    return device.hardware->isAbandoned;
}

void leaveHardware()
{
    const std::lock_guard<std::mutex> lock(paLock);
    if (isStarted && openStreams == 0 && endedStreams.empty()) Pa_Terminate();
    isStarted = false;
}

bool isAnyHardwareOpen() { return openStreams > 0; }

} // namespace kvxplatform::hal
