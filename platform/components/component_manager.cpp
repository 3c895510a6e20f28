// The C functions of components. Some return a 16-bit status, which is the lower half of the 32-bit status.
#include "platform/components/calls.h"
#include "platform/components/instances.h"
#include "platform/components/registered.h"
#include "platform/components/registry.h"
#include "platform/support/border.h"

namespace components = kvxplatform::components;
using kvxplatform::withinBorder;

namespace {

/// Returns  the lower 16 bits of a status; paramErr for a failure whose lower 16 bits are 0.
OSErr lowerHalf(OSStatus status)
{
    const auto half = static_cast<OSErr>(status & 0xFFFF);
    return status && !half ? OSErr{paramErr} : half;
}

Component findDefault(OSType type, OSType subType)
{
    ComponentDescription pattern = {type, subType, kAnyComponentManufacturer, 0, kAnyComponentFlagsMask};
    return FindNextComponent(nullptr, &pattern);
}

} // namespace

Component FindNextComponent(Component previous, ComponentDescription* looking)
{
    return withinBorder(nullptr,
                        [&] { return looking ? components::findNext(previous, *looking) : nullptr; });
}

OSErr OpenAComponent(Component component, ComponentInstance* instance)
{
    return instance ? lowerHalf(components::open(component, *instance)) : OSErr{paramErr};
}

ComponentInstance OpenComponent(Component component)
{
    ComponentInstance instance = nullptr;
    components::open(component, instance);
    return instance;
}

OSErr OpenADefaultComponent(OSType type, OSType subType, ComponentInstance* instance)
{
    return OpenAComponent(findDefault(type, subType), instance);
}

ComponentInstance OpenDefaultComponent(OSType type, OSType subType)
{
    return OpenComponent(findDefault(type, subType));
}

OSErr CloseComponent(ComponentInstance instance) { return lowerHalf(components::close(instance)); }

Component RegisterComponent(ComponentDescription* description, ComponentRoutineUPP entry, SInt16, Handle,
                            Handle, Handle)
{
    return withinBorder(nullptr,
                        [&] { return description ? components::registerOne(*description, entry) : nullptr; });
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
