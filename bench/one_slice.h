// A buffered player's record with one long buffer, and an output of a slice: rendered without a host or a
// device.
#pragma once

#include "player/player.h"

#include <vector>

namespace bench {

struct OneSlice {
    /// `channels` of the data, which is read only; the output has as many.
    OneSlice(const std::vector<float>& data, int channels, double from, double to, std::uint32_t frames);

    /// Frames of the data for a frame out.
    double step() const { return double{player.sampleRate} / player.deviceSampleRate; }

    /// The next slice; where the data ends it begins anew.
    void render();

    player::AudioPlayerData player;
    std::vector<float> out;
    AudioBufferList list;
    double lastPosition; ///< from which a slice can still be rendered
};

} // namespace bench
