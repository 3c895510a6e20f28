// The built-in components, family by family in the order of a search.
#include "platform/builtin_units.h"
#include "platform/components/registry.h"
#include "platform/soundmanager/mixer.h"

#include <iterator>

namespace kvxplatform::components {

const BuiltIn builtIns[] = {
    {builtInUnitCount, describeBuiltInUnit},
    {soundmanager::componentCount, soundmanager::describe},
};
const std::size_t builtInCount = std::size(builtIns);

} // namespace kvxplatform::components
