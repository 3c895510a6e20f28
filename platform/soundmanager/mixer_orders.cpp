// What clients order of a mixer's sources.
#include "platform/soundmanager/mixer_state.h"
#include "platform/soundmanager/sound_format.h"

#include <algorithm>

namespace kvxplatform::soundmanager {
namespace {

constexpr long defaultBlockFrames = 1024, largestBlockFrames = 65536;

/// Put another source, or none, in a place. Under lock.
void replace(Mixer& mixer, Mixer::Place& place, std::unique_ptr<Source> next)
{
    mixer.retired.reserve(mixer.retired.size() + 1); // from here on nothing fails
    place.owned->end();
    place.heard = next.get();
    mixer.retired.push_back({std::move(place.owned), mixer.slices.current()});
    place.owned = std::move(next);
}

/// Wait for the slice under way, and free what no slice uses any more. Without the lock.
void settle(Mixer& mixer)
{
    mixer.slices.wait();
    const std::lock_guard<std::mutex> guard(mixer.lock);
    const auto kept = std::remove_if(mixer.retired.begin(), mixer.retired.end(),
                                     [&mixer](const auto& each) { return mixer.slices.isOver(each.slice); });
    mixer.retired.erase(kept, mixer.retired.end());
}

/// Do something to each of the sources named. Names that are none are left out. Under lock.
template <class Function>
void forEach(Mixer& mixer, short count, const SoundSource* names, Function function)
{
    for (short i = 0; i < count; ++i)
        if (Mixer::Place* const place = find(mixer, names[i])) function(*place);
}

bool isList(short count, const SoundSource* names) { return count >= 0 && (count == 0 || names); }

} // namespace

// A name is its place, and above that its serial number.

Mixer::Place* find(Mixer& mixer, SoundSource source)
{
    const auto name = reinterpret_cast<std::uintptr_t>(source);
    Mixer::Place& place = mixer.places[name % Mixer::mostSources];
    return place.owned && place.name == name ? &place : nullptr;
}

OSErr setOutput(Mixer& mixer, const SoundComponentData& description)
{
    const std::lock_guard<std::mutex> guard(mixer.lock);
    AudioStreamBasicDescription format{};
    if (const OSErr refusal = linearPCM(description, format)) return refusal;
    const long frames = description.sampleCount <= 0
                            ? defaultBlockFrames
                            : std::min(long{description.sampleCount}, largestBlockFrames);
    const std::size_t samples = static_cast<std::size_t>(frames) * format.mChannelsPerFrame;
    mixer.sum.assign(samples, 0);
    mixer.one.assign(samples, 0);
    mixer.block.assign(static_cast<std::size_t>(frames) * format.mBytesPerFrame, 0);
    mixer.format = format;
    mixer.wanted = description;
    mixer.wanted.sampleCount = frames;
    mixer.isSet = true;
    return noErr;
}

void close(Mixer& mixer)
{
    mixer.isClosed = true;
    mixer.slices.wait();
}

ComponentResult addSource(Mixer& mixer, SoundSource* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (!mixer.isSet) return badFormat;
    const auto place = std::find_if(mixer.places.begin(), mixer.places.end(),
                                    [](const Mixer::Place& each) { return !each.owned; });
    if (place == mixer.places.end()) return notEnoughHardwareErr;
    place->owned =
        std::make_unique<Source>(MixerForm{mixer.format.mSampleRate, mixer.format.mChannelsPerFrame});
    place->heard = place->owned.get();
    constexpr UInt32 serials = 0xFFFFFFFF / Mixer::mostSources;
    mixer.serial = mixer.serial % serials + 1;
    place->name = mixer.serial * Mixer::mostSources + static_cast<UInt32>(place - mixer.places.begin());
    *out = reinterpret_cast<SoundSource>(std::uintptr_t{place->name});
    return noErr;
}

ComponentResult removeSource(Mixer& mixer, SoundSource name)
{
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        Mixer::Place* const place = find(mixer, name);
        if (!place) return badChannel;
        replace(mixer, *place, nullptr);
    }
    settle(mixer);
    return noErr;
}

ComponentResult startSources(Mixer& mixer, short count, SoundSource* names)
{
    if (!isList(count, names)) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    ++mixer.starts;
    forEach(mixer, count, names, [](Mixer::Place& place) { place.owned->isPlaying = true; });
    ++mixer.starts;
    return noErr;
}

ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names)
{
    if (!isList(count, names)) return paramErr;
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        forEach(mixer, count, names, [](Mixer::Place& place) { place.owned->isPlaying = false; });
        forEach(mixer, count, names, [&mixer](Mixer::Place& place) {
            if (place.owned->hasBuffers()) replace(mixer, place, place.owned->withoutBuffers());
        });
    }
    settle(mixer);
    return noErr;
}

ComponentResult pauseSources(Mixer& mixer, short count, SoundSource* names)
{
    if (!isList(count, names)) return paramErr;
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        forEach(mixer, count, names, [](Mixer::Place& place) { place.owned->isPlaying = false; });
    }
    settle(mixer);
    return noErr;
}

ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions)
{
    if (!block) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    Mixer::Place* const place = find(mixer, name);
    if (!place) return badChannel;
    if (const OSErr refusal = place->owned->give(block)) return refusal;
    if (!(actions & kSourcePaused)) place->owned->isPlaying = true;
    return noErr;
}

} // namespace kvxplatform::soundmanager
