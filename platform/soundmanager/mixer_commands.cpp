// The commands that clients send to a mixer.
#include "platform/soundmanager/mixer_state.h"
#include "platform/soundmanager/sound_format.h"

#include <algorithm>

namespace kvxplatform::soundmanager {
namespace {

constexpr long defaultBlockFrames = 1024, maxBlockFrames = 65536;

/// Replace the source of a slot; a null `next` only removes the source. The caller holds the mixer's lock.
void replace(Mixer& mixer, Mixer::Slot& slot, std::unique_ptr<Source> next)
{
    if (Source* const former = slot.source.publish(std::move(next), mixer.scope)) former->end();
}

/// Wait for the fetch in progress. Inside a render call the function returns at once, because two completion
/// routines that waited for each other's mixer would deadlock.
void waitForFetch(const Mixer& mixer)
{
    if (!RenderScope::isInsideAny()) mixer.scope.wait();
}

/// Wait for the fetch in progress, then free the replaced sources. The caller must not hold the mixer's lock.
void settle(Mixer& mixer)
{
    waitForFetch(mixer);
    const std::lock_guard<std::mutex> guard(mixer.lock);
    for (Mixer::Slot& slot : mixer.slots) slot.source.sweep(mixer.scope);
}

/// Call `function` with the slot of each source in `names`. Unknown names are ignored. The caller holds the
/// mixer's lock.
template <class Function>
void forEach(Mixer& mixer, short count, const SoundSource* names, Function function)
{
    for (short i = 0; i < count; ++i)
        if (Mixer::Slot* const slot = find(mixer, names[i])) function(*slot);
}

bool isList(short count, const SoundSource* names) { return count >= 0 && (count == 0 || names); }

void pause(Mixer::Slot& slot) { slot.source.get()->isPlaying = false; }

} // namespace

Mixer::Slot* find(Mixer& mixer, SoundSource source)
{
    const auto name = reinterpret_cast<std::uintptr_t>(source);
    Mixer::Slot& slot = mixer.slots[name % Mixer::maxSources];
    return slot.source.get() && slot.name == name ? &slot : nullptr;
}

OSErr setOutput(Mixer& mixer, const SoundComponentData& description)
{
    const std::lock_guard<std::mutex> guard(mixer.lock);
    AudioStreamBasicDescription format{};
    if (const OSErr refusal = linearPCM(description, format)) return refusal;
    const long frames = description.sampleCount <= 0
                            ? defaultBlockFrames
                            : std::min(long{description.sampleCount}, maxBlockFrames);
    const std::size_t samples = static_cast<std::size_t>(frames) * format.mChannelsPerFrame;
    mixer.sum.assign(samples, 0);
    mixer.sourceOutput.assign(samples, 0);
    mixer.block.assign(static_cast<std::size_t>(frames) * format.mBytesPerFrame, 0);
    mixer.format = format;
    mixer.outputDescription = description;
    mixer.outputDescription.sampleCount = frames;
    mixer.isSet = true;
    return noErr;
}

void close(Mixer& mixer)
{
    mixer.isClosed = true;
    waitForFetch(mixer);
}

ComponentResult addSource(Mixer& mixer, SoundSource* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (!mixer.isSet) return badFormat;
    const auto slot = std::find_if(mixer.slots.begin(), mixer.slots.end(),
                                   [](const Mixer::Slot& each) { return !each.source.get(); });
    if (slot == mixer.slots.end()) return notEnoughHardwareErr;
    const MixFormat format = {mixer.format.mSampleRate, mixer.format.mChannelsPerFrame};
    slot->source.publish(std::make_unique<Source>(format), mixer.scope);
    constexpr UInt32 maxSerial = 0xFFFFFFFF / Mixer::maxSources;
    mixer.serial = mixer.serial % maxSerial + 1;
    slot->name = mixer.serial * Mixer::maxSources + static_cast<UInt32>(slot - mixer.slots.begin());
    *out = reinterpret_cast<SoundSource>(std::uintptr_t{slot->name});
    return noErr;
}

ComponentResult removeSource(Mixer& mixer, SoundSource name)
{
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        Mixer::Slot* const slot = find(mixer, name);
        if (!slot) return badChannel;
        replace(mixer, *slot, nullptr);
    }
    settle(mixer);
    return noErr;
}

ComponentResult startSources(Mixer& mixer, short count, SoundSource* names)
{
    if (!isList(count, names)) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    ++mixer.starts;
    forEach(mixer, count, names, [](Mixer::Slot& slot) { slot.source.get()->isPlaying = true; });
    ++mixer.starts;
    return noErr;
}

ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names)
{
    if (!isList(count, names)) return paramErr;
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        forEach(mixer, count, names, pause);
        forEach(mixer, count, names, [&mixer](Mixer::Slot& slot) {
            const Source& source = *slot.source.get();
            if (source.hasBuffers()) replace(mixer, slot, source.withoutBuffers());
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
        forEach(mixer, count, names, pause);
    }
    settle(mixer);
    return noErr;
}

ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions)
{
    if (!block) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    Mixer::Slot* const slot = find(mixer, name);
    if (!slot) return badChannel;
    Source& source = *slot->source.get();
    if (const OSErr refusal = source.queue(block)) return refusal;
    if (!(actions & kSourcePaused)) source.isPlaying = true;
    return noErr;
}

} // namespace kvxplatform::soundmanager
