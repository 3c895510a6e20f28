#include "platform/audiounit/render.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr AudioUnitRenderActionFlags renderPhases = kAudioUnitRenderAction_PreRender |
                                                    kAudioUnitRenderAction_PostRender |
                                                    kAudioUnitRenderAction_PostRenderError;

OSStatus renderSlice(Unit& unit, Slice& slice)
{
    if (slice.frames > unit.sliceLimit) return kAudioUnitErr_TooManyFramesToProcess;
    if (!(slice.time.mFlags & kAudioTimeStampSampleTimeValid)) return paramErr;
    Element& output = unit.output(slice.bus);
    if (!fits(slice.out, output.format, slice.frames)) return paramErr;

    fillInMemory(slice.out, output.buffers, slice.frames);
    if (unit.isResetPending.exchange(false) && unit.kind.reset) unit.kind.reset(unit);
    return unit.kind.render(unit, slice);
}

} // namespace

bool beginSlice(Unit& unit)
{
    unit.isStopping = false;
    return unit.isInitialized;
}

bool fits(const AudioBufferList& list, const AudioStreamBasicDescription& format, UInt32 frames)
{
    if (list.mNumberBuffers != pcm::buffersOf(format)) return false;
    const UInt32 channels = pcm::channelsPerBuffer(format);
    const std::uint64_t bytes = std::uint64_t{frames} * format.mBytesPerFrame;
    return std::all_of(list.mBuffers, list.mBuffers + list.mNumberBuffers, [&](const AudioBuffer& buffer) {
        return buffer.mNumberChannels == channels && (!buffer.mData || buffer.mDataByteSize >= bytes);
    });
}

void fillInMemory(AudioBufferList& list, pcm::Buffers& own, UInt32 frames)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i) {
        AudioBuffer& buffer = list.mBuffers[i];
        if (!buffer.mData) buffer.mData = own.memory(i);
        buffer.mDataByteSize = frames * own.bytesPerFrame();
    }
}

OSStatus render(Unit& unit, AudioUnitRenderActionFlags* ioFlags, const AudioTimeStamp* time, UInt32 bus,
                UInt32 frames, AudioBufferList* list)
{
    if (!time || !list) return paramErr;
    if (!unit.isInitialized) return kAudioUnitErr_Uninitialized;
    if (!hasElement(unit, kAudioUnitScope_Output, bus)) return kAudioUnitErr_InvalidElement;

    AudioUnitRenderActionFlags flags = ioFlags ? *ioFlags & ~renderPhases : 0;
    Slice slice{flags, *time, bus, frames, *list};
    OSStatus status = kAudioUnitErr_CannotDoInCurrentContext;
    if (unit.scope.isInside()) {
        if (unit.kind.renderInside) status = unit.kind.renderInside(unit, slice);
    } else if (unit.kind.render) {
        const RenderScope::Entry entry(unit.scope);
        if (entry && beginSlice(unit))
            status = renderSlice(unit, slice);
        else if (!unit.isInitialized)
            status = kAudioUnitErr_Uninitialized;
    }
    if (status) unit.lastRenderError = status;
    if (ioFlags) *ioFlags = flags;
    return status;
}

} // namespace kvxplatform::audiounit
