// The families of components that are always present, in the order in which a search finds them.
#include "platform/builtin_units.h"
#include "platform/components/component.h"
#include "platform/soundmanager/mixer.h"

#include <iterator>

namespace kvxplatform::components {

const BuiltIn builtIns[] = {
    {builtInUnitCount, describeBuiltInUnit},
    {soundmanager::componentCount, soundmanager::describe},
};
const std::size_t builtInCount = std::size(builtIns);

} // namespace kvxplatform::components
