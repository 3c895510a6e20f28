// The property table of each kind of object.
#pragma once

#include "platform/hal/property.h"

namespace kvxplatform::hal {

PropertyTable systemProperties();
PropertyTable deviceProperties();
PropertyTable levelProperties();  ///< properties of a device's volumes and mutes
PropertyTable sourceProperties(); ///< properties of a simulated device's data sources
PropertyTable streamProperties();

} // namespace kvxplatform::hal
