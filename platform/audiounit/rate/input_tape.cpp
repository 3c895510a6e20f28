#include "platform/audiounit/rate/input_tape.h"

#include "platform/audiounit/source.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {

void InputTape::prepare(const AudioStreamBasicDescription& format)
{
    channelCount = format.mChannelsPerFrame;
    sampleRate = format.mSampleRate;
    list.prepare(channelCount);
    start(0);
}

void InputTape::makeRoom(double frames)
{
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    if (frames > static_cast<double>(most / 2 / sizeof(Float32) / channelCount)) throw std::bad_alloc();
    std::size_t rounded = 1;
    while (static_cast<double>(rounded) < frames) rounded *= 2;
    memory = std::make_unique<Float32[]>(rounded * channelCount);
    room = rounded;
}

void InputTape::start(Float64 time)
{
    first = last = 0;
    startTime = time;
}

// Into frames [at, at + frames) of what the list points at.
void InputTape::pullPiece(Request& request, UInt32 at, UInt32 frames)
{
    AudioTimeStamp time = later(request.time, request.pulled, sampleRate, request.unit.hostTicksPerSecond);
    time.mSampleTime = startTime + static_cast<Float64>(last);
    time.mFlags |= kAudioTimeStampSampleTimeValid;
    request.pulled += frames;
    const OSStatus status = pullInto(list.list(), at, request.unit, 0, request.flags, time, frames);
    if (status) request.status = status;
    last += frames;
}

void InputTape::pullUntil(Request& request, std::int64_t until)
{
    while (last < until) {
        const std::size_t at = static_cast<std::size_t>(last) & (room - 1);
        const auto straight = static_cast<std::int64_t>(room - at); // until the ring's seam
        const std::int64_t largest = std::min<std::int64_t>(request.unit.sliceLimit, straight);
        for (UInt32 channel = 0; channel < channelCount; ++channel)
            list.list().mBuffers[channel] = {1, 0, memory.get() + channel * room};
        pullPiece(request, static_cast<UInt32>(at), static_cast<UInt32>(std::min(largest, until - last)));
        first = std::max(first, last - static_cast<std::int64_t>(room));
    }
}

void InputTape::pullThrough(Request& request, Float32* const* out, UInt32 frames)
{
    for (UInt32 channel = 0; channel < channelCount; ++channel)
        list.list().mBuffers[channel] = {1, 0, out[channel]};
    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = std::min<UInt32>(frames - done, request.unit.sliceLimit);
        pullPiece(request, done, now);
        first = last;
        done += now;
    }
}

void InputTape::forget(std::int64_t before) { first = std::clamp(before, first, last); }

UInt32 InputTape::look(std::int64_t frame, UInt32 most, const Float32** out) const
{
    const std::size_t at = static_cast<std::size_t>(frame) & (room - 1);
    for (UInt32 channel = 0; channel < channelCount; ++channel)
        out[channel] = memory.get() + channel * room + at;
    return static_cast<UInt32>(
        std::min({std::size_t{most}, room - at, static_cast<std::size_t>(last - frame)}));
}

void InputTape::copyChannel(UInt32 channel, std::int64_t frame, UInt32 frames, Float32* out) const
{
    const std::size_t at = static_cast<std::size_t>(frame) & (room - 1);
    const std::size_t head = std::min<std::size_t>(frames, room - at);
    const Float32* ring = memory.get() + channel * room;
    std::memcpy(out, ring + at, head * sizeof(Float32));
    std::memcpy(out + head, ring, (frames - head) * sizeof(Float32));
}

void InputTape::copy(std::int64_t frame, UInt32 frames, Float32* const* out) const
{
    for (UInt32 channel = 0; channel < channelCount; ++channel)
        copyChannel(channel, frame, frames, out[channel]);
}

} // namespace kvxplatform::audiounit
