// The audio units that are always present.
#pragma once

#include "platform/components/component.h"

namespace kvxplatform {

std::size_t builtInUnitCount();
components::Component describeBuiltInUnit(std::size_t index);

} // namespace kvxplatform
