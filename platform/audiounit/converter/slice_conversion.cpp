#include "platform/audiounit/converter/slice_conversion.h"

#include "platform/audiounit/source.h"
#include "platform/pcm/linear_pcm.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace kvxplatform::audiounit {

bool convertsRate(Unit& unit)
{
    return unit.input(0).format.mSampleRate != unit.output(0).format.mSampleRate;
}

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
    return noErr;
}

OSStatus SliceConversion::replace(Unit& unit, const pcm::ChannelMap& map, Quality quality)
{
    auto next = std::make_unique<pcm::PulledConversion>();
    if (!next->conversion.prepare(unit.input(0).format, unit.output(0).format, map, quality))
        return kAudioUnitErr_FormatNotSupported;
    conversion_.publish(std::move(next), unit.scope);
    return noErr;
}

void SliceConversion::release(Unit& unit) { conversion_.publish(nullptr, unit.scope); }

Float64 SliceConversion::tail(Unit& unit, Quality quality) const
{
    if (!convertsRate(unit)) return 0;
    const Float64 from = unit.input(0).format.mSampleRate;
    if (const pcm::PulledConversion* const current = conversion_.get())
        return current->conversion.lead() / from;
    pcm::FixedRateConverter example;
    example.prepare(from, unit.output(0).format.mSampleRate, 1, quality);
    return example.lead() / from;
}

void SliceConversion::reset() { conversion_.get()->reset(); }

OSStatus SliceConversion::render(Unit& unit, Slice& slice)
{
    pcm::PulledConversion& current = *conversion_.get();
    const OSStatus status = current.conversion.convertsRate()
                                ? renderAtOtherRate(unit, slice, current)
                                : renderAtSameRate(unit, slice, current.conversion);
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

OSStatus SliceConversion::renderAtOtherRate(Unit& unit, Slice& slice, pcm::PulledConversion& current)
{
    pcm::PulledInput& input = current.input;
    AudioUnitRenderActionFlags flags = slice.flags;
    UInt32 made = 0;
    const auto pullMore = [&](UInt32 missing) {
        const UInt32 frames = std::min(missing, inputLimit_);
        AudioTimeStamp time =
            later(slice.time, made, unit.output(0).format.mSampleRate, unit.hostTicksPerSecond);
        time.mSampleTime = sampleTime_;
        sampleTime_ += frames;
        const OSStatus status = pull(unit, 0, flags, time, frames, inputLimit_, input.list);
        input.first = 0;
        input.count = status ? 0 : frames;
        return status;
    };
    const OSStatus status =
        pcm::convertPulled(current.conversion, input, slice.out, slice.frames, made, pullMore);
    // The output does not become silent together with the source, because the filter still rings.
    if (!status) slice.flags |= flags & ~static_cast<UInt32>(kAudioUnitRenderAction_OutputIsSilence);
    return status;
}

} // namespace kvxplatform::audiounit
