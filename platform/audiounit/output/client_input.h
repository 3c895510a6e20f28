// The client's input of an output unit that drives a device. Pulls input 0 in the client's format and returns
// 32-bit float frames at the device's rate.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/pcm/pulled_conversion.h"

namespace kvxplatform::audiounit {

class ClientInput {
public:
    /// Allocate memory for the unit's input format, the slice limit and the device's rate. The caller holds
    /// the `settings` lock, and no slice is being rendered. Throws std::bad_alloc. After an exception or an
    /// error, lead() and renew() work as before.
    /// Errors  FormatNotSupported: the ratio of the rates is not within 1/256 to 256.
    /// [main], [worker]
    OSStatus prepare(Unit& unit, Float64 deviceRate);

    /// Replace the conversion and discard the input that was pulled ahead, so that reset() need not do so.
    /// The caller holds the `settings` lock. Throws std::bad_alloc.
    /// [any]
    OSStatus renew(Unit& unit);

    /// Discard the input that was pulled ahead.
    /// [audio & rendering]
    void reset();

    /// Set the sample time that the client receives with the next pull. No slice is being rendered.
    /// [main]
    void setSampleTime(Float64 frames) { sampleTime_ = frames; }
    UInt32 channels() const { return to_.mChannelsPerFrame; }

    /// Returns  the time in seconds by which input is pulled ahead; 0 at the device's rate. The caller holds
    ///          the `settings` lock.
    /// [any]
    Float64 lead() const;

    struct Request {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        /// The device's time stamp of the first frame. The client receives its host time.
        const AudioTimeStamp& time;
    };

    /// Return up to `frames` more frames: at least one; at most 1,024 at another rate than the device's, else
    /// the slice limit.
    /// Shape    [frame * channels + channel]. `frames` is set to the number of frames returned.
    /// Owner    this object owns the samples, which stay valid until the next call.
    /// Errors   the source's status becomes the unit's last render error; the frames of a failed pull are
    ///          silent.
    /// [audio & rendering]
    const Float32* next(const Request& request, UInt32& frames);

private:
    OSStatus replace(Unit& unit, const AudioStreamBasicDescription& from,
                     const AudioStreamBasicDescription& to);
    void pullMore(const Request& request, pcm::PulledInput& input, UInt32 made, UInt32 frames);

    AudioStreamBasicDescription from_{}, to_{};   ///< formats of the input and of the frames returned
    UInt32 mostPulled_ = 0, mostReturned_ = 0;    ///< largest numbers of frames
    Published<pcm::PulledConversion> conversion_; ///< the conversion; its input is in the bus's memory
    pcm::Buffers converted_;                      ///< the frames returned
    Float64 sampleTime_ = 0;                      ///< sample time of the next pull
};

} // namespace kvxplatform::audiounit
