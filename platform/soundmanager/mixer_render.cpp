// The output of a mixer: the sum of the playing sources.
#include "platform/pcm/linear_pcm.h"
#include "platform/soundmanager/mixer_state.h"

#include <algorithm>

namespace kvxplatform::soundmanager {
namespace {

/// Choose the slots whose sources play in this block. All sources of a start command begin in one block.
std::array<bool, Mixer::maxSources> playingSources(Mixer& mixer)
{
    const UInt32 starts = mixer.starts;
    std::array<bool, Mixer::maxSources> isPlaying;
    for (UInt32 i = 0; i < Mixer::maxSources; ++i) {
        const Source* const source = mixer.slots[i].source.get();
        isPlaying[i] = source && source->isPlaying;
    }
    const bool isStarting = starts % 2 == 1 || mixer.starts != starts;
    for (UInt32 i = 0; i < Mixer::maxSources; ++i) {
        if (isStarting && !mixer.wasPlaying[i]) isPlaying[i] = false;
        mixer.wasPlaying[i] = isPlaying[i];
    }
    return isPlaying;
}

/// Fill the mixer's output block.
/// Returns  the length of the block in frames.
UInt32 renderBlock(Mixer& mixer)
{
    const UInt32 channels = mixer.format.mChannelsPerFrame;
    const auto blockFrames = static_cast<UInt32>(mixer.outputDescription.sampleCount);
    const auto isPlaying = playingSources(mixer);
    UInt32 longest = 0;
    std::fill(mixer.sum.begin(), mixer.sum.end(), 0.0f);
    for (UInt32 slot = 0; slot < Mixer::maxSources; ++slot) {
        Source* const source = isPlaying[slot] ? mixer.slots[slot].source.get() : nullptr;
        if (!source) continue; // the source is not playing, or a completion routine has removed it
        const UInt32 frames = source->render(mixer.sourceOutput.data(), blockFrames);
        for (std::size_t i = 0; i < std::size_t{frames} * channels; ++i)
            mixer.sum[i] += mixer.sourceOutput[i];
        longest = std::max(longest, frames);
    }
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {channels, longest * mixer.format.mBytesPerFrame, mixer.block.data()};
    pcm::encode(mixer.format, mixer.sum.data(), longest, list, 0);
    return longest;
}

} // namespace

ComponentResult getSourceData(Mixer& mixer, SoundComponentDataPtr* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    if (!mixer.isSet) return badFormat;
    const RenderScope::Entry entry(mixer.scope);
    if (!entry) return channelBusy;
    if (mixer.isClosed) return badComponentInstance;
    const UInt32 frames = renderBlock(mixer);
    if (mixer.isClosed) return badComponentInstance; // a completion routine has closed the mixer
    mixer.result = mixer.outputDescription;
    mixer.result.sampleCount = static_cast<long>(frames);
    mixer.result.buffer = mixer.block.data();
    *out = &mixer.result;
    return noErr;
}

} // namespace kvxplatform::soundmanager
