#include "tests/platform/hal/fake_hardware.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace haltest {

namespace {

/// A simulated PortAudio stream. While the stream is started, its own thread calls the callback.
struct Stream {
    PaStreamCallback* callback;
    void* client;
    unsigned long frames;
    std::vector<float> samples;
    std::atomic<bool> mustStop{false}, hasEnded{false};
    std::thread thread;

    void run()
    {
        const PaStreamCallbackTimeInfo times = {};
        while (!mustStop && !hasEnded) {
            if (callback(nullptr, samples.data(), frames, &times, 0, client) != paContinue) hasEnded = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    void stop()
    {
        mustStop = true;
        if (thread.joinable()) thread.join();
    }
};

std::vector<FakeDevice> current; // devices that the last Pa_Initialize found; guarded by fakeHardware().lock
std::vector<PaDeviceInfo> infos;
std::vector<Stream*> streams;
bool isInitialized = false;

} // namespace

FakeHardware& fakeHardware()
{
    static FakeHardware& hardware = *new FakeHardware;
    return hardware;
}

void endFakeStreams()
{
    const std::lock_guard<std::mutex> lock(fakeHardware().lock);
    for (Stream* stream : streams) {
        stream->hasEnded = true;
        stream->stop();
    }
}

} // namespace haltest

using namespace haltest;

extern "C" {

__attribute__((visibility("default"))) PaError Pa_Initialize(void)
{
    FakeHardware& fake = fakeHardware();
    const std::lock_guard<std::mutex> lock(fake.lock);
    if (!fake.starts) return paInternalError;
    current = fake.plugged;
    infos.clear();
    for (const FakeDevice& device : current) {
        PaDeviceInfo info = {};
        info.structVersion = 2;
        info.name = device.name.c_str();
        info.maxOutputChannels = device.channels;
        info.defaultLowOutputLatency = 0.01;
        info.defaultSampleRate = device.onlyRate > 0 ? device.onlyRate : 44100;
        infos.push_back(info);
    }
    isInitialized = true;
    return paNoError;
}

__attribute__((visibility("default"))) PaError Pa_Terminate(void)
{
    isInitialized = false;
    ++fakeHardware().terminated;
    return paNoError;
}

__attribute__((visibility("default"))) const char* Pa_GetErrorText(PaError) { return "simulated failure"; }

__attribute__((visibility("default"))) PaDeviceIndex Pa_GetDeviceCount(void)
{
    return isInitialized ? static_cast<PaDeviceIndex>(infos.size()) : paNotInitialized;
}

__attribute__((visibility("default"))) PaDeviceIndex Pa_GetDefaultOutputDevice(void)
{
    return isInitialized && !infos.empty() ? 0 : paNoDevice;
}

__attribute__((visibility("default"))) const PaDeviceInfo* Pa_GetDeviceInfo(PaDeviceIndex index)
{
    const bool isVisible = isInitialized && index >= 0 && index < static_cast<int>(infos.size()) &&
                           index != fakeHardware().hiddenInfo;
    return isVisible ? &infos[static_cast<std::size_t>(index)] : nullptr;
}

__attribute__((visibility("default"))) PaHostApiIndex Pa_GetHostApiCount(void) { return 2; }

__attribute__((visibility("default"))) const PaHostApiInfo* Pa_GetHostApiInfo(PaHostApiIndex)
{
    static const PaHostApiInfo info = {1, paInDevelopment, "Fake", 0, -1, 0};
    return &info;
}

__attribute__((visibility("default"))) PaError
Pa_IsFormatSupported(const PaStreamParameters*, const PaStreamParameters* output, double rate)
{
    if (!isInitialized) return paNotInitialized;
    const FakeDevice& device = current.at(static_cast<std::size_t>(output->device));
    return device.onlyRate == 0 || rate == device.onlyRate ? paFormatIsSupported : paInvalidSampleRate;
}

__attribute__((visibility("default"))) PaError Pa_OpenStream(PaStream** out_stream, const PaStreamParameters*,
                                                             const PaStreamParameters* output, double rate,
                                                             unsigned long frames, PaStreamFlags,
                                                             PaStreamCallback* callback, void* client)
{
    FakeHardware& fake = fakeHardware();
    const std::lock_guard<std::mutex> lock(fake.lock);
    if (!isInitialized) return paNotInitialized;
    const FakeDevice& device = current.at(static_cast<std::size_t>(output->device));
    if (!device.opens) return paDeviceUnavailable;
    if (callback && fake.openingsToRefuse > 0) {
        --fake.openingsToRefuse;
        return paDeviceUnavailable;
    }
    auto stream = std::make_unique<Stream>();
    stream->callback = callback;
    stream->client = client;
    stream->frames = frames;
    stream->samples.resize(frames * static_cast<std::size_t>(output->channelCount));
    ++fake.opened;
    fake.lastOpenedIndex = output->device;
    fake.lastOpenedRate = rate;
    streams.push_back(stream.get());
    *out_stream = stream.release();
    return paNoError;
}

__attribute__((visibility("default"))) PaError Pa_StartStream(PaStream* stream)
{
    auto& started = *static_cast<Stream*>(stream);
    {
        FakeHardware& fake = fakeHardware();
        const std::lock_guard<std::mutex> lock(fake.lock);
        if (fake.startsToRefuse > 0) {
            --fake.startsToRefuse;
            return paUnanticipatedHostError;
        }
    }
    started.thread = std::thread([&started] { started.run(); });
    return paNoError;
}

__attribute__((visibility("default"))) PaError Pa_StopStream(PaStream* stream)
{
    const auto isBlocked = [] {
        const std::lock_guard<std::mutex> lock(fakeHardware().lock);
        return fakeHardware().stopsBlock;
    };
    while (isBlocked()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    static_cast<Stream*>(stream)->stop();
    return paNoError;
}

__attribute__((visibility("default"))) PaError Pa_CloseStream(PaStream* stream)
{
    FakeHardware& fake = fakeHardware();
    std::unique_lock<std::mutex> lock(fake.lock);
    const auto found = std::find(streams.begin(), streams.end(), stream);
    if (found == streams.end()) {
        ++fake.closedAgain;
        return paBadStreamPtr;
    }
    const std::unique_ptr<Stream> owner(*found);
    streams.erase(found);
    ++fake.closed;
    lock.unlock(); // the lock is released, because the stream's callback may call PortAudio
    owner->stop();
    return paNoError;
}

__attribute__((visibility("default"))) PaError Pa_IsStreamActive(PaStream* stream)
{
    return static_cast<Stream*>(stream)->hasEnded ? 0 : 1;
}

} // extern "C"
