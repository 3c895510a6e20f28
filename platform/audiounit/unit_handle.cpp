#include "platform/audiounit/unit_handle.h"

namespace kvxplatform::audiounit {

UnitUse use(AudioUnit handle)
{
    components::Instances::Use instance = components::use(handle);
    OSStatus status = noErr;
    if (!instance)
        status = badComponentInstance;
    else if (instance->component.family->destroy != destroyUnit || !instance->state)
        status = badComponentSelector;
    return {std::move(instance), status};
}

void destroyUnit(void* unit) { delete static_cast<Unit*>(unit); }

} // namespace kvxplatform::audiounit
