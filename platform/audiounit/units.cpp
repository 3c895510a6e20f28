#include "platform/audiounit/units.h"

#include "platform/audiounit/converter/converter_unit.h"
#include "platform/audiounit/equaliser/equaliser_unit.h"
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/mixer/mixer_unit.h"
#include "platform/audiounit/output/output_units.h"
#include "platform/audiounit/rate/rate_units.h"

#include <iterator>

namespace kvxplatform::audiounit {
namespace {

// The table of units, in the order in which a search finds them.
const UnitKind* const units[] = {
    &halOutput,         &defaultOutput,    &systemOutput, &genericOutput, &converter,
    &multichannelMixer, &graphicEqualiser, &newTimePitch, &timePitch,     &varispeed,
};

OSStatus openInstance(components::Instance& instance)
{
    std::unique_ptr<Unit> unit;
    const OSStatus status = open(*static_cast<const UnitKind*>(instance.component.row), instance.self, unit);
    instance.state = unit.release();
    return status;
}

void closeInstance(components::Instance& instance) { close(*static_cast<Unit*>(instance.state)); }

void destroyUnit(void* unit) { delete static_cast<Unit*>(unit); }

} // namespace

const components::Family family = {"audio unit", openInstance, closeInstance, destroyUnit};

std::size_t unitCount() { return std::size(units); }

components::Component describe(std::size_t index)
{
    const UnitKind& unit = *units[index];
    return {{unit.type, unit.subType, kAudioUnitManufacturer_Apple, 0, 0}, &family, &unit};
}

} // namespace kvxplatform::audiounit
