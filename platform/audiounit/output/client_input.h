// The client's input of an output unit that drives a device. Pulls input 0 in the client's format and returns
// 32-bit float frames at the device's rate.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/format_converter.h"
#include "platform/pcm/rate_converter.h"

#include <optional>

namespace kvxplatform::audiounit {

class ClientInput {
public:
    /// Allocate memory for the unit's input format, the slice limit and the device's rate. The caller holds
    /// the `settings` lock, and no slice is being rendered. Throws std::bad_alloc.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [main], [worker]
    OSStatus prepare(Unit& unit, Float64 deviceRate);

    /// Clear the filter and the unread input.
    /// [audio & rendering]
    void reset();

    /// Set the sample time that the client receives with the next pull. No slice is being rendered.
    /// [main]
    void setSampleTime(Float64 frames) { sampleTime_ = frames; }
    UInt32 channels() const { return format_.mChannelsPerFrame; }

    struct Request {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        /// The device's time stamp of the first frame. The client receives its host time.
        const AudioTimeStamp& time;
    };

    /// Return up to `frames` more frames: at least one, at most the slice limit.
    /// Shape    [frame * channels + channel]. `frames` is set to the number of frames returned.
    /// Owner    this object owns the samples, which stay valid until the next call.
    /// Errors   the source's status becomes the unit's last render error; the frames of a failed pull are
    ///          silent.
    /// [audio & rendering]
    const Float32* next(const Request& request, UInt32& frames);

private:
    struct Pulling;
    const Float32* pullFrames(const Request& request, const AudioTimeStamp& time, UInt32 frames);

    AudioStreamBasicDescription format_{};
    UInt32 limit_ = 0;
    pcm::FormatConverter toFloats_;
    std::optional<pcm::RateConverter> rateConverter_;
    std::vector<Float32> pulled_;    ///< pulled samples at the client's rate
    std::vector<Float32> converted_; ///< converted samples at the device's rate
    Float64 sampleTime_ = 0;
};

} // namespace kvxplatform::audiounit
