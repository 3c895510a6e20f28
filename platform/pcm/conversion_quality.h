// How a client selects the quality of a rate conversion: by the complexity of the filter and by a quality
// number from 0 to 127.
// All functions: [any].
#pragma once

#include "platform/pcm/rate_converter.h"

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

    /// Returns  the filter. Complexity 'line' selects the fastest filter and 'bats' the best; with 'norm' the
    ///          quality number selects the filter.
    RateConverter::Quality filter() const
    {
        using Quality = RateConverter::Quality;
        if (complexity == kAudioUnitSampleRateConverterComplexity_Linear) return Quality::fast;
        if (complexity == kAudioUnitSampleRateConverterComplexity_Mastering) return Quality::best;
        if (quality < kRenderQuality_Medium) return Quality::fast;
        return quality < kRenderQuality_Max ? Quality::normal : Quality::best;
    }
};

} // namespace kvxplatform::pcm
