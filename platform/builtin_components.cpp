// The built-in components, family by family in the order of a search.
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
