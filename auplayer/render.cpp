#include "auplayer/render.h"

#include "auplayer/au_player.h"
#include "plugin/shared_word.h"
#include "plugin/truncate.h"

#include <algorithm>
#include <cstring>

namespace auplayer {

namespace {

void silence(AudioBufferList& list)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        if (list.mBuffers[i].mData) std::memset(list.mBuffers[i].mData, 0, list.mBuffers[i].mDataByteSize);
}

/// Fill the slice that begins at frame `position`. Byte places in 64 bits: neither they nor the end of a
/// slice can wrap.
void fill(const LoadedAudio& audio, UInt32 position, UInt32 frames, AudioBufferList& list)
{
    const UInt64 bytesPerFrame = audio.format.mBytesPerFrame;
    const bool hasMusic = audio.samples && position < audio.frameCount; // a read that failed leaves none
    const UInt64 left = hasMusic ? (audio.frameCount - position) * bytesPerFrame : 0;
    const UInt64 wanted = list.mNumberBuffers ? list.mBuffers[0].mDataByteSize : 0;
    if (UInt64{position} + frames > audio.frameCount || wanted > left) silence(list);
    if (!left || !wanted || !list.mBuffers[0].mData) return;
    std::memcpy(list.mBuffers[0].mData,
                reinterpret_cast<const char*>(audio.samples) + position * bytesPerFrame,
                static_cast<std::size_t>(std::min(wanted, left)));
}

/// Where the next slice begins, when this one ended at `position`.
UInt32 looped(const AUPlayerData& player, UInt32 position)
{
    const double in = loadRelaxed(player.loopIn);
    if (in > position) position = frameAt(in);
    return position >= loadRelaxed(player.loopOut) ? frameAt(in) : position;
}

} // namespace

OSStatus renderInput(void* client, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32 bus,
                     UInt32 frames, AudioBufferList* list)
{
    AUPlayerData& player = *static_cast<AUPlayerData*>(client);
    const LoadedAudio& audio = player.loadedAudio[bus]; // one bus is connected: the first
    const UInt32 begin = loadRelaxed(player.position);
    fill(audio, begin, frames, *list);

    const UInt64 behind = UInt64{begin} + frames;
    UInt32 position = static_cast<UInt32>(std::min<UInt64>(behind, player.endFrame));
    player.lastRenderOffset = begin * audio.format.mChannelsPerFrame;
    if (loadRelaxed(player.isLooping)) position = looped(player, position);
    storeRelaxed(player.position, position);
    return noErr;
}

} // namespace auplayer
