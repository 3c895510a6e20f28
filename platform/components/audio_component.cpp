// The same components by their newer names, with 32-bit statuses.
#include "platform/components/component.h"

namespace components = kvxplatform::components;

namespace {

ComponentDescription descriptionOf(const AudioComponentDescription& looking)
{
    return {looking.componentType, looking.componentSubType, looking.componentManufacturer,
            looking.componentFlags, looking.componentFlagsMask};
}

} // namespace

AudioComponent AudioComponentFindNext(AudioComponent previous, const AudioComponentDescription* looking)
{
    if (!looking) return nullptr;
    ComponentDescription description = descriptionOf(*looking);
    return reinterpret_cast<AudioComponent>(
        FindNextComponent(reinterpret_cast<Component>(previous), &description));
}

UInt32 AudioComponentCount(const AudioComponentDescription* looking)
{
    if (!looking) return 0;
    ComponentDescription description = descriptionOf(*looking);
    return static_cast<UInt32>(CountComponents(&description));
}

OSStatus AudioComponentInstanceNew(AudioComponent component, AudioComponentInstance* instance)
{
    return instance ? components::open(reinterpret_cast<Component>(component), *instance) : paramErr;
}

OSStatus AudioComponentInstanceDispose(AudioComponentInstance instance)
{
    return components::close(instance);
}
