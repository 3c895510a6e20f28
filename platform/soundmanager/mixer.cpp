#include "platform/soundmanager/mixer.h"

#include "platform/components/instances.h"
#include "platform/soundmanager/mixer_state.h"
#include "platform/support/border.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

namespace kvxplatform::soundmanager {
namespace {

Mixer& mixerOf(components::Instance& instance) { return *static_cast<Mixer*>(instance.state); }

template <class T>
T argument(long word)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(word);
    else
        return static_cast<T>(word);
}

/// Calls a mixer function with the machine words of a component call as its arguments.
template <auto function>
struct Call;
template <class... Arguments, ComponentResult (*function)(Mixer&, Arguments...)>
struct Call<function> {
    static constexpr std::size_t wordCount = sizeof...(Arguments);
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
    std::size_t wordCount;
    ComponentResult (*call)(Mixer&, const long*);
};

template <auto function>
constexpr Selector row(SInt16 what)
{
    return {what, Call<function>::wordCount, Call<function>::with};
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
{
    return withinBorder(ComponentResult{memFullErr}, [&]() -> ComponentResult {
        for (const Selector& selector : selectors) {
            if (selector.what != parameters.what) continue;
            long words[4] = {};
            static_assert(std::size(words) >= Call<getInfo>::wordCount);
            if (parameters.paramSize < selector.wordCount * sizeof(long)) return paramErr;
            std::memcpy(words,
                        reinterpret_cast<const char*>(&parameters) + offsetof(ComponentParameters, params),
                        selector.wordCount * sizeof(long));
            return selector.call(mixerOf(instance), words);
        }
        return badComponentSelector;
    });
}

OSStatus openMixer(components::Instance& instance)
{
    instance.state = new Mixer;
    return noErr;
}

void closeMixer(components::Instance& instance) { close(mixerOf(instance)); }

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
    return setOutput(mixerOf(*instance), description);
}

} // namespace kvxplatform::soundmanager
