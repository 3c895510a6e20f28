// A capture of a device that ends while the program finishes the capture.
#include "tests/platform/hal/fake_hardware.h"
#include "tests/platform/hal/test_device.h"
#include "tests/support/temporary_folder.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <thread>

namespace {

std::atomic<bool> isRenamingSlow{false}, isRenaming{false};

} // namespace

// Replaces the C library's rename(), with which a capture gives the finished file its final name.
extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept
{
    static const auto real = reinterpret_cast<int (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "rename"));
    if (isRenamingSlow) {
        isRenaming = true;
        // During this pause a stop that fails to wait for the rename would return.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    return real(from, to);
}

namespace {

using namespace haltest;

TEST(HardwareCapture, StopWaitsWhileADyingDeviceFinishesTheFile)
{
    setenv("KVX_AUDIO_DEVICE", "", 1);
    fakeHardware().plugged = {{"Box"}};
    const support::TemporaryFolder folder;
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call& call) { call.fill(0.25f); });
    ASSERT_EQ(KVXPlatformStartCapture(static_cast<KVXDeviceID>(device), (folder / "out.wav").c_str()), 0);
    ASSERT_EQ(procedure.start(), noErr);
    waitFor([&] { return procedure.calls() > 2; });
    isRenamingSlow = true;
    endFakeStreams();
    waitFor([] { return isRenaming.load(); });
    EXPECT_EQ(KVXPlatformStopCapture(static_cast<KVXDeviceID>(device)), 0) << KVXPlatformErrorText();
    EXPECT_TRUE(std::filesystem::exists(folder / "out.wav"));
    EXPECT_EQ(folder.count(), 1u);
    EXPECT_EQ(procedure.stop(), noErr);
}

} // namespace
