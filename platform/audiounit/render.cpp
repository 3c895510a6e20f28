#include "platform/audiounit/render.h"

#include "platform/audiounit/source.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace kvxplatform::audiounit {
namespace {

constexpr AudioUnitRenderActionFlags moments = kAudioUnitRenderAction_PreRender |
                                               kAudioUnitRenderAction_PostRender |
                                               kAudioUnitRenderAction_PostRenderError;

OSStatus renderSlice(Unit& unit, Slice& slice)
{
    if (slice.frames > unit.sliceLimit) return kAudioUnitErr_TooManyFramesToProcess;
    if (!(slice.time.mFlags & kAudioTimeStampSampleTimeValid)) return paramErr;
    Element& output = unit.output(slice.bus);
    if (!fits(slice.out, output.format, slice.frames)) return paramErr;

    lendMemory(slice.out, output.buffers, slice.frames);
    if (unit.isResetPending.exchange(false) && unit.kind.reset) unit.kind.reset(unit);
    notify(unit, slice.flags, kAudioUnitRenderAction_PreRender, slice.time, slice.bus, slice.frames,
           &slice.out);
    const OSStatus status = unit.kind.render(unit, slice);
    notify(unit, slice.flags,
           status ? kAudioUnitRenderAction_PostRender | kAudioUnitRenderAction_PostRenderError
                  : kAudioUnitRenderAction_PostRender,
           slice.time, slice.bus, slice.frames, &slice.out);
    return status;
}

} // namespace

// Uninitialising clears isInitialized and then waits for the scope; a slice enters the scope and then reads
// isInitialized.
InSlice::InSlice(Unit& unit) : entry(unit.scope), isRendering(false)
{
    if (!entry) return;
    unit.isStopping = false;
    isRendering = unit.isInitialized;
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

void lendMemory(AudioBufferList& list, pcm::Buffers& own, UInt32 frames)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i) {
        AudioBuffer& buffer = list.mBuffers[i];
        if (!buffer.mData) buffer.mData = own.memory(i);
        buffer.mDataByteSize = frames * own.bytesPerFrame();
    }
}

void notify(Unit& unit, AudioUnitRenderActionFlags& flags, AudioUnitRenderActionFlags moment,
            const AudioTimeStamp& time, UInt32 bus, UInt32 frames, AudioBufferList* list)
{
    const std::vector<Notify>* all = unit.notifies.get();
    if (!all) return;
    flags = (flags & ~moments) | moment;
    for (const Notify& each : *all) each.function(each.context, &flags, &time, bus, frames, list);
    flags &= ~moments;
}

OSStatus passThrough(Unit& unit, Slice& slice)
{
    if (!pcm::isSameFormat(unit.input(0).format, unit.output(slice.bus).format))
        return kAudioUnitErr_FormatNotSupported;
    return pullInto(slice.out, 0, unit, 0, slice.flags, slice.time, slice.frames);
}

OSStatus render(Unit& unit, AudioUnitRenderActionFlags* ioFlags, const AudioTimeStamp* time, UInt32 bus,
                UInt32 frames, AudioBufferList* list)
{
    if (!time || !list) return paramErr;
    if (!unit.isInitialized) return kAudioUnitErr_Uninitialized;
    if (!hasElement(unit, kAudioUnitScope_Output, bus)) return kAudioUnitErr_InvalidElement;

    AudioUnitRenderActionFlags flags = ioFlags ? *ioFlags & ~moments : 0;
    Slice slice{flags, *time, bus, frames, *list};
    OSStatus status = kAudioUnitErr_CannotDoInCurrentContext; // another slice runs, or a device pulls
    if (unit.scope.isInside()) {
        if (unit.kind.renderInside) status = unit.kind.renderInside(unit, slice);
    } else if (unit.kind.render) {
        const InSlice inside(unit);
        if (inside)
            status = renderSlice(unit, slice);
        else if (!unit.isInitialized)
            status = kAudioUnitErr_Uninitialized;
    }
    if (status) unit.lastRenderError = status;
    if (ioFlags) *ioFlags = flags;
    return status;
}

namespace {

// Both with settings.
std::unique_ptr<std::vector<Notify>> copyOf(const Unit& unit)
{
    const std::vector<Notify>* all = unit.notifies.get();
    return all ? std::make_unique<std::vector<Notify>>(*all) : std::make_unique<std::vector<Notify>>();
}

void publish(Unit& unit, std::unique_ptr<std::vector<Notify>> all)
{
    if (all->empty()) all.reset();
    unit.notifies.publish(std::move(all), unit.scope);
}

} // namespace

OSStatus addNotify(Unit& unit, AURenderCallback function, void* context)
{
    if (!function) return paramErr;
    const std::lock_guard<std::mutex> guard(unit.settings);
    auto all = copyOf(unit);
    all->push_back({function, context});
    publish(unit, std::move(all));
    return noErr;
}

OSStatus removeNotify(Unit& unit, AURenderCallback function, void* context)
{
    if (!function) return paramErr;
    const std::lock_guard<std::mutex> guard(unit.settings);
    auto all = copyOf(unit);
    const auto found = std::find_if(all->begin(), all->end(), [&](const Notify& each) {
        return each.function == function && each.context == context;
    });
    if (found == all->end()) return kAudioUnitErr_InvalidPropertyValue;
    all->erase(found);
    publish(unit, std::move(all));
    return noErr;
}

} // namespace kvxplatform::audiounit
