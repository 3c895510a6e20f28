#include "soundstream/render.h"

#include "plugin/shared_word.h"

#include <algorithm>
#include <cstring>

namespace soundstream {

namespace {

constexpr UInt32 bytesPerFrame = 4; // two channels of 16 bits, as the mixer gives them
constexpr UInt32 silencedBuffers = 2;

void silence(AudioBuffer& buffer)
{
    if (buffer.mData) std::memset(buffer.mData, 0, buffer.mDataByteSize);
}

/// Silence exactly the first two buffers, whatever the list's count: programs rely on the pair.
void silence(AudioBufferList& list)
{
    for (UInt32 i = 0; i < silencedBuffers; ++i) silence(list.mBuffers[i]);
}

/// The open instance; null without one that can be heard now. It is held, since a completion routine may
/// close it in our slice.
HeldGlobals openInstance(StreamState& state)
{
    const RefconRecord* const record = loadInOrder(state.refconRecord);
    QTSoundStreamGlobals* const globals = record ? loadInOrder(record->globals) : nullptr;
    if (!globals || loadInOrder(globals->isHidden)) return nullptr;
    hold(*globals);
    return HeldGlobals(globals);
}

/// What the mixer gives next; null when it gives nothing.
SoundComponentDataPtr nextSourceData(QTSoundStreamGlobals& globals)
{
    SoundComponentDataPtr data = globals.sourceData;
    if (data && data->sampleCount != 0) return data;
    const int mixersClosed = loadRelaxed(globals.mixersClosed);
    SoundComponentGetSourceData(loadAcquired(globals.mixer), &data);
    if (loadRelaxed(globals.mixersClosed) != mixersClosed)
        data = nullptr; // a completion routine did: it was that one's
    return globals.sourceData = data;
}

} // namespace

OSStatus giveMixerSamples(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription**, void* client)
{
    AudioBuffer& buffer = list->mBuffers[0];
    SoundComponentDataPtr data = nullptr;
    try {
        data = nextSourceData(*static_cast<QTSoundStreamGlobals*>(client));
    } catch (...) { // the platform's own; its caller is C
    }
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
try {
    const Visit visit(client);
    const HeldGlobals globals = visit.state() ? openInstance(*visit.state()) : nullptr;
    if (globals)
        AudioConverterFillComplexBuffer(loadAcquired(visit.state()->converter), giveMixerSamples,
                                        globals.get(), &frames, list, nullptr);
    else
        silence(*list);
    return noErr;
} catch (...) {
    silence(*list);
    return noErr;
}

} // namespace soundstream
