#include "platform/hal/portaudio_driver.h"

#include "platform/hal/common_rates.h"
#include "platform/hal/cycle.h"
#include "platform/hal/sound_server.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <map>
#include <memory>
#include <portaudio.h>
#include <unistd.h>
#include <utility>

namespace kvxplatform::hal {

namespace {

std::mutex paLock; // PortAudio's own functions are not to be called by two threads at once

std::atomic<int> openStreams{0};

/// Streams that ended by themselves, or whose closing did not finish; under paLock. Closing one can block
/// forever, as can the restart of PortAudio, which closes them. Never freed: their callback may still run.
std::vector<std::shared_ptr<HardwareStream>>& endedStreams =
    *new std::vector<std::shared_ptr<HardwareStream>>;

constexpr std::int64_t longestSilenceNanos = 2'000'000'000; // a running stream asks far more often
constexpr UInt32 mostOffered = 32;                          // plug-like devices offer any number of channels

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

bool isStarted = false;             // under paLock
std::atomic<bool> isBlocked{false}; // a thread is inside PortAudio and may never return; set under paLock

/// Have `work` call PortAudio. False if a sound server does not answer it, and for every later call.
bool callPortAudio(const std::function<void()>& work)
{
    if (!isBlocked) isBlocked = !endsInTime(work);
    return !isBlocked;
}

bool startPortAudio(std::string& error)
{
    if (isStarted) return true;
    silenceMessages();
    const auto status = std::make_shared<PaError>(paNoError);
    const bool isAnswered = [&] {
        const StandardErrorAside aside;
        return callPortAudio([status] {
            *status = Pa_Initialize();
            if (*status == paNoError && Pa_HostApiTypeIdToHostApiIndex(paJACK) >= 0) watchServer();
        });
    }();
    silenceMessages(); // JACK's part sets its own
    isStarted = isAnswered && *status == paNoError;
    if (!isAnswered)
        error = "the sound server does not answer; restart it, or set KVX_AUDIO_DEVICE=simulated";
    else if (!isStarted)
        error = std::string("PortAudio does not start: ") + Pa_GetErrorText(*status);
    return isStarted;
}

/// False if a sound server does not answer or has ended: PortAudio then stays as it is.
bool stopPortAudio()
{
    if (!isStarted) return true;
    const auto isStopped = std::make_shared<bool>(false);
    const bool isAnswered = callPortAudio([isStopped] {
        *isStopped = isServerAlive();
        if (!*isStopped) return;
        stopWatchingServer();
        Pa_Terminate();
    });
    if (!isAnswered || !*isStopped) return false;
    isStarted = false;
    return true;
}

/// Whether PortAudio cannot be called for the device any more; simulated devices do without it. [any]
bool isOutOfReach(const Device& device)
{
    return (device.isOfServer && hasServerEnded()) || (isBlocked && device.driver == Driver::hardware);
}

/// Keep a stream that cannot be closed. paLock held.
void abandon(std::shared_ptr<HardwareStream> hardware)
{
    hardware->isAbandoned = true;
    endedStreams.push_back(std::move(hardware));
}

/// Every output device of the list as it is: its index, by the UID that it has here.
struct Found {
    int index;
    std::string uid;
};

/// The user's own default first, then in its order; of equal names, the second is ":2". paLock held.
std::vector<Found> outputsFound()
{
    std::vector<int> order;
    const int preferred = Pa_GetDefaultOutputDevice();
    if (preferred >= 0) order.push_back(preferred);
    for (int i = 0; i < Pa_GetDeviceCount(); ++i)
        if (i != preferred) order.push_back(i);
    std::map<std::string, int> count;
    std::vector<Found> all;
    for (int index : order) {
        const PaDeviceInfo* info = Pa_GetDeviceInfo(index);
        const PaHostApiInfo* system = info ? Pa_GetHostApiInfo(info->hostApi) : nullptr;
        if (!system || info->maxOutputChannels <= 0) continue;
        const std::string uid = std::string(system->name) + ":" + info->name;
        const int number = ++count[uid];
        all.push_back({index, number == 1 ? uid : uid + ":" + std::to_string(number)});
    }
    return all;
}

/// How to open the device, wherever it stands in the list now. False if it is not there. paLock held.
bool findParameters(const Device& device, UInt32 channels, PaStreamParameters& parameters)
{
    const std::vector<Found> all = outputsFound();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Found& each) { return each.uid == device.uid; });
    if (found == all.end()) return false;
    parameters = {};
    parameters.device = found->index;
    parameters.channelCount = static_cast<int>(channels);
    parameters.sampleFormat = paFloat32;
    parameters.suggestedLatency = Pa_GetDeviceInfo(found->index)->defaultLowOutputLatency;
    return true;
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

PaError openAndStart(HardwareStream& hardware, const PaStreamParameters& parameters, const Settings& settings)
{
    PaError status = Pa_OpenStream(&hardware.stream, nullptr, &parameters, settings.rate,
                                   settings.sliceFrames, paNoFlag, callback, &hardware);
    if (status != paNoError) return status;
    status = Pa_StartStream(hardware.stream);
    if (status != paNoError) Pa_CloseStream(hardware.stream);
    return status;
}

/// Close a stream, or mark it as abandoned if the server ended, also during the stop.
void stopAndClose(HardwareStream& hardware, bool isOfServer)
{
    const auto isReachable = [=] { return !isOfServer || isServerAlive(); };
    if (isReachable()) Pa_StopStream(hardware.stream); // returns after the last frame is output
    if (isReachable())
        Pa_CloseStream(hardware.stream);
    else
        hardware.isAbandoned = true;
}

DeviceRef deviceOf(const Found& found)
{
    const PaDeviceInfo& info = *Pa_GetDeviceInfo(found.index);
    auto device = std::make_shared<Device>();
    device->name = info.name;
    const PaHostApiInfo& system = *Pa_GetHostApiInfo(info.hostApi);
    device->manufacturer = system.name;
    device->isOfServer = system.type == paJACK;
    device->uid = found.uid;
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
    for (const Found& found : outputsFound()) devices.push_back(deviceOf(found));
    return devices;
}

std::vector<DeviceRef> readHardwareAnew(std::string& error)
{
    {
        const std::lock_guard<std::mutex> lock(paLock);
        if (openStreams > 0) {
            error = "the list cannot be read while a device is playing; stop it first";
            return {};
        }
        if (!endedStreams.empty()) {
            error = "the list cannot be read any more, since a device ended while it was playing; start the "
                    "program again";
            return {};
        }
        if (!stopPortAudio()) { // its list is only read at its start
            error = "the list cannot be read any more, since the sound server ended; start the program again";
            return {};
        }
    }
    return readHardware(error);
}

bool canOpen(const Device& device, const Settings& settings)
{
    const std::lock_guard<std::mutex> lock(paLock);
    PaStreamParameters parameters;
    if (isOutOfReach(device) || !findParameters(device, settings.outputChannels, parameters)) return false;
    const auto status = std::make_shared<PaError>(paNoError);
    return callPortAudio([=] {
               PaStream* stream = nullptr;
               *status = Pa_OpenStream(&stream, nullptr, &parameters, settings.rate, settings.sliceFrames,
                                       paNoFlag, nullptr, nullptr);
               if (*status == paNoError) Pa_CloseStream(stream);
           }) &&
           *status == paNoError;
}

std::vector<double> findRates(const Device& device)
{
    Settings settings;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        settings = device.settings;
    }
    const std::lock_guard<std::mutex> lock(paLock);
    PaStreamParameters parameters;
    const bool isThere = !isOutOfReach(device) && findParameters(device, settings.outputChannels, parameters);
    std::vector<double> rates;
    for (double rate : commonRates)
        if (rate == settings.rate ||
            (isThere && Pa_IsFormatSupported(nullptr, &parameters, rate) == paFormatIsSupported))
            rates.push_back(rate);
    if (rates.empty()) rates.push_back(settings.rate);
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
    PaStreamParameters parameters;
    if (isOutOfReach(*device) || !findParameters(*device, running.outputChannels, parameters))
        return kAudioHardwareUnspecifiedError;
    const auto hardware = std::make_shared<HardwareStream>();
    hardware->device = device.get();
    hardware->channels = running.outputChannels;
    hardware->openedNanos = static_cast<std::int64_t>(AudioGetCurrentHostTime());
    const auto status = std::make_shared<PaError>(paNoError);
    if (!callPortAudio([=] { *status = openAndStart(*hardware, parameters, running); })) abandon(hardware);
    if (hardware->isAbandoned || *status != paNoError) return kAudioHardwareUnspecifiedError;
    device->hardware = hardware;
    ++openStreams;
    return noErr;
}

