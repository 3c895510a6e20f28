// A buffered player that renders slices without a host and without a device.
#pragma once

#include "player/player.h"

#include <vector>

namespace bench {

struct SliceRenderer {
    /// Shape  `data` is interleaved, with `channels` channels; the output has the same number of channels.
    /// Units  `from` and `to` are the rates of data and device in Hz; `frames` is the size of a slice.
    /// Owner  the caller owns `data`, which outlives the renderer and stays unchanged.
    SliceRenderer(const std::vector<float>& data, int channels, double from, double to, std::uint32_t frames);

    /// Input frames per output frame.
    double step() const { return double{player.sampleRate} / player.deviceSampleRate; }

    /// Render the next slice into `out`. At the end of the data it starts from the beginning again.
    void render();

    player::AudioPlayerData player;
    std::vector<float> out;
    AudioBufferList list;
    double lastPosition; ///< last position in `data` from which a whole slice can be rendered
};

} // namespace bench
