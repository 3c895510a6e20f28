// What the tests of this folder begin with: the library in a host, and a device to step.
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace endtoend {

inline const char* const libraryPath = KVX_BINARY_DIR "/KVXAudio.so";
inline const char* const playerClass = "CoreAudioPlayerKVX";

/// A host with the library loaded.
struct LoadedHost {
    host::Host host;

    explicit LoadedHost(host::Options options = {}) : host(std::move(options)) { host.load(libraryPath); }
};

/// What is still alive, host values and platform objects, a line each; empty when nothing is.
inline std::string leftOver(const host::Host& host)
{
    std::string text = host.leaks().text();
    KVXLiveCount accounts[32] = {};
    const uint32_t kinds = KVXPlatformGetLiveCounts(accounts, 32);
    for (uint32_t i = 0; i < kinds && i < 32; ++i)
        text += std::to_string(accounts[i].count) + " " + accounts[i].kind + " of the platform\n";
    return text;
}

/// A simulated device of a test's own, turned by hand, that remembers what it played.
class SteppedDevice {
public:
    explicit SteppedDevice(double sampleRate = 44100, uint32_t channels = 2, uint32_t sliceFrames = 512)
        : channels_(channels)
    {
        KVXSimulatedDevice description = {};
        description.name = "Stepped";
        description.sampleRate = sampleRate;
        description.outputChannels = channels;
        description.sliceFrames = sliceFrames;
        description.isStepped = 1;
        id_ = KVXPlatformAddSimulatedDevice(&description);
        if (!id_) throw std::runtime_error(KVXPlatformErrorText());
        KVXPlatformSetOutputTap(id_, remember, this);
    }
    ~SteppedDevice()
    {
        KVXPlatformSetOutputTap(id_, nullptr, nullptr);
        KVXPlatformRemoveSimulatedDevice(id_);
    }
    SteppedDevice(const SteppedDevice&) = delete;
    SteppedDevice& operator=(const SteppedDevice&) = delete;

    KVXDeviceID id() const { return id_; }
    uint32_t step(uint32_t frames) { return KVXPlatformStep(id_, frames); }

    /// Interleaved.
    const std::vector<float>& heard() const { return heard_; }
    /// One channel of it.
    std::vector<float> heard(uint32_t channel) const
    {
        std::vector<float> samples;
        for (std::size_t i = channel; i < heard_.size(); i += channels_) samples.push_back(heard_[i]);
        return samples;
    }
    void forget() { heard_.clear(); }

private:
    static void remember(void* context, const float* samples, uint32_t frames, uint32_t channels)
    {
        auto& heard = static_cast<SteppedDevice*>(context)->heard_;
        heard.insert(heard.end(), samples, samples + std::size_t(frames) * channels);
    }

    KVXDeviceID id_ = 0;
    uint32_t channels_;
    std::vector<float> heard_;
};

} // namespace endtoend
