// The GetInfo and SetInfo calls, which read and set properties of a mixer and of its sources.
#include "platform/soundmanager/mixer_state.h"

#include <cstring>

namespace kvxplatform::soundmanager {
namespace {

template <class T>
ComponentResult write(void* out, T value)
{
    std::memcpy(out, &value, sizeof value);
    return noErr;
}

template <class T>
ComponentResult writeList(void* out, T value)
{
    const SoundInfoList list = {1, NewHandle(sizeof value)};
    if (!list.infoHandle) return memFullErr;
    std::memcpy(*list.infoHandle, &value, sizeof value);
    return write(out, list);
}

} // namespace

ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* value)
{
    if (!value) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (!mixer.isSet) return badFormat;
    const Mixer::Slot* const slot = find(mixer, name);
    const Source* const source = slot ? slot->source.get() : nullptr;
    const SoundComponentData& output = mixer.outputDescription;
    switch (selector) {
    case siNumberChannels:
        return write(value, output.numChannels);
    case siChannelAvailable:
        return writeList(value, output.numChannels);
    case siSampleSize:
        return write(value, output.sampleSize);
    case siSampleSizeAvailable:
        return writeList(value, output.sampleSize);
    case siSampleRate:
        return write(value, output.sampleRate);
    case siSampleRateAvailable:
        return writeList(value, output.sampleRate);
    case siVolume:
        return source ? write(value, UInt32{source->volume}) : ComponentResult{badChannel};
    case siRateMultiplier:
        return source ? write(value, UnsignedFixed{source->rateMultiplier}) : ComponentResult{badChannel};
    default:
        return siUnknownInfoType;
    }
}

ComponentResult setInfo(Mixer& mixer, SoundSource name, OSType selector, void* word)
{
    const auto value = static_cast<UInt32>(reinterpret_cast<std::uintptr_t>(word));
    if (selector != siVolume && selector != siRateMultiplier) return siUnknownInfoType;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    Mixer::Slot* const slot = find(mixer, name);
    if (!slot) return badChannel;
    if (selector == siRateMultiplier && value == 0) return siInvalidSampleRate;
    Source& source = *slot->source.get();
    (selector == siVolume ? source.volume : source.rateMultiplier) = value;
    return noErr;
}

} // namespace kvxplatform::soundmanager
