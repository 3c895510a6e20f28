// The public calls: each a selector and its words, for whatever component it is sent to.
#include "platform/components/calls.h"
#include "platform/soundmanager/mixer.h"

namespace components = kvxplatform::components;
namespace soundmanager = kvxplatform::soundmanager;

namespace {

template <class T>
long word(T value)
{
    return (long)value; // a pointer, or a number that may be wider on paper than it is
}

template <class... Words>
ComponentResult call(ComponentInstance instance, SInt16 selector, Words... words)
{
    return components::call(instance, selector, {word(words)...});
}

} // namespace

OSErr OpenMixerSoundComponent(SoundComponentDataPtr description, long flags, ComponentInstance* out)
try {
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
} catch (...) {
    return memFullErr;
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
