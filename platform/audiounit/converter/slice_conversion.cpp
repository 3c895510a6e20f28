#include "platform/audiounit/converter/slice_conversion.h"

#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"
#include "platform/pcm/linear_pcm.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {
namespace {

std::unique_ptr<pcm::Conversion> make(Unit& unit, const pcm::ChannelMap& routing,
                                      pcm::Conversion::Quality quality)
{
    auto made = std::make_unique<pcm::Conversion>();
    if (!made->prepare(unit.input(0).format, unit.output(0).format, routing, quality)) return nullptr;
    return made;
}

} // namespace

OSStatus SliceConversion::prepare(Unit& unit, const pcm::ChannelMap& routing, Quality quality)
{
    Element& input = unit.input(0);
    const Float64 from = input.format.mSampleRate, to = unit.output(0).format.mSampleRate;
    const double limit = std::ceil(unit.sliceLimit * from / to);
    if (OSStatus status = exchange(unit, routing, quality)) return status;
    if (limit > std::numeric_limits<UInt32>::max()) throw std::bad_alloc();
    inputLimit = static_cast<UInt32>(limit);
    input.buffers.prepare(input.format, inputLimit);
    sampleTime = 0;
    left = 0;
    return noErr;
}

OSStatus SliceConversion::exchange(Unit& unit, const pcm::ChannelMap& routing, Quality quality)
{
    auto next = std::make_unique<Engine>(Engine{make(unit, routing, quality)});
    if (!next->conversion) return kAudioUnitErr_FormatNotSupported;
    engine.publish(std::move(next), unit.scope);
    return noErr;
}

void SliceConversion::release(Unit& unit) { engine.publish(nullptr, unit.scope); }

void SliceConversion::reset()
{
    engine.get()->conversion->reset();
    left = 0;
}

OSStatus SliceConversion::render(Unit& unit, Slice& slice)
{
    pcm::Conversion& conversion = *engine.get()->conversion;
    const OSStatus status = conversion.convertsRate() ? renderConverted(unit, slice, conversion)
                                                      : renderStraight(unit, slice, conversion);
    if (status) pcm::silence(unit.output(0).format, slice.out, 0, slice.frames);
    return status;
}

OSStatus SliceConversion::renderStraight(Unit& unit, Slice& slice, pcm::Conversion& conversion) const
{
    AudioBufferList* in = nullptr;
    const OSStatus status = pull(unit, 0, slice.flags, slice.time, slice.frames, in);
    if (!status) conversion.convert(*in, 0, slice.frames, slice.out, 0, slice.frames);
    return status;
}

OSStatus SliceConversion::renderConverted(Unit& unit, Slice& slice, pcm::Conversion& conversion)
{
    // A source that falls silent is not heard to be until the filter has rung out.
    AudioUnitRenderActionFlags flags = slice.flags;
    for (UInt32 made = 0; made < slice.frames;) {
        const UInt32 wanted = slice.frames - made;
        if (!left)
            if (const OSStatus status = pullMore(unit, slice, made, conversion.framesFor(wanted), flags))
                return status;
        const pcm::Conversion::Piece piece =
            conversion.convert(*pulled, first, left, slice.out, made, wanted);
        first += piece.used;
        left -= piece.used;
        made += piece.made;
    }
    slice.flags |= flags & ~static_cast<UInt32>(kAudioUnitRenderAction_OutputIsSilence);
    return noErr;
}

OSStatus SliceConversion::pullMore(Unit& unit, const Slice& slice, UInt32 made, UInt32 frames,
                                   AudioUnitRenderActionFlags& flags)
{
    frames = std::min(frames, inputLimit);
    AudioTimeStamp time = later(slice.time, made, unit.output(0).format.mSampleRate, unit.hostTicksPerSecond);
    time.mSampleTime = sampleTime;
    sampleTime += frames;
    const OSStatus status = pull(unit, 0, flags, time, frames, inputLimit, pulled);
    first = 0;
    left = status ? 0 : frames;
    return status;
}

} // namespace kvxplatform::audiounit
