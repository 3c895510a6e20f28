// The buffers of a device's I/O cycles, and the settings that the cycles run with.
#pragma once

#include "platform/hal/settings.h"

#include <vector>

namespace kvxplatform::hal {

/// Cycle buffers, allocated for one set of settings. A change of settings publishes new cycle buffers.
struct CycleBuffers {
    explicit CycleBuffers(const Settings& ofSettings)
        : settings(ofSettings), mix(std::size_t{settings.sliceFrames} * settings.outputChannels),
          scratch(mix.size()), inputSilence(std::size_t{settings.sliceFrames} * settings.inputChannels)
    {
    }

    const Settings settings;
    std::vector<float> mix, scratch, inputSilence; ///< interleaved samples of one slice
};

} // namespace kvxplatform::hal
