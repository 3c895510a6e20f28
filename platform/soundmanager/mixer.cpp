#include "platform/soundmanager/mixer.h"

#include "platform/audiounit/linear_pcm.h"
#include "platform/components/calls.h"
#include "platform/soundmanager/sound_format.h"
#include "platform/soundmanager/source.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>

#include <pthread.h>

namespace kvxplatform::soundmanager {
namespace {

constexpr UInt32 mostSources = 64;
constexpr long defaultBlockFrames = 1024, largestBlockFrames = 65536;

/// The state of one mixer.
///
/// `lock` is held by clients only, and never while waiting for the audio thread: a completion may come back
/// in through here.
struct Mixer {
    std::mutex lock;
    SoundComponentData wanted{};
    AudioStreamBasicDescription format{};
    bool isSet = false; // for good

    std::atomic<Source*> sources[mostSources] = {};
    std::vector<std::unique_ptr<Source>> owned; // under lock
    std::atomic<std::uintptr_t> renderThread{0};

    // [audio]
    std::vector<Float32> sum, one;
    std::vector<Byte> block;
    SoundComponentData given{};
};

Mixer& mixerOf(components::Instance& instance) { return *static_cast<Mixer*>(instance.state); }

std::uintptr_t thisThread() { return static_cast<std::uintptr_t>(pthread_self()); }

/// Wait until the audio thread has left the slice it may be in; at once on that thread itself.
void waitForSlice(const Mixer& mixer)
{
    if (mixer.renderThread == thisThread()) return;
    for (int turn = 0; mixer.renderThread != 0; ++turn) {
        if (turn < 100)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

// A source is named by its place, counted from 1.

Source* find(const Mixer& mixer, SoundSource name)
{
    const auto place = reinterpret_cast<std::uintptr_t>(name);
    return place >= 1 && place <= mostSources ? mixer.sources[place - 1].load() : nullptr;
}

ComponentResult addSource(Mixer& mixer, SoundSource* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (!mixer.isSet) return badFormat;
    const auto place = std::find(std::begin(mixer.sources), std::end(mixer.sources), nullptr);
    if (place == std::end(mixer.sources)) return notEnoughHardwareErr;
    mixer.owned.push_back(
        std::make_unique<Source>(MixerForm{mixer.format.mSampleRate, mixer.format.mChannelsPerFrame}));
    *place = mixer.owned.back().get();
    *out = reinterpret_cast<SoundSource>(static_cast<std::uintptr_t>(place - mixer.sources + 1));
    return noErr;
}

ComponentResult removeSource(Mixer& mixer, SoundSource name)
{
    std::unique_ptr<Source> gone;
    {
        const std::lock_guard<std::mutex> guard(mixer.lock);
        Source* const source = find(mixer, name);
        if (!source) return badChannel;
        if (mixer.renderThread == thisThread()) return badChannel; // in its own slice: remove it afterwards
        mixer.sources[reinterpret_cast<std::uintptr_t>(name) - 1] = nullptr;
        const auto owner = std::find_if(mixer.owned.begin(), mixer.owned.end(),
                                        [source](const auto& each) { return each.get() == source; });
        gone = std::move(*owner);
        mixer.owned.erase(owner);
    }
    waitForSlice(mixer);
    return noErr;
}

/// Do something to each of the sources named. Names that are none are left out.
template <class Function>
ComponentResult forEach(Mixer& mixer, short count, const SoundSource* names, Function function)
{
    if (count < 0 || (count > 0 && !names)) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    for (short i = 0; i < count; ++i)
        if (Source* const source = find(mixer, names[i])) function(*source);
    return noErr;
}

ComponentResult startSources(Mixer& mixer, short count, SoundSource* names)
{
    return forEach(mixer, count, names, [](Source& source) { source.isPlaying = true; });
}

ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names)
{
    const ComponentResult status = forEach(mixer, count, names, [](Source& source) {
        source.isPlaying = false;
        source.throwAway();
    });
    waitForSlice(mixer);
    return status;
}

ComponentResult pauseSources(Mixer& mixer, short count, SoundSource* names)
{
    const ComponentResult status =
        forEach(mixer, count, names, [](Source& source) { source.isPlaying = false; });
    waitForSlice(mixer);
    return status;
}

ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions)
{
    if (!block) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    Source* const source = find(mixer, name);
    if (!source) return badChannel;
    if (const OSErr refusal = source->give(block)) return refusal;
    if (!(actions & kSourcePaused)) source->isPlaying = true;
    return noErr;
}

/// The sum of what plays. [audio]
ComponentResult getSourceData(Mixer& mixer, SoundComponentDataPtr* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    std::uintptr_t nobody = 0;
    if (!mixer.renderThread.compare_exchange_strong(nobody, thisThread())) return channelBusy;
    ComponentResult status = badFormat;
    if (mixer.isSet) {
        const UInt32 channels = mixer.format.mChannelsPerFrame;
        const auto frames = static_cast<UInt32>(mixer.wanted.sampleCount);
        UInt32 longest = 0;
        std::fill(mixer.sum.begin(), mixer.sum.end(), 0.0f);
        for (const auto& each : mixer.sources) {
            Source* const source = each;
            if (!source || !source->isPlaying) continue;
            const UInt32 made = source->render(mixer.one.data(), frames);
            for (std::size_t i = 0; i < std::size_t{made} * channels; ++i) mixer.sum[i] += mixer.one[i];
            longest = std::max(longest, made);
        }
        AudioBufferList list;
        list.mNumberBuffers = 1;
        list.mBuffers[0] = {channels, longest * mixer.format.mBytesPerFrame, mixer.block.data()};
        audiounit::encode(mixer.format, mixer.sum.data(), longest, list, 0);
        mixer.given = mixer.wanted;
        mixer.given.sampleCount = static_cast<long>(longest);
        mixer.given.buffer = mixer.block.data();
        *out = &mixer.given;
        status = noErr;
    }
    mixer.renderThread = 0;
    return status;
}

// ---- information ----

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

ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* place)
{
    if (!place) return paramErr;
    const std::lock_guard<std::mutex> guard(mixer.lock);
    const Source* const source = find(mixer, name);
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
    Source* const source = find(mixer, name);
    if (!source) return badChannel;
    if (selector == siVolume) {
        source->volume = value;
    } else {
        if (value == 0) return siInvalidSampleRate;
        source->rateMultiplier = value;
    }
    return noErr;
}

// ---- calls by selector ----

template <class T>
T argument(long word)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(word);
    else
        return static_cast<T>(word);
}

