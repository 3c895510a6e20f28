// The C functions of sound components. Each function sends a selector and its arguments to a component.
#include "platform/components/calls.h"
#include "platform/soundmanager/mixer.h"
#include "platform/support/border.h"

#include <type_traits>

namespace components = kvxplatform::components;
namespace soundmanager = kvxplatform::soundmanager;

namespace {

template <class T>
long word(T value)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<long>(value);
    else
        return static_cast<long>(value);
}

template <class... Words>
ComponentResult call(ComponentInstance instance, SInt16 selector, Words... words)
{
    return components::call(instance, selector, {word(words)...});
}

} // namespace

OSErr OpenMixerSoundComponent(SoundComponentDataPtr description, long flags, ComponentInstance* out)
{
    return kvxplatform::withinBorder(OSErr{memFullErr}, [&]() -> OSErr {
        if (!out) return paramErr;
        *out = nullptr;
        if (!description || flags != 0) return paramErr;
        ComponentDescription looking = soundmanager::describe(0).description;
        ComponentInstance mixer = nullptr;
        if (const OSErr status = OpenAComponent(FindNextComponent(nullptr, &looking), &mixer)) return status;
        const OSErr status = soundmanager::setOutput(mixer, *description);
        if (status)
            CloseComponent(mixer);
        else
            *out = mixer;
        return status;
    });
}

OSErr CloseMixerSoundComponent(ComponentInstance mixer) { return CloseComponent(mixer); }

ComponentResult SoundComponentInitOutputDevice(ComponentInstance instance, long actions)
{
    return call(instance, kSoundComponentInitOutputDeviceSelect, actions);
}

ComponentResult SoundComponentGetSourceData(ComponentInstance instance, SoundComponentDataPtr* data)
{
    return call(instance, kSoundComponentGetSourceDataSelect, data);
}

ComponentResult SoundComponentAddSource(ComponentInstance instance, SoundSource* source)
{
    return call(instance, kSoundComponentAddSourceSelect, source);
}

ComponentResult SoundComponentRemoveSource(ComponentInstance instance, SoundSource source)
{
    return call(instance, kSoundComponentRemoveSourceSelect, source);
}

ComponentResult SoundComponentGetInfo(ComponentInstance instance, SoundSource source, OSType selector,
                                      void* info)
{
    return call(instance, kSoundComponentGetInfoSelect, source, selector, info);
}

ComponentResult SoundComponentSetInfo(ComponentInstance instance, SoundSource source, OSType selector,
                                      void* info)
{
    return call(instance, kSoundComponentSetInfoSelect, source, selector, info);
}

ComponentResult SoundComponentStartSource(ComponentInstance instance, short count, SoundSource* sources)
{
    return call(instance, kSoundComponentStartSourceSelect, count, sources);
}

ComponentResult SoundComponentStopSource(ComponentInstance instance, short count, SoundSource* sources)
{
    return call(instance, kSoundComponentStopSourceSelect, count, sources);
}

ComponentResult SoundComponentPauseSource(ComponentInstance instance, short count, SoundSource* sources)
{
    return call(instance, kSoundComponentPauseSourceSelect, count, sources);
}

ComponentResult SoundComponentPlaySourceBuffer(ComponentInstance instance, SoundSource source,
                                               SoundParamBlockPtr block, long actions)
{
    return call(instance, kSoundComponentPlaySourceBufferSelect, source, block, actions);
}
