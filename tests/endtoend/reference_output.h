// The expected output of a device with one interleaved stream, to which the buffered player plays, computed
// by tests/support/reference_player.h.
#pragma once

#include "tests/support/reference_player.h"

#include <cstring>
#include <utility>
#include <vector>

namespace endtoend {

class ReferenceOutput {
public:
    /// `channels` is the channel count of the player: 2 if the queued blocks are stereo. Rates are in hertz.
    ReferenceOutput(int channels, float sampleRate, float deviceRate)
    {
        player_.numberOfChannels = channels;
        player_.sampleRate = sampleRate;
        player_.start(deviceRate);
    }

    void add(std::vector<float> block) { player_.waiting.push_back(std::move(block)); }
    void setNoUnderflow(bool isOn) { player_.noUnderflow = isOn; }
    void requestStop() { player_.stopRequested = true; }
    bool isRunning() const { return player_.isRunning; }
    double position() const { return player_.position; }

    /// Render one slice, and append the slice to the samples that played() returns.
    void play(std::size_t frames, std::size_t deviceChannels)
    {
        reference::Slice slice;
        slice.buffers.push_back({std::uint32_t(deviceChannels),
                                 std::vector<unsigned char>(frames * deviceChannels * sizeof(float)), false});
        slice.inUse = 1;
        player_.render(slice);
        const std::size_t before = played_.size();
        played_.resize(before + frames * deviceChannels);
        std::memcpy(&played_[before], slice.buffers[0].bytes.data(), slice.buffers[0].bytes.size());
    }

    /// Render slices until the reference player stops by itself. The last slice is silent.
    const std::vector<float>& playToEnd(std::size_t sliceFrames, std::size_t deviceChannels)
    {
        while (isRunning()) play(sliceFrames, deviceChannels);
        return played_;
    }

    const std::vector<float>& played() const { return played_; }

private:
    reference::Player player_;
    std::vector<float> played_;
};

} // namespace endtoend
