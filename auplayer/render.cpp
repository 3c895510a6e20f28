#include "auplayer/render.h"

#include "auplayer/au_player.h"
#include "auplayer/loop.h"
#include "plugin/shared_word.h"

#include <algorithm>
#include <cstring>

namespace auplayer {

namespace {

void silence(AudioBufferList& list)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        if (list.mBuffers[i].mData) std::memset(list.mBuffers[i].mData, 0, list.mBuffers[i].mDataByteSize);
}

/// Fill the buffers with the slice that begins at frame `position`. Byte offsets are computed in 64 bits, so
/// that they cannot wrap.
void fill(const LoadedAudio& audio, UInt32 position, UInt32 frames, AudioBufferList& list)
{
    const UInt64 bytesPerFrame = audio.format.mBytesPerFrame;
    // After a failed read frameCount is set, but samples is null.
    const bool hasFrames = audio.samples && position < audio.frameCount;
    const UInt64 left = hasFrames ? (audio.frameCount - position) * bytesPerFrame : 0;
    const UInt64 requested = list.mNumberBuffers ? list.mBuffers[0].mDataByteSize : 0;
    if (UInt64{position} + frames > audio.frameCount || requested > left) silence(list);
    if (!left || !requested || !list.mBuffers[0].mData) return;
    std::memcpy(list.mBuffers[0].mData,
                reinterpret_cast<const char*>(audio.samples) + position * bytesPerFrame,
                static_cast<std::size_t>(std::min(requested, left)));
}

} // namespace

OSStatus renderInput(void* client, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32 bus,
                     UInt32 frames, AudioBufferList* list)
{
    AUPlayerData& player = *static_cast<AUPlayerData*>(client);
    const LoadedAudio& audio = player.loadedAudio[bus]; // `bus` is always 0, because only bus 0 is connected
    const UInt32 begin = loadRelaxed(player.position);
    fill(audio, begin, frames, *list);

    const UInt64 end = UInt64{begin} + frames;
    UInt32 position = static_cast<UInt32>(std::min<UInt64>(end, player.endFrame));
    player.lastRenderOffset = begin * audio.format.mChannelsPerFrame;
    if (loadRelaxed(player.isLooping)) position = loopedPosition(player, position);
    storeRelaxed(player.position, position);
    return noErr;
}

} // namespace auplayer
