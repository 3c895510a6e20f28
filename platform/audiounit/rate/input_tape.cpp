#include "platform/audiounit/rate/input_tape.h"

#include "platform/audiounit/source.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {

void InputTape::prepare(const AudioStreamBasicDescription& format, std::size_t frames)
{
    room = 1;
    while (room < frames) room *= 2;
    channelCount = format.mChannelsPerFrame;
    sampleRate = format.mSampleRate;
    if (room > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(Float32) / channelCount)
        throw std::bad_alloc();
    memory.reset(new Float32[room * channelCount]); // not touched before it is needed
    start(0);
}

void InputTape::start(Float64 time)
{
    first = last = 0;
    startTime = time;
}

AudioBufferList& InputTape::pullPiece(Request& request, UInt32 frames)
{
    AudioTimeStamp time = later(request.time, request.pulled, sampleRate, request.unit.hostTicksPerSecond);
    time.mSampleTime = startTime + static_cast<Float64>(last);
    time.mFlags |= kAudioTimeStampSampleTimeValid;
    request.pulled += frames;
    AudioBufferList* list = nullptr;
    if (const OSStatus status = pull(request.unit, 0, request.flags, time, frames, list))
        request.status = status;
    return *list;
}

void InputTape::pullUntil(Request& request, std::int64_t until)
{
    const std::int64_t largest =
        std::min<std::int64_t>(request.unit.sliceLimit, static_cast<std::int64_t>(room));
    while (last < until) {
        const auto frames = static_cast<UInt32>(std::min(largest, until - last));
        const AudioBufferList& list = pullPiece(request, frames);
        const std::size_t at = static_cast<std::size_t>(last) & (room - 1);
        const std::size_t head = std::min<std::size_t>(frames, room - at);
        for (UInt32 channel = 0; channel < channelCount; ++channel) {
            const auto* from = static_cast<const Float32*>(list.mBuffers[channel].mData);
            Float32* ring = memory.get() + channel * room;
            std::memcpy(ring + at, from, head * sizeof(Float32));
            std::memcpy(ring, from + head, (frames - head) * sizeof(Float32));
        }
        last += frames;
        first = std::max(first, last - static_cast<std::int64_t>(room));
    }
}

void InputTape::pullThrough(Request& request, Float32* const* out, UInt32 frames)
{
    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = std::min<UInt32>(frames - done, request.unit.sliceLimit);
        const AudioBufferList& list = pullPiece(request, now);
        for (UInt32 channel = 0; channel < channelCount; ++channel)
            std::memcpy(out[channel] + done, list.mBuffers[channel].mData, now * sizeof(Float32));
        last += now;
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
