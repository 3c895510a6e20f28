// The built-in components, one component family after another, in search order.
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
