// Pulls input in a unit's input format and renders a slice in the unit's output format.
//
// At equal rates the source receives the caller's time stamp and frame count. At different rates the source's
// time stamps count the frames pulled, and the first pull is larger because the filter looks ahead.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/conversion.h"

namespace kvxplatform::audiounit {

class SliceConversion {
public:
    using Quality = pcm::Conversion::Quality;

    /// Allocate memory for the unit's formats and slice limit. Called by the unit's initialize. Throws
    /// std::bad_alloc.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [main]
    OSStatus prepare(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Continue with another channel map or quality; the input that the filter holds is lost. The caller
    /// holds the `settings` lock, and the unit is initialised. Throws std::bad_alloc. After an exception or
    /// an error nothing has changed.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [any]
    OSStatus replace(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Undo prepare().
    /// [any]
    void release(Unit& unit);

    /// Clear the filter and the unread input.
    /// [audio & rendering]
    void reset();

    /// Render a slice. The slice is silent when the source fails.
    /// [audio & rendering]
    OSStatus render(Unit& unit, Slice& slice);

private:
    OSStatus renderAtSameRate(Unit& unit, Slice& slice, pcm::Conversion& conversion) const;
    OSStatus renderAtOtherRate(Unit& unit, Slice& slice, pcm::Conversion& conversion);
    OSStatus pullMore(Unit& unit, const Slice& slice, UInt32 made, UInt32 frames,
                      AudioUnitRenderActionFlags& flags);

    Published<pcm::Conversion> conversion_;
    /// The largest number of frames in a pull, which does not change while the unit is initialised.
    UInt32 inputLimit_ = 0;

    // The following fields are used only when the rates differ.
    // [audio & rendering]
    Float64 sampleTime_ = 0;            ///< sample time of the next pull
    AudioBufferList* pulled_ = nullptr; ///< buffer list of the last pull, in the input's memory
    /// The range of frames of `pulled_` that the conversion has not used.
    UInt32 unreadFrom_ = 0, unread_ = 0;
};

} // namespace kvxplatform::audiounit
