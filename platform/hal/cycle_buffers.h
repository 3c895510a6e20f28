// The settings that an I/O cycle runs with, and its buffers.
#pragma once

#include "platform/hal/settings.h"

#include <vector>

namespace kvxplatform::hal {

/// Allocated for one set of settings; a change of settings publishes new buffers.
struct CycleBuffers {
    explicit CycleBuffers(const Settings& ofSettings)
        : settings(ofSettings), mix(std::size_t{settings.sliceFrames} * settings.outputChannels),
          scratch(mix.size()), inputSilence(std::size_t{settings.sliceFrames} * settings.inputChannels)
    {
    }

    const Settings settings;
    std::vector<float> mix, scratch, inputSilence; ///< interleaved
};

} // namespace kvxplatform::hal
