// The property table of each kind of object.
#pragma once

#include "platform/hal/property.h"

namespace kvxplatform::hal {

PropertyTable systemProperties();
PropertyTable deviceProperties();
PropertyTable levelProperties();  ///< a device's volumes and mutes
PropertyTable sourceProperties(); ///< a simulated device's data sources
PropertyTable streamProperties();

} // namespace kvxplatform::hal
