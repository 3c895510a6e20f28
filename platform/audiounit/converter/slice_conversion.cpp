#include "platform/audiounit/converter/slice_conversion.h"

#include "platform/audiounit/source.h"
#include "platform/pcm/linear_pcm.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {

OSStatus SliceConversion::prepare(Unit& unit, const pcm::ChannelMap& map, Quality quality)
{
    Element& input = unit.input(0);
    const Float64 from = input.format.mSampleRate, to = unit.output(0).format.mSampleRate;
    const double limit = std::ceil(unit.sliceLimit * from / to);
    if (const OSStatus status = replace(unit, map, quality)) return status;
    if (limit > std::numeric_limits<UInt32>::max()) throw std::bad_alloc();
    inputLimit_ = static_cast<UInt32>(limit);
    input.buffers.prepare(input.format, inputLimit_);
    sampleTime_ = 0;
    unread_ = 0;
    return noErr;
}

OSStatus SliceConversion::replace(Unit& unit, const pcm::ChannelMap& map, Quality quality)
{
    auto next = std::make_unique<pcm::Conversion>();
    if (!next->prepare(unit.input(0).format, unit.output(0).format, map, quality))
        return kAudioUnitErr_FormatNotSupported;
    conversion_.publish(std::move(next), unit.scope);
    return noErr;
}

void SliceConversion::release(Unit& unit) { conversion_.publish(nullptr, unit.scope); }

void SliceConversion::reset()
{
    conversion_.get()->reset();
    unread_ = 0;
}

OSStatus SliceConversion::render(Unit& unit, Slice& slice)
{
    pcm::Conversion& conversion = *conversion_.get();
    const OSStatus status = conversion.convertsRate() ? renderAtOtherRate(unit, slice, conversion)
                                                      : renderAtSameRate(unit, slice, conversion);
    if (status) pcm::silence(unit.output(0).format, slice.out, 0, slice.frames);
    return status;
}

OSStatus SliceConversion::renderAtSameRate(Unit& unit, Slice& slice, pcm::Conversion& conversion) const
{
    AudioBufferList* in = nullptr;
    const OSStatus status = pull(unit, 0, slice.flags, slice.time, slice.frames, in);
    if (!status) conversion.convert(*in, 0, slice.frames, slice.out, 0, slice.frames);
    return status;
}

OSStatus SliceConversion::renderAtOtherRate(Unit& unit, Slice& slice, pcm::Conversion& conversion)
{
    AudioUnitRenderActionFlags flags = slice.flags;
    for (UInt32 made = 0; made < slice.frames;) {
        const UInt32 missing = slice.frames - made;
        if (!unread_)
            if (const OSStatus status = pullMore(unit, slice, made, conversion.framesFor(missing), flags))
                return status;
        const pcm::Progress progress =
            conversion.convert(*pulled_, unreadFrom_, unread_, slice.out, made, missing);
        unreadFrom_ += progress.used;
        unread_ -= progress.used;
        made += progress.made;
    }
    // The output does not become silent together with the source, because the filter still rings.
    slice.flags |= flags & ~static_cast<UInt32>(kAudioUnitRenderAction_OutputIsSilence);
    return noErr;
}

OSStatus SliceConversion::pullMore(Unit& unit, const Slice& slice, UInt32 made, UInt32 frames,
                                   AudioUnitRenderActionFlags& flags)
{
    frames = std::min(frames, inputLimit_);
    AudioTimeStamp time = later(slice.time, made, unit.output(0).format.mSampleRate, unit.hostTicksPerSecond);
    time.mSampleTime = sampleTime_;
    sampleTime_ += frames;
    const OSStatus status = pull(unit, 0, flags, time, frames, inputLimit_, pulled_);
    unreadFrom_ = 0;
    unread_ = status ? 0 : frames;
    return status;
}

} // namespace kvxplatform::audiounit
