#include "platform/audiounit/family.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/unit_handle.h"

namespace kvxplatform::audiounit {
namespace {

OSStatus openInstance(components::Instance& instance)
{
    std::unique_ptr<Unit> unit;
    const OSStatus status = open(*static_cast<const UnitKind*>(instance.component.row), instance.self, unit);
    instance.state = unit.release();
    return status;
}

void closeInstance(components::Instance& instance) { close(*static_cast<Unit*>(instance.state)); }

} // namespace

const components::Family family = {"audio unit", openInstance, closeInstance, destroyUnit};

components::Component componentOf(const UnitKind& kind)
{
    return {{kind.type, kind.subType, kAudioUnitManufacturer_Apple, 0, 0}, &family, &kind};
}

} // namespace kvxplatform::audiounit
