#include "platform/hal/portaudio_driver.h"

#include "platform/hal/cycle.h"
#include "platform/hal/portaudio_library.h"
#include "platform/hal/sound_server.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <portaudio.h>
#include <utility>

namespace kvxplatform::hal {

/// A PortAudio stream whose callback runs the device's cycles.
struct HardwareStream {
    Device* device = nullptr;
    UInt32 channels = 0;
    void* stream = nullptr;
    std::int64_t openedNanos = 0; ///< time at which the stream was opened, on the host clock
    /// Whether the stream no longer responds, so that the stream is never used again.
    std::atomic<bool> isAbandoned{false};
};

namespace {

std::atomic<int> openStreams{0};

/// Streams that ended without a stop, or that could not be closed; guarded by portAudioLock. Closing such a
/// stream can block forever, and so can a restart of PortAudio, which closes all streams. They are never
/// freed, because their callbacks may still run.
std::vector<std::shared_ptr<HardwareStream>>& endedStreams =
    *new std::vector<std::shared_ptr<HardwareStream>>;

// Time without a callback after which a running stream counts as ended; the callbacks come far more often.
constexpr std::int64_t longestSilenceNanos = 2'000'000'000;

/// Keep a stream that cannot be closed, and never use it again. The caller holds portAudioLock.
void abandon(std::shared_ptr<HardwareStream> hardware)
{
    hardware->isAbandoned = true;
    endedStreams.push_back(std::move(hardware));
}

int callback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
             PaStreamCallbackFlags, void* client)
{
    const HardwareStream& hardware = *static_cast<const HardwareStream*>(client);
    float* const out = static_cast<float*>(output);
    std::fill_n(out, frames * hardware.channels, 0.0f);
    if (hardware.isAbandoned) return paAbort;
    Device& device = *hardware.device;
    // Another driver holds the CycleScope only while it takes the device over, so this stream will be closed
    // soon.
    const CycleScope scope(device, std::try_to_lock);
    if (!scope || device.driver != Driver::hardware) return paContinue;
    CycleBuffers& buffers = buffersOfNextCycle(device);
    if (buffers.settings.outputChannels != hardware.channels) return paContinue;
    for (unsigned long done = 0; done < frames;) {
        const UInt32 slice =
            std::min<UInt32>(static_cast<UInt32>(frames - done), buffers.settings.sliceFrames);
        const float* const mixed = runCycle(device, buffers, slice, false);
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

/// Stop and close a stream; abandon the stream if the sound server ends before or during the stop.
void stopAndClose(HardwareStream& hardware, bool isOfServer)
{
    const auto isReachable = [=] { return !isOfServer || isServerAlive(); };
    if (isReachable()) Pa_StopStream(hardware.stream); // Pa_StopStream returns after the last frame is output
    if (isReachable())
        Pa_CloseStream(hardware.stream);
    else
        hardware.isAbandoned = true;
}

} // namespace

std::vector<DeviceRef> readHardwareAnew(std::string& error)
{
    {
        const std::lock_guard<std::mutex> lock(portAudioLock);
        if (openStreams > 0) {
            error = "the list cannot be read while a device is playing; stop it first";
            return {};
        }
        if (!endedStreams.empty()) {
            error = "the list cannot be read any more, since a device ended while it was playing; start the "
                    "program again";
            return {};
        }
        if (!stopPortAudio()) { // PortAudio reads its devices only when it starts
            error = "the list cannot be read any more, since the sound server ended; start the program again";
            return {};
        }
    }
    return readHardware(error);
}

OSStatus openHardware(const DeviceRef& device)
{
    if (device->hardware) return noErr;
    const std::lock_guard<std::mutex> lock(portAudioLock);
    const Settings running = device->buffers.get()->settings;
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
    const std::lock_guard<std::mutex> lock(portAudioLock);
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
    const std::lock_guard<std::mutex> lock(portAudioLock);
    const std::int64_t last = std::max(device->lastCycleNanos.load(), hardware.openedNanos);
    const bool isSilent = static_cast<std::int64_t>(AudioGetCurrentHostTime()) - last > longestSilenceNanos;
    if (isSilent || isOutOfReach(*device) || Pa_IsStreamActive(hardware.stream) != 1)
        hardware.isAbandoned = true;
    return hardware.isAbandoned;
}

void leaveHardware()
{
    const std::lock_guard<std::mutex> lock(portAudioLock);
    if (openStreams == 0 && endedStreams.empty()) stopPortAudio();
}

bool isAnyHardwareOpen() { return openStreams > 0; }

} // namespace kvxplatform::hal