/// A function as a call with words reaches it.
template <auto function>
struct Call;
template <class... Arguments, ComponentResult (*function)(Mixer&, Arguments...)>
struct Call<function> {
    static constexpr std::size_t words = sizeof...(Arguments);
    static ComponentResult with(Mixer& mixer, const long* word)
    {
        return apply(mixer, word, std::index_sequence_for<Arguments...>());
    }
    template <std::size_t... index>
    static ComponentResult apply(Mixer& mixer, const long* word, std::index_sequence<index...>)
    {
        return function(mixer, argument<Arguments>(word[index])...);
    }
};

struct Selector {
    SInt16 what;
    std::size_t words;
    ComponentResult (*call)(Mixer&, const long*);
};

template <auto function>
constexpr Selector row(SInt16 what)
{
    return {what, Call<function>::words, Call<function>::with};
}

const Selector selectors[] = {
    row<getSourceData>(kSoundComponentGetSourceDataSelect),
    row<addSource>(kSoundComponentAddSourceSelect),
    row<removeSource>(kSoundComponentRemoveSourceSelect),
    row<getInfo>(kSoundComponentGetInfoSelect),
    row<setInfo>(kSoundComponentSetInfoSelect),
    row<startSources>(kSoundComponentStartSourceSelect),
    row<stopSources>(kSoundComponentStopSourceSelect),
    row<pauseSources>(kSoundComponentPauseSourceSelect),
    row<playBuffer>(kSoundComponentPlaySourceBufferSelect),
};

ComponentResult dispatch(components::Instance& instance, ComponentParameters& parameters)
try {
    for (const Selector& selector : selectors) {
        if (selector.what != parameters.what) continue;
        long words[4] = {};
        static_assert(sizeof words / sizeof *words >= Call<getInfo>::words);
        if (parameters.paramSize < selector.words * sizeof(long)) return paramErr;
        std::memcpy(words, reinterpret_cast<const char*>(&parameters) + offsetof(ComponentParameters, params),
                    selector.words * sizeof(long));
        return selector.call(mixerOf(instance), words);
    }
    return badComponentSelector;
} catch (...) {
    return memFullErr;
}

OSStatus openMixer(components::Instance& instance)
{
    instance.state = new Mixer;
    return noErr;
}

void closeMixer(components::Instance& instance) { waitForSlice(mixerOf(instance)); }

void destroyMixer(void* state) { delete static_cast<Mixer*>(state); }

} // namespace

const components::Family mixerFamily = {"sound mixer", openMixer, closeMixer, destroyMixer, dispatch};

std::size_t componentCount() { return 1; }

components::Component describe(std::size_t)
{
    return {{kSoundComponentType, kMixerType, kAppleManufacturer, 0, 0}, &mixerFamily, nullptr, nullptr};
}

OSErr setOutput(ComponentInstance handle, const SoundComponentData& description)
{
    const components::Instances::Use instance = components::use(handle);
    if (!instance || instance->component.family != &mixerFamily) return paramErr;
    Mixer& mixer = mixerOf(*instance);
    const std::lock_guard<std::mutex> guard(mixer.lock);
    if (const OSErr refusal = linearPCM(description, mixer.format)) return refusal;
    mixer.wanted = description;
    if (mixer.wanted.sampleCount <= 0) mixer.wanted.sampleCount = defaultBlockFrames;
    mixer.wanted.sampleCount = std::min(mixer.wanted.sampleCount, largestBlockFrames);
    const std::size_t samples =
        static_cast<std::size_t>(mixer.wanted.sampleCount) * mixer.format.mChannelsPerFrame;
    mixer.sum.assign(samples, 0);
    mixer.one.assign(samples, 0);
    mixer.block.assign(static_cast<std::size_t>(mixer.wanted.sampleCount) * mixer.format.mBytesPerFrame, 0);
    mixer.isSet = true;
    return noErr;
}

} // namespace kvxplatform::soundmanager
