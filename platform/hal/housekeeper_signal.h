// Wakes the housekeeper (housekeeper.cpp).
#pragma once

#include "platform/hal/signal.h"

namespace kvxplatform::hal {

/// After it is raised, the housekeeper looks at every device. Never freed: threads may outlive main.
/// [any], also inside a cycle
inline Signal& housekeeperSignal()
{
    static Signal& signal = *new Signal;
    return signal;
}

} // namespace kvxplatform::hal
