// The client's input of an output unit that drives a device: pulls input 0 in the client's format and returns
// 32-bit float frames at the device's rate.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/format_converter.h"
#include "platform/pcm/rate_converter.h"

#include <optional>

namespace kvxplatform::audiounit {

class ClientInput {
public:
    /// Allocate for the unit's input format and slice limit, and a device's rate. Called with the settings
    /// lock, while no slice is rendered. Throws std::bad_alloc.
    /// Errors  FormatNotSupported: the rates are too far apart.
    /// [main], [worker]
    OSStatus prepare(Unit& unit, Float64 deviceRate);

    /// Clear the filter and the unread input.
    /// [audio & rendering]
    void reset();

    /// Set the client's sample time of the next pull, while no slice is rendered.
    /// [main]
    void setSampleTime(Float64 frames) { sampleTime_ = frames; }
    UInt32 channels() const { return format_.mChannelsPerFrame; }

    struct Request {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        const AudioTimeStamp& time; ///< the device's, of the first frame; the client gets its host time
    };

    /// Return up to `frames` more frames; at least one, at most the slice limit.
    /// Shape    [frame * channels + channel]; `frames` becomes the count.
    /// Owner    valid until the next call.
    /// Errors   the source's status is the unit's last render error; its frames are silent.
    /// [audio & rendering]
    const Float32* next(const Request& request, UInt32& frames);

private:
    struct Pulling;
    const Float32* pullFrames(const Request& request, const AudioTimeStamp& time, UInt32 frames);

    AudioStreamBasicDescription format_{};
    UInt32 limit_ = 0;
    pcm::FormatConverter toFloats_;
    std::optional<pcm::RateConverter> rateConverter_;
    std::vector<Float32> pulled_;    ///< at the client's rate
    std::vector<Float32> converted_; ///< at the device's rate
    Float64 sampleTime_ = 0;
};

} // namespace kvxplatform::audiounit
