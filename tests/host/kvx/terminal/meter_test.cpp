// The level of a device's output.
#include "host/kvx/terminal/meter.h"

#include <gtest/gtest.h>

namespace {

TEST(Meter, IsSilentWhereNothingPlaysAndLetsGoOfTheDevice)
{
    KVXSimulatedDevice description = {};
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_NE(device, 0u);
    {
        kvx::Meter meter(device);
        KVXPlatformStep(device, 512);
        EXPECT_EQ(meter.takePeak(), 0.0f);
    }
    KVXPlatformStep(device, 512); // nobody listens any more
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
