#include "host/kvx/play/session.h"

#include <gtest/gtest.h>

namespace {

TEST(Meter, ReportsSilenceAndReleasesTheDevice)
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
    KVXPlatformStep(device, 512); // the tap is removed
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
