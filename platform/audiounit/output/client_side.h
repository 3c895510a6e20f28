// The client's side of an output unit that drives a device: pulls input 0 in the client's format and gives it
// on as 32-bit float frames at the rate of the other side.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/rate_converter.h"
#include "platform/pcm/translation.h"

#include <optional>

namespace kvxplatform::audiounit {

class ClientSide {
public:
    /// Make ready for the unit's input format and slice limit, and for this rate on the other side.
    /// FormatNotSupported when the rates are too far apart. Throws std::bad_alloc. With settings.
    OSStatus prepare(Unit& unit, Float64 rate);

    /// Forget the past: filters and what was pulled ahead.
    void reset();

    /// The client's sample time of the next pull.
    void setSampleTime(Float64 frames) { sampleTime = frames; }
    UInt32 channels() const { return format.mChannelsPerFrame; }

    /// How a stretch of frames is pulled. Notifications surround each pull.
    struct Request {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        const AudioTimeStamp& time; // of its first frame, on the other side; the client gets its host time
    };

    /// Up to `frames` more frames, [frame * channels + channel], valid until the next call. At least one, at
    /// most the slice limit: `frames` becomes what there are. A source that fails is silent, and the unit's
    /// last render error says why. Thread [audio & in a slice]. Allocates nothing.
    const Float32* next(const Request& request, UInt32& frames, OSStatus& status);

private:
    struct Pulling;
    const Float32* pullFrames(const Request& request, const AudioTimeStamp& time, UInt32 frames,
                              OSStatus& status);

    AudioStreamBasicDescription format{};
    UInt32 limit = 0;
    pcm::Translation translation; // into what is given on
    std::optional<pcm::RateConverter> converter;
    std::vector<Float32> pulled;    // as the client gave it
    std::vector<Float32> converted; // at the other rate
    Float64 sampleTime = 0;
};

} // namespace kvxplatform::audiounit
