// The Component Manager's calls. Their statuses have 16 bits: the lower half of the 32-bit ones.
#include "platform/components/component.h"

namespace components = kvxplatform::components;

namespace {

OSErr lowerHalf(OSStatus status) { return static_cast<OSErr>(status & 0xFFFF); }

ComponentDescription lookingFor(OSType type, OSType subType)
{
    return {type, subType, kAnyComponentManufacturer, 0, kAnyComponentFlagsMask};
}

} // namespace

Component FindNextComponent(Component previous, ComponentDescription* looking)
{
    return looking ? components::findNext(previous, *looking) : nullptr;
}

long CountComponents(ComponentDescription* looking)
{
    return looking ? static_cast<long>(components::count(*looking)) : 0;
}

OSErr OpenAComponent(Component component, ComponentInstance* instance)
{
    return instance ? lowerHalf(components::open(component, *instance)) : static_cast<OSErr>(paramErr);
}

ComponentInstance OpenComponent(Component component)
{
    ComponentInstance instance = nullptr;
    components::open(component, instance);
    return instance;
}

OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* instance)
{
    return OpenAComponent(components::findNext(nullptr, lookingFor(type, subType)), instance);
}

ComponentInstance OpenDefaultComponent(OSType type, OSType subType)
{
    return OpenComponent(components::findNext(nullptr, lookingFor(type, subType)));
}

OSErr CloseComponent(ComponentInstance instance) { return lowerHalf(components::close(instance)); }
