#include "platform/components/instances.h"

#include "platform/support/border.h"
#include "platform/support/live_count.h"

namespace kvxplatform::components {
namespace {

LiveCount liveInstances("ComponentInstance");

// The table is never destroyed, because a device's thread may still look up a handle while the program exits.
Instances& table()
{
    static Instances& instances = *new Instances;
    return instances;
}

} // namespace

Instances::Use use(ComponentInstance handle) { return table().use(numberOf(handle)); }

Instance::Instance(const Component& c) : component(c)
{
    liveInstances.add();
    if (component.instances) ++*component.instances;
}

Instance::~Instance()
{
    if (state && component.family->destroy) component.family->destroy(state);
    if (component.instances) --*component.instances;
    liveInstances.remove();
}

OSStatus makeInstance(const Component& component, ComponentInstance& out)
{
    out = nullptr;
    return withinBorder(memFullErr, [&]() -> OSStatus {
        OSStatus status = memFullErr; // the status if the table of instances is full
        const HandleNumber number =
            table().add(std::make_unique<Instance>(component), [&](Instance& instance, HandleNumber made) {
                instance.self = handleOf<ComponentInstance>(made);
                status = component.family->open ? component.family->open(instance) : noErr;
                return status == noErr;
            });
        out = handleOf<ComponentInstance>(number);
        return status;
    });
}

OSStatus close(ComponentInstance handle)
{
    Instances::Use closing = table().beginClose(numberOf(handle));
    if (!closing) return badComponentInstance;
    // The instance becomes closed even if the component family's close function throws.
    const OSStatus status = withinBorder(memFullErr, [&]() -> OSStatus {
        if (closing->component.family->close) closing->component.family->close(*closing);
        return noErr;
    });
    table().endClose(std::move(closing));
    return status;
}

} // namespace kvxplatform::components
