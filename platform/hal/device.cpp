#include "platform/hal/device.h"

namespace kvxplatform::hal {

std::mutex propertyLock;

} // namespace kvxplatform::hal
