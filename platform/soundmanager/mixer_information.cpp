// What a mixer tells of itself and its sources, and what it lets itself be told.
#include "platform/soundmanager/mixer_state.h"

#include <cstring>

namespace kvxplatform::soundmanager {
namespace {

template <class T>
ComponentResult tell(void* place, T value)
{
    std::memcpy(place, &value, sizeof value);
    return noErr;
}

template <class T>
ComponentResult tellList(void* place, T value)
{
    const SoundInfoList list = {1, NewHandle(sizeof value)};
    if (!list.infoHandle) return memFullErr;
    std::memcpy(*list.infoHandle, &value, sizeof value);
    return tell(place, list);
}

} // namespace

ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* place)
{
    if (!place) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (!mixer.isSet) return badFormat;
    const Mixer::Place* const found = find(mixer, name);
    const Source* const source = found ? found->owned.get() : nullptr;
    switch (selector) {
    case siNumberChannels:
        return tell(place, mixer.wanted.numChannels);
    case siChannelAvailable:
        return tellList(place, mixer.wanted.numChannels);
    case siSampleSize:
        return tell(place, mixer.wanted.sampleSize);
    case siSampleSizeAvailable:
        return tellList(place, mixer.wanted.sampleSize);
    case siSampleRate:
        return tell(place, mixer.wanted.sampleRate);
    case siSampleRateAvailable:
        return tellList(place, mixer.wanted.sampleRate);
    case siVolume:
        return source ? tell(place, UInt32{source->volume}) : ComponentResult{badChannel};
    case siRateMultiplier:
        return source ? tell(place, UnsignedFixed{source->rateMultiplier}) : ComponentResult{badChannel};
    default:
        return siUnknownInfoType;
    }
}

ComponentResult setInfo(Mixer& mixer, SoundSource name, OSType selector, void* info)
{
    const auto value = static_cast<UInt32>(reinterpret_cast<std::uintptr_t>(info));
    if (selector != siVolume && selector != siRateMultiplier) return siUnknownInfoType;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    Mixer::Place* const place = find(mixer, name);
    if (!place) return badChannel;
    if (selector == siRateMultiplier && value == 0) return siInvalidSampleRate;
    (selector == siVolume ? place->owned->volume : place->owned->rateMultiplier) = value;
    return noErr;
}

} // namespace kvxplatform::soundmanager
