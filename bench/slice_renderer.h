// A buffered player that renders slices without a host and without a device.
#pragma once

#include "player/player.h"

#include <vector>

namespace bench {

struct SliceRenderer {
    /// Make a renderer for `data`.
    /// Shape  `data` is interleaved and has `channels` channels; the output has `outputChannels` channels.
    /// Units  `from` and `to` are the sample rates of data and device in Hz; `frames` is the size of a slice.
    /// Owner  the caller owns `data`, which outlives the renderer and stays unchanged.
    SliceRenderer(const std::vector<float>& data, int channels, double from, double to, std::uint32_t frames,
                  std::uint32_t outputChannels);

    /// The number of input frames per output frame.
    double step() const { return double{player.sampleRate} / player.deviceSampleRate; }

    /// Render the next slice into `out`. After the last whole slice, rendering continues at the first frame.
    void render();

    player::AudioPlayerData player;
    std::vector<float> out;
    AudioBufferList list;
    double lastPosition; ///< last input frame from which a whole slice can be rendered
};

} // namespace bench
