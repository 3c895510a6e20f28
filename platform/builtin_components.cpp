// The families of components that are always there. Their order is the order in which a search finds them.
#include "platform/audiounit/units.h"
#include "platform/components/registry.h"
#include "platform/soundmanager/mixer.h"

#include <iterator>

namespace kvxplatform::components {

const BuiltIn builtIns[] = {
    {audiounit::unitCount, audiounit::describe},
    {soundmanager::componentCount, soundmanager::describe},
};
const std::size_t builtInCount = std::size(builtIns);

} // namespace kvxplatform::components
