#include "soundstream/render.h"

#include "plugin/exception_border.h"
#include "soundstream/render_scope.h"

#include <algorithm>
#include <cstring>

namespace soundstream {

namespace {

constexpr UInt32 bytesPerFrame = 4; // the mixer delivers two channels of 16-bit samples
constexpr UInt32 silencedBuffers = 2;

void silence(AudioBuffer& buffer)
{
    if (buffer.mData) std::memset(buffer.mData, 0, buffer.mDataByteSize);
}

/// Silence exactly the first two buffers, whatever the buffer count, because existing programs rely on that.
void silence(AudioBufferList& list)
{
    for (UInt32 i = 0; i < silencedBuffers; ++i) silence(list.mBuffers[i]);
}

/// The audible instance, which stays valid until the render scope ends. Null if there is no audible instance
/// or if its mixer is being replaced.
QTSoundStreamGlobals* audibleInstance(const StreamState& state)
{
    const RefconRecord* const record = loadInOrder(state.refconRecord);
    QTSoundStreamGlobals* const globals = record ? loadInOrder(record->globals) : nullptr;
    return globals && !loadInOrder(globals->isMixerChanging) ? globals : nullptr;
}

/// Render the audible instance. Returns false if no audio was rendered, so that the caller renders silence.
bool renderInstance(const void* address, UInt32 frames, AudioBufferList* list)
{
    const RenderScope scope(address);
    QTSoundStreamGlobals* const globals = scope.state() ? audibleInstance(*scope.state()) : nullptr;
    if (!globals) return false;
    AudioConverterFillComplexBuffer(loadAcquired(scope.state()->converter), giveMixerSamples, globals,
                                    &frames, list, nullptr);
    return true;
}

/// The mixer's current samples, or its next samples if the current ones are used up; null if the mixer has
/// none.
SoundComponentDataPtr currentSource(QTSoundStreamGlobals& globals)
{
    SoundComponentDataPtr data = loadRelaxed(globals.sourceData);
    if (data && data->sampleCount != 0) return data;
    const int inputsEnded = loadRelaxed(globals.inputsEnded);
    SoundComponentGetSourceData(loadAcquired(globals.mixer), &data);
    // During this call a completion routine may have closed the instance or replaced the instance's mixer.
    if (loadRelaxed(globals.inputsEnded) != inputsEnded) data = nullptr;
    storeRelaxed(globals.sourceData, data);
    return data;
}

} // namespace

OSStatus giveMixerSamples(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription**, void* client)
{
    AudioBuffer& buffer = list->mBuffers[0];
    const SoundComponentDataPtr data =
        catchAll([client] { return currentSource(*static_cast<QTSoundStreamGlobals*>(client)); });
    if (!data || *packets == 0 || data->sampleCount <= 0) {
        silence(buffer);
        return noErr;
    }
    const UInt32 count = std::min(*packets, static_cast<UInt32>(data->sampleCount));
    buffer = {2, count * bytesPerFrame, data->buffer};
    data->buffer += count * bytesPerFrame;
    data->sampleCount -= static_cast<long>(count);
    *packets = count;
    return noErr;
}

OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                         UInt32 frames, AudioBufferList* list)
{
    const bool isRendered = catchAll([=] { return renderInstance(client, frames, list); });
    if (!isRendered) silence(*list);
    return noErr;
}

} // namespace soundstream
