#include "platform/audiounit/source.h"

#include "platform/audiounit/element_format.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/unit_handle.h"
#include "platform/pcm/linear_pcm.h"

#include <algorithm>
#include <cstring>

namespace kvxplatform::audiounit {
namespace {

void publish(Unit& unit, UInt32 bus, std::unique_ptr<const Source> source)
{
    unit.input(bus).source.publish(std::move(source), unit.scope);
}

OSStatus outputFormat(const AudioUnitConnection& connection, AudioStreamBasicDescription& out)
{
    const UnitUse source = use(connection.sourceAudioUnit);
    if (source.status) return source.status;
    if (!hasElement(*source, kAudioUnitScope_Output, connection.sourceOutputNumber))
        return kAudioUnitErr_InvalidElement;
    const std::lock_guard<std::mutex> guard(source->settings);
    out = source->output(connection.sourceOutputNumber).format;
    return noErr;
}

/// One pull of an input into a buffer list. The pull calls the input's source as often as the slice limits
/// require.
struct Pull {
    Unit& unit;
    const Source& source;
    UInt32 bus;
    AudioUnitRenderActionFlags& flags;
    const AudioBufferList& into;
    UInt32 frameBytes; ///< bytes of a frame in each buffer of `into`

    std::byte* memory(UInt32 buffer, UInt32 frame) const
    {
        return static_cast<std::byte*>(into.mBuffers[buffer].mData) + std::size_t{frame} * frameBytes;
    }

    // Call the source for frames [first, first + frames) of `into`.
    OSStatus callSource(const AudioTimeStamp& time, UInt32 first, UInt32 frames) const
    {
        AudioBufferList& list = unit.input(bus).partialList.list();
        list.mNumberBuffers = into.mNumberBuffers;
        for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
            list.mBuffers[i] = {into.mBuffers[i].mNumberChannels, frames * frameBytes, memory(i, first)};

        const AudioUnitConnection& from = source.connection;
        const OSStatus status = from.sourceAudioUnit
                                    ? renderFrom(from, time, frames, list)
                                    : source.callback.inputProc(source.callback.inputProcRefCon, &flags,
                                                                &time, bus, frames, &list);
        if (!status) collect(list, first, frames);
        return status;
    }

    // Complete the frames in `into`. The source may have replaced the pointers of its buffer list, or written
    // fewer frames than requested.
    void collect(const AudioBufferList& list, UInt32 first, UInt32 frames) const
    {
        for (UInt32 i = 0; i < into.mNumberBuffers; ++i) {
            const AudioBuffer& buffer = list.mBuffers[i];
            std::byte* const own = memory(i, first);
            const UInt32 written = buffer.mData ? std::min(buffer.mDataByteSize / frameBytes, frames) : 0;
            const UInt32 bytes = written * frameBytes;
            if (buffer.mData != own && written) std::memmove(own, buffer.mData, bytes);
            if (written < frames) pcm::silenceBuffer(unit.input(bus).format, own + bytes, frames - written);
        }
    }

    OSStatus renderFrom(const AudioUnitConnection& from, const AudioTimeStamp& time, UInt32 frames,
                        AudioBufferList& list) const
    {
        const UnitUse feeding = use(from.sourceAudioUnit);
        if (feeding.status) return kAudioUnitErr_NoConnection;
        return render(*feeding, &flags, &time, from.sourceOutputNumber, frames, &list);
    }

