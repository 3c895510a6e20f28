#include "platform/audiounit/rate/input_history.h"

#include "platform/audiounit/source.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {

void InputHistory::prepare(const AudioStreamBasicDescription& format)
{
    channels_ = format.mChannelsPerFrame;
    sampleRate_ = format.mSampleRate;
    list_.prepare(channels_);
    start(0);
}

void InputHistory::allocate(double frames)
{
    constexpr auto maxBytes = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    if (frames > static_cast<double>(maxBytes / 2 / sizeof(Float32) / channels_)) throw std::bad_alloc();
    std::size_t rounded = 1;
    while (static_cast<double>(rounded) < frames) rounded *= 2;
    memory_ = std::make_unique<Float32[]>(rounded * channels_);
    capacity_ = rounded;
}

void InputHistory::start(Float64 time)
{
    first_ = end_ = 0;
    startTime_ = time;
}

/// Pull into frames [offset, offset + frames) of list_.
void InputHistory::pullInto(Call& call, UInt32 offset, UInt32 frames)
{
    AudioTimeStamp time = later(call.time, call.pulled, sampleRate_, call.unit.hostTicksPerSecond);
    time.mSampleTime = startTime_ + static_cast<Float64>(end_);
    time.mFlags |= kAudioTimeStampSampleTimeValid;
    call.pulled += frames;
    const OSStatus status = audiounit::pullInto(list_.list(), offset, call.unit, 0, call.flags, time, frames);
    if (status) call.status = status;
    end_ += frames;
}

void InputHistory::pullUntil(Call& call, std::int64_t end)
{
    while (end_ < end) {
        const std::size_t index = indexOf(end_);
        const auto contiguous = static_cast<std::int64_t>(capacity_ - index);
        const std::int64_t limit = std::min<std::int64_t>(call.unit.sliceLimit, contiguous);
        for (UInt32 channel = 0; channel < channels_; ++channel)
            list_.list().mBuffers[channel] = {1, 0, memory_.get() + channel * capacity_};
        pullInto(call, static_cast<UInt32>(index), static_cast<UInt32>(std::min(limit, end - end_)));
        first_ = std::max(first_, end_ - static_cast<std::int64_t>(capacity_));
    }
}

void InputHistory::pullThrough(Call& call, Float32* const* out, UInt32 frames)
{
    for (UInt32 channel = 0; channel < channels_; ++channel)
        list_.list().mBuffers[channel] = {1, 0, out[channel]};
    for (UInt32 done = 0; done < frames;) {
        const UInt32 count = std::min<UInt32>(frames - done, call.unit.sliceLimit);
        pullInto(call, done, count);
        first_ = end_;
        done += count;
    }
}

void InputHistory::forget(std::int64_t before) { first_ = std::clamp(before, first_, end_); }

UInt32 InputHistory::look(std::int64_t frame, UInt32 maxFrames, const Float32** out) const
{
    const std::size_t index = indexOf(frame);
    for (UInt32 channel = 0; channel < channels_; ++channel)
        out[channel] = memory_.get() + channel * capacity_ + index;
    return static_cast<UInt32>(
        std::min({std::size_t{maxFrames}, capacity_ - index, static_cast<std::size_t>(end_ - frame)}));
}

void InputHistory::copyChannel(UInt32 channel, std::int64_t frame, UInt32 frames, Float32* out) const
{
    const std::size_t index = indexOf(frame);
    const std::size_t head = std::min<std::size_t>(frames, capacity_ - index);
    const Float32* ring = memory_.get() + channel * capacity_;
    std::memcpy(out, ring + index, head * sizeof(Float32));
    std::memcpy(out + head, ring, (frames - head) * sizeof(Float32));
}

void InputHistory::copy(std::int64_t frame, UInt32 frames, Float32* const* out) const
{
    for (UInt32 channel = 0; channel < channels_; ++channel)
        copyChannel(channel, frame, frames, out[channel]);
}

} // namespace kvxplatform::audiounit
