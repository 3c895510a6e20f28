// Opening and closing components.
#include "platform/components/component.h"

#include "platform/support/live_count.h"

namespace kvxplatform::components {
namespace {

LiveCount account("ComponentInstance");

// Never destroyed: a device's thread may still ask for a handle while the program ends.
Instances& table()
{
    static Instances& instances = *new Instances;
    return instances;
}

} // namespace

Instances::Use use(ComponentInstance handle) { return table().use(numberOf(handle)); }

Instance::Instance(const Component& c) : component(c)
{
    account.add();
    if (component.instances) ++*component.instances;
}

Instance::~Instance()
{
    if (state && component.family->destroy) component.family->destroy(state);
    if (component.instances) --*component.instances;
    account.remove();
}

OSStatus open(::Component handle, ComponentInstance& out)
{
    out = nullptr;
    Component component{};
    if (!find(handle, component)) return invalidComponentID;
    OSStatus status = memFullErr; // when the table is full
    try {
        const HandleNumber number =
            table().add(std::make_unique<Instance>(component), [&](Instance& instance, HandleNumber made) {
                instance.self = handleOf<ComponentInstance>(made);
                status = component.family->open ? component.family->open(instance) : noErr;
                return status == noErr;
            });
        out = handleOf<ComponentInstance>(number);
    } catch (...) {
        status = memFullErr;
    }
    return status;
}

OSStatus close(ComponentInstance handle)
{
    Instances::Use closing = table().beginClose(numberOf(handle));
    if (!closing) return badComponentInstance;
    OSStatus status = noErr;
    try {
        if (closing->component.family->close) closing->component.family->close(*closing);
    } catch (...) {
        status = memFullErr; // closed all the same
    }
    table().endClose(std::move(closing));
    return status;
}

} // namespace kvxplatform::components