    UInt32 framesPerCall(UInt32 inputLimit) const
    {
        if (!source.connection.sourceAudioUnit) return inputLimit;
        const UnitUse feeding = use(source.connection.sourceAudioUnit);
        return feeding.status ? inputLimit : std::min<UInt32>(inputLimit, feeding->sliceLimit);
    }
};

OSStatus pullFrames(const AudioBufferList& into, UInt32 first, Unit& unit, UInt32 bus,
                    AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time, UInt32 frames,
                    UInt32 inputLimit)
{
    const AudioStreamBasicDescription& format = unit.input(bus).format;
    OSStatus status = kAudioUnitErr_NoConnection;
    UInt32 done = 0;
    const Source* source = unit.input(bus).source.get();
    if (source) {
        const Pull from{unit, *source, bus, flags, into, format.mBytesPerFrame};
        const UInt32 limit = std::max<UInt32>(from.framesPerCall(inputLimit), 1);
        status = noErr;
        while (done < frames && !status && !unit.isStopping) {
            const UInt32 now = std::min(limit, frames - done);
            const AudioTimeStamp at =
                done ? later(time, done, format.mSampleRate, unit.hostTicksPerSecond) : time;
            status = from.callSource(at, first + done, now);
            done += now;
        }
    }
    if (status) done = 0;
    if (done < frames) pcm::silence(format, into, first + done, frames - done);
    return status;
}

} // namespace

AudioTimeStamp later(const AudioTimeStamp& time, UInt32 frames, Float64 sampleRate,
                     Float64 hostTicksPerSecond)
{
    AudioTimeStamp moved = time;
    moved.mSampleTime += frames;
    if (time.mFlags & kAudioTimeStampHostTimeValid)
        moved.mHostTime += static_cast<UInt64>(frames / sampleRate * hostTicksPerSecond);
    return moved;
}

void setCallback(Unit& unit, UInt32 bus, const AURenderCallbackStruct& callback)
{
    std::unique_ptr<const Source> source;
    if (callback.inputProc) source = std::make_unique<Source>(Source{callback, {}});
    publish(unit, bus, std::move(source));
}

OSStatus connect(Unit& unit, const AudioUnitConnection& connection)
{
    const UInt32 bus = connection.destInputNumber;
    if (!hasElement(unit, kAudioUnitScope_Input, bus)) return kAudioUnitErr_InvalidElement;
    if (!connection.sourceAudioUnit) {
        const std::lock_guard<std::mutex> guard(unit.settings);
        publish(unit, bus, nullptr);
        return noErr;
    }
    if (connection.sourceAudioUnit == unit.self) return kAudioUnitErr_InvalidPropertyValue;

    AudioStreamBasicDescription format;
    if (const OSStatus status = outputFormat(connection, format)) return status;
    auto source = std::make_unique<Source>(Source{{}, connection});
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (!pcm::isSameFormat(format, unit.input(bus).format)) {
        if (unit.isInitialized) return kAudioUnitErr_FormatNotSupported;
        if (const OSStatus status = setFormat(unit, {kAudioUnitScope_Input, bus}, format)) return status;
    }
    publish(unit, bus, std::move(source));
    return noErr;
}

OSStatus checkConnections(Unit& unit)
{
    for (UInt32 bus = 0; bus < unit.inputs().count; ++bus) {
        AudioUnitConnection connection{};
        AudioStreamBasicDescription expected, present;
        {
            const std::lock_guard<std::mutex> guard(unit.settings);
            if (const Source* source = unit.input(bus).source.get()) connection = source->connection;
            expected = unit.input(bus).format;
        }
        if (!connection.sourceAudioUnit) continue;
        const OSStatus status = outputFormat(connection, present);
        if (status == badComponentInstance) return kAudioUnitErr_NoConnection;
        if (status) return status;
        if (!pcm::isSameFormat(expected, present)) return kAudioUnitErr_FormatNotSupported;
    }
    return noErr;
}

OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, AudioBufferList*& out)
{
    return pull(unit, bus, flags, time, frames, unit.sliceLimit, out);
}

OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, UInt32 limit, AudioBufferList*& out)
{
    out = &unit.input(bus).buffers.list(frames);
    return pullFrames(*out, 0, unit, bus, flags, time, frames, limit);
}

OSStatus pullInto(const AudioBufferList& list, UInt32 first, Unit& unit, UInt32 bus,
                  AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time, UInt32 frames)
{
    return pullFrames(list, first, unit, bus, flags, time, frames, unit.sliceLimit);
}

OSStatus passThrough(Unit& unit, Slice& slice)
{
    if (!pcm::isSameFormat(unit.input(0).format, unit.output(slice.bus).format))
        return kAudioUnitErr_FormatNotSupported;
    return pullInto(slice.out, 0, unit, 0, slice.flags, slice.time, slice.frames);
}

} // namespace kvxplatform::audiounit
