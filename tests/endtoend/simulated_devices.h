// Simulated devices for tests: stepped devices, which render only when the test calls step(), and paced
// devices, which render in real time on a thread of the platform.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace endtoend {

/// A stepped device. The object keeps the output of the device.
class SteppedDevice {
public:
    explicit SteppedDevice(double sampleRate = 44100, std::uint32_t channels = 2,
                           std::uint32_t sliceFrames = 512)
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
        KVXPlatformSetOutputTap(id_, append, this);
    }
    ~SteppedDevice()
    {
        KVXPlatformSetOutputTap(id_, nullptr, nullptr);
        KVXPlatformRemoveSimulatedDevice(id_);
    }
    SteppedDevice(const SteppedDevice&) = delete;
    SteppedDevice& operator=(const SteppedDevice&) = delete;

    KVXDeviceID id() const { return id_; }

    /// Run I/O cycles for `frames` frames.
    /// Returns  the number of rendered frames: 0 while no I/O procedure is started.
    std::uint32_t step(std::uint32_t frames) { return KVXPlatformStep(id_, frames); }

    /// Return the interleaved samples that the device has rendered since its construction or the last
    /// clearOutput().
    const std::vector<float>& output() const { return output_; }

    /// Return the samples of one channel of the output.
    std::vector<float> output(std::uint32_t channel) const
    {
        std::vector<float> samples;
        for (std::size_t i = channel; i < output_.size(); i += channels_) samples.push_back(output_[i]);
        return samples;
    }
    void clearOutput() { output_.clear(); }

private:
    static void append(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels)
    {
        auto& output = static_cast<SteppedDevice*>(context)->output_;
        output.insert(output.end(), samples, samples + std::size_t{frames} * channels);
    }

    KVXDeviceID id_ = 0;
    std::uint32_t channels_;
    std::vector<float> output_;
};

/// Add a paced device with short slices. The caller removes the device.
inline KVXDeviceID addPacedDevice()
{
    KVXSimulatedDevice description = {};
    description.name = "Paced";
    description.sliceFrames = 64;
    return KVXPlatformAddSimulatedDevice(&description);
}

struct PacedDevice {
    const KVXDeviceID id = addPacedDevice();

    PacedDevice() = default;
    ~PacedDevice() { KVXPlatformRemoveSimulatedDevice(id); }
    PacedDevice(const PacedDevice&) = delete;
    PacedDevice& operator=(const PacedDevice&) = delete;
};

} // namespace endtoend
