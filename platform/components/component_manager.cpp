// The Component Manager's calls. Their statuses have 16 bits: the lower half of the 32-bit ones.
#include "platform/components/calls.h"
#include "platform/components/component.h"
#include "platform/components/registered.h"

namespace components = kvxplatform::components;

namespace {

/// A failure stays one, also if nothing is left of it.
OSErr lowerHalf(OSStatus status)
{
    const auto half = static_cast<OSErr>(status & 0xFFFF);
    return status && !half ? static_cast<OSErr>(paramErr) : half;
}

ComponentDescription lookingFor(OSType type, OSType subType)
{
    return {type, subType, kAnyComponentManufacturer, 0, kAnyComponentFlagsMask};
}

} // namespace

Component FindNextComponent(Component previous, ComponentDescription* looking)
try {
    return looking ? components::findNext(previous, *looking) : nullptr;
} catch (...) { // no memory
    return nullptr;
}

long CountComponents(ComponentDescription* looking)
try {
    return looking ? static_cast<long>(components::count(*looking)) : 0;
} catch (...) {
    return 0;
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
    ComponentDescription looking = lookingFor(type, subType);
    return OpenAComponent(FindNextComponent(nullptr, &looking), instance);
}

ComponentInstance OpenDefaultComponent(OSType type, OSType subType)
{
    ComponentDescription looking = lookingFor(type, subType);
    return OpenComponent(FindNextComponent(nullptr, &looking));
}

OSErr CloseComponent(ComponentInstance instance) { return lowerHalf(components::close(instance)); }

Component RegisterComponent(ComponentDescription* description, ComponentRoutineUPP entry, SInt16, Handle,
                            Handle, Handle)
try {
    return description ? components::registerOne(*description, entry) : nullptr;
} catch (...) { // no memory
    return nullptr;
}

OSErr UnregisterComponent(Component component) { return components::unregisterOne(component); }

long CountComponentInstances(Component component) { return components::countInstances(component); }

void SetComponentRefcon(Component component, long word) { components::setRefcon(component, word); }

long GetComponentRefcon(Component component) { return components::refcon(component); }

void SetComponentInstanceStorage(ComponentInstance instance, Handle storage)
{
    components::setStorage(instance, storage);
}

Handle GetComponentInstanceStorage(ComponentInstance instance) { return components::storage(instance); }

ComponentResult CallComponentFunctionWithStorageProcInfo(Handle storage, ComponentParameters* parameters,
                                                         ProcPtr function, ProcInfoType procInfo)
{
    return parameters ? components::callFunction(storage, *parameters, function, procInfo)
                      : ComponentResult{paramErr};
}

ComponentResult DelegateComponentCall(ComponentParameters* parameters, ComponentInstance instance)
{
    return parameters ? components::send(instance, *parameters) : ComponentResult{paramErr};
}
