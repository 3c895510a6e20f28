// A thread for what a device's cycle leaves to others: closing hardware, freeing the records of removed
// procedures, telling listeners. It also watches that running hardware goes on asking for slices.
#pragma once

namespace kvxplatform::hal {

/// Have the housekeeper look at every device. [any], also inside a cycle: no lock, no allocation.
void wakeHousekeeper();

/// Start the thread, once.
void startHousekeeper();

} // namespace kvxplatform::hal
