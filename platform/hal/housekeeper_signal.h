// The signal that wakes the housekeeper thread (housekeeper.cpp).
#pragma once

#include "platform/hal/signal.h"

namespace kvxplatform::hal {

/// Raising this signal makes the housekeeper thread check every device. The signal is never freed, because
/// threads may outlive main().
/// Also inside an I/O cycle.
/// [any]
inline Signal& housekeeperSignal()
{
    static Signal& signal = *new Signal;
    return signal;
}

} // namespace kvxplatform::hal
