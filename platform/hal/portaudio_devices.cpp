#include "platform/hal/portaudio_devices.h"

#include "platform/hal/common_rates.h"
#include "platform/hal/portaudio_library.h"
#include "platform/hal/sound_server.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

namespace kvxplatform::hal {

namespace {

// Largest number of channels, because a virtual ALSA device reports any number.
constexpr UInt32 mostOffered = 32;

/// An output device in PortAudio's present device list.
struct Found {
    int index;
    std::string uid;
};

/// PortAudio's output devices: the user's default device first, then the others in PortAudio's order. If two
/// devices have equal names, the UID of the second ends with ":2". The caller holds portAudioLock.
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

DeviceRef deviceOf(const Found& found)
{
    const PaDeviceInfo& info = *Pa_GetDeviceInfo(found.index);
    auto device = std::make_shared<Device>();
    device->name = info.name;
    const PaHostApiInfo& system = *Pa_GetHostApiInfo(info.hostApi);
    device->manufacturer = system.name;
    device->system = system.type == paJACK ? "JACK" : system.name; // the full name of JACK has four words
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

bool isOutOfReach(const Device& device)
{
    return (device.isOfServer && hasServerEnded()) ||
           (isPortAudioBlocked() && device.driver == Driver::hardware);
}

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

std::vector<DeviceRef> readHardware(std::string& error)
{
    const std::lock_guard<std::mutex> lock(portAudioLock);
    std::vector<DeviceRef> devices;
    if (!startPortAudio(error)) return devices;
    for (const Found& found : outputsFound()) devices.push_back(deviceOf(found));
    return devices;
}

bool canOpen(const Device& device, const Settings& settings)
{
    const std::lock_guard<std::mutex> lock(portAudioLock);
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
        const std::lock_guard<std::mutex> lock(propertyLock);
        settings = device.settings;
    }
    const std::lock_guard<std::mutex> lock(portAudioLock);
    PaStreamParameters parameters;
    const bool isReachable =
        !isOutOfReach(device) && findParameters(device, settings.outputChannels, parameters);
    std::vector<double> rates;
    for (double rate : commonRates)
        if (rate == settings.rate ||
            (isReachable && Pa_IsFormatSupported(nullptr, &parameters, rate) == paFormatIsSupported))
            rates.push_back(rate);
    if (rates.empty()) rates.push_back(settings.rate);
    return rates;
}

} // namespace kvxplatform::hal
