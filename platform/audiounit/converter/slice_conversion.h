// Pulls input in a unit's input format and renders a slice in the unit's output format.
//
// At equal rates the source receives the caller's time stamp and frame count. At different rates the source's
// time stamps count the frames pulled, and the first slice pulls more because the conversion reads ahead.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/pulled_conversion.h"

namespace kvxplatform::audiounit {

/// Whether the unit's input and output differ in rate. The caller holds the `settings` lock.
/// [any]
bool convertsRate(Unit& unit);

class SliceConversion {
public:
    using Quality = pcm::Conversion::Quality;

    /// Allocate memory for the unit's formats and slice limit. Called by the unit's initialize. Throws
    /// std::bad_alloc.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [main]
    OSStatus prepare(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Continue with a new conversion, for another channel map or quality, or for a reset; input that was
    /// pulled ahead is lost. The caller holds the `settings` lock, and the unit is initialised. Throws
    /// std::bad_alloc. After an exception or an error nothing has changed.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [any]
    OSStatus replace(Unit& unit, const pcm::ChannelMap& map, Quality quality);

    /// Returns  the time in seconds by which input is pulled ahead with this quality; 0 at equal rates. The
    ///          caller holds the `settings` lock. Throws std::bad_alloc.
    /// [any]
    Float64 tail(Unit& unit, Quality quality) const;

    /// Undo prepare().
    /// [any]
    void release(Unit& unit);

    /// Discard the input that was pulled ahead.
    /// [audio & rendering]
    void reset();

    /// Render a slice. The slice is silent when the source fails.
    /// [audio & rendering]
    OSStatus render(Unit& unit, Slice& slice);

private:
    OSStatus renderAtSameRate(Unit& unit, Slice& slice, pcm::Conversion& conversion) const;
    OSStatus renderAtOtherRate(Unit& unit, Slice& slice, pcm::PulledConversion& current);

    Published<pcm::PulledConversion> conversion_; ///< the conversion; its input is in the bus's memory
    /// The largest number of frames in a pull, which does not change while the unit is initialised.
    UInt32 inputLimit_ = 0;

    /// The sample time of the next pull; used only when the rates differ.
    /// [audio & rendering]
    Float64 sampleTime_ = 0;
};

} // namespace kvxplatform::audiounit
