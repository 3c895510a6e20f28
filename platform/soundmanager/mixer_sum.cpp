// The sum of what plays.
#include "platform/pcm/linear_pcm.h"
#include "platform/soundmanager/mixer_state.h"

#include <algorithm>

namespace kvxplatform::soundmanager {
namespace {

/// Which sources play in this slice. Those that a client is just starting begin together, with the next one.
std::array<bool, Mixer::mostSources> whoPlays(Mixer& mixer)
{
    const UInt32 starts = mixer.starts;
    std::array<bool, Mixer::mostSources> plays;
    for (UInt32 i = 0; i < Mixer::mostSources; ++i) {
        const Source* const source = mixer.places[i].heard;
        plays[i] = source && source->isPlaying;
    }
    const bool isStarting = starts % 2 == 1 || mixer.starts != starts;
    for (UInt32 i = 0; i < Mixer::mostSources; ++i) {
        if (isStarting && !mixer.played[i]) plays[i] = false;
        mixer.played[i] = plays[i];
    }
    return plays;
}

/// Fill the block; how many frames of it.
UInt32 makeBlock(Mixer& mixer)
{
    const UInt32 channels = mixer.format.mChannelsPerFrame;
    const auto frames = static_cast<UInt32>(mixer.wanted.sampleCount);
    const auto plays = whoPlays(mixer);
    UInt32 longest = 0;
    std::fill(mixer.sum.begin(), mixer.sum.end(), 0.0f);
    for (UInt32 place = 0; place < Mixer::mostSources; ++place) {
        Source* const source = plays[place] ? mixer.places[place].heard.load() : nullptr;
        if (!source) continue; // or it was removed since
        const UInt32 made = source->render(mixer.one.data(), frames);
        for (std::size_t i = 0; i < std::size_t{made} * channels; ++i) mixer.sum[i] += mixer.one[i];
        longest = std::max(longest, made);
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
    const Slices::Turn turn(mixer.slices);
    if (!turn) return channelBusy;
    if (mixer.isClosed) return badComponentInstance;
    const UInt32 frames = makeBlock(mixer);
    if (mixer.isClosed) return badComponentInstance; // by a completion: the block goes with the mixer
    mixer.given = mixer.wanted;
    mixer.given.sampleCount = static_cast<long>(frames);
    mixer.given.buffer = mixer.block.data();
    *out = &mixer.given;
    return noErr;
}

} // namespace kvxplatform::soundmanager
