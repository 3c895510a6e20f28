// How a client selects the quality of a rate conversion: by the complexity of the filter and by a quality
// number from 0 to 127.
// All functions: [any].
#pragma once

#include "platform/pcm/fixed_rate_converter.h"

#include <AudioUnit/AudioUnit.h>

namespace kvxplatform::pcm {

struct ConversionQuality {
    static constexpr UInt32 most = kRenderQuality_Max;

    UInt32 complexity = kAudioUnitSampleRateConverterComplexity_Normal;
    UInt32 quality = kRenderQuality_High;

    static bool isComplexity(UInt32 value)
    {
        return value == kAudioUnitSampleRateConverterComplexity_Linear ||
               value == kAudioUnitSampleRateConverterComplexity_Normal ||
               value == kAudioUnitSampleRateConverterComplexity_Mastering;
    }

    /// Returns  the filter: the best one for complexity 'bats', or for 'norm' with the highest quality
    ///          number; otherwise the default. A lower quality would save no time.
    FixedRateConverter::Quality filter() const
    {
        const bool isNormal = complexity == kAudioUnitSampleRateConverterComplexity_Normal;
        const bool isBest =
            complexity == kAudioUnitSampleRateConverterComplexity_Mastering || (isNormal && quality == most);
        return isBest ? FixedRateConverter::Quality::veryHigh : FixedRateConverter::Quality::high;
    }
};

} // namespace kvxplatform::pcm
