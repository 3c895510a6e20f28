// Renders a unit's slice in its output format from input pulled in its input format.
//
// At equal rates the source gets the caller's time stamp and frame count. At different rates its time stamps
// count the frames pulled, and the first pull is larger: the filter looks ahead.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/conversion.h"

namespace kvxplatform::audiounit {

class SliceConversion {
public:
    using Quality = pcm::Conversion::Quality;

    /// Allocate for the unit's formats and slice limit, in its initialize. Throws std::bad_alloc.
    /// Errors  FormatNotSupported: the rates are too far apart.
    /// [main]
    OSStatus prepare(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Continue with another channel map or quality, without the input that the filter holds. Called with
    /// settings while the unit is initialised. Throws std::bad_alloc; then and on error nothing has changed.
    /// Errors  FormatNotSupported: the rates are too far apart.
    /// [any]
    OSStatus replace(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Undo prepare.
    /// [any]
    void release(Unit& unit);

    /// Clear the filter and the unread input.
    /// [audio & rendering]
    void reset();

    /// Render a slice; it is silent when the source fails.
    /// [audio & rendering]
    OSStatus render(Unit& unit, Slice& slice);

private:
    OSStatus renderAtSameRate(Unit& unit, Slice& slice, pcm::Conversion& conversion) const;
    OSStatus renderAtOtherRate(Unit& unit, Slice& slice, pcm::Conversion& conversion);
    OSStatus pullMore(Unit& unit, const Slice& slice, UInt32 made, UInt32 frames,
                      AudioUnitRenderActionFlags& flags);

    Published<pcm::Conversion> conversion_;
    UInt32 inputLimit_ = 0; ///< frames per pull; does not change while initialised

    // At different rates. [audio & rendering]
    Float64 sampleTime_ = 0;             ///< of the next pull
    AudioBufferList* pulled_ = nullptr;  ///< the last pull, in the input's memory
    UInt32 unreadFrom_ = 0, unread_ = 0; ///< its frames that the conversion has not used
};

} // namespace kvxplatform::audiounit
