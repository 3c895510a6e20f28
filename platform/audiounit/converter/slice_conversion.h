// A unit's whole way from its input to its output: pulled in the one's format, rendered in the other's.
//
// At the same rate the source hears the caller's time and is asked for what the caller asks for. At another
// its time runs by what it has given, and it is asked for more at first: the filter looks ahead.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/conversion.h"

namespace kvxplatform::audiounit {

class SliceConversion {
public:
    using Quality = pcm::Conversion::Quality;

    /// Make ready for the unit's formats. Its input is asked for as much at a time as makes a slice of the
    /// unit's limit. FormatNotSupported when the rates are too far apart. Throws std::bad_alloc.
    /// While the unit is being initialised.
    OSStatus prepare(Unit& unit, const pcm::ChannelMap& routing, Quality quality);

    /// Go on with another routing or quality, without what a filter still held. Throws std::bad_alloc, and
    /// nothing has changed then. Thread [any], with settings, while the unit is initialised.
    OSStatus exchange(Unit& unit, const pcm::ChannelMap& routing, Quality quality);

    /// Undo prepare.
    void release(Unit& unit);

    /// Forget the past. Thread [audio & in a slice], as render.
    void reset();

    /// Allocates nothing. A slice whose source fails is silence.
    OSStatus render(Unit& unit, Slice& slice);

private:
    // Whoever is inside a slice has the conversion for itself.
    struct Engine {
        std::unique_ptr<pcm::Conversion> conversion;
    };

    OSStatus renderStraight(Unit& unit, Slice& slice, pcm::Conversion& conversion) const;
    OSStatus renderConverted(Unit& unit, Slice& slice, pcm::Conversion& conversion);
    OSStatus pullMore(Unit& unit, const Slice& slice, UInt32 made, UInt32 frames,
                      AudioUnitRenderActionFlags& flags);

    Published<const Engine> engine;
    UInt32 inputLimit = 0; // fixed while initialised

    // At different rates. [audio & in a slice]
    Float64 sampleTime = 0;            // of the next pull
    AudioBufferList* pulled = nullptr; // in the input's memory,
    UInt32 first = 0, left = 0;        // with frames that have not been used
};

} // namespace kvxplatform::audiounit