void closeHardware(const DeviceRef& device)
{
    if (!device->hardware) return;
    const std::lock_guard<std::mutex> lock(paLock);
    --openStreams;
    const std::shared_ptr<HardwareStream> hardware = std::move(device->hardware);
    const bool isOfServer = device->isOfServer;
    const bool isClosed =
        !hardware->isAbandoned && !isOutOfReach(*device) && Pa_IsStreamActive(hardware->stream) == 1 &&
        callPortAudio([=] { stopAndClose(*hardware, isOfServer); }) && !hardware->isAbandoned;
    if (!isClosed) abandon(hardware);
}

bool hasHardwareEnded(const DeviceRef& device)
{
    const std::lock_guard<std::mutex> control(device->control);
    if (!device->hardware)
        return isOutOfReach(*device) ||
               (device->driver == Driver::hardware && device->isRunning() && openHardware(device) != noErr);
    HardwareStream& hardware = *device->hardware;
    const std::lock_guard<std::mutex> lock(paLock);
    const std::int64_t last = std::max(device->lastCycleNanos.load(), hardware.openedNanos);
    const bool isSilent = static_cast<std::int64_t>(AudioGetCurrentHostTime()) - last > longestSilenceNanos;
    if (isSilent || isOutOfReach(*device) || Pa_IsStreamActive(hardware.stream) != 1)
        hardware.isAbandoned = true;
    return hardware.isAbandoned;
}

void leaveHardware()
{
    const std::lock_guard<std::mutex> lock(paLock);
    if (openStreams == 0 && endedStreams.empty()) stopPortAudio();
}

bool isAnyHardwareOpen() { return openStreams > 0; }

} // namespace kvxplatform::hal
