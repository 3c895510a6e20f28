// If no new thread can be started, the platform returns errors and the process continues.
#include "tests/platform/hal/test_device.h"
#include "tests/support/temporary_folder.h"

#include <pthread.h>

namespace {

using namespace haltest;

/// While this object exists, no thread can be started, because the stack of a new thread would exceed the
/// address space.
class NoThreads {
public:
    NoThreads()
    {
        pthread_attr_init(&attributes_);
        pthread_getattr_default_np(&attributes_);
        pthread_attr_t huge = attributes_;
        pthread_attr_setstacksize(&huge,
                                  sizeof(void*) == 4 ? std::size_t{0xE0000000u} : std::size_t{1} << 46);
        pthread_setattr_default_np(&huge);
    }
    ~NoThreads() { pthread_setattr_default_np(&attributes_); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t attributes_;
};

OSStatus ignore(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) { return noErr; }

TEST(ThreadFailure, StartIsRefusedAndUndone)
{
    Device device(Device::paced());
    Procedure procedure(device, [](const Call&) {});
    {
        const NoThreads none;
        EXPECT_EQ(procedure.start(), kAudioHardwareUnspecifiedError);
    }
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)), 0u);
    ASSERT_EQ(procedure.start(), noErr) << "the next start succeeds";
    waitFor([&] { return procedure.calls() > 0; });
    EXPECT_EQ(procedure.stop(), noErr);
}

TEST(ThreadFailure, CaptureDoesNotStart)
{
    support::TemporaryFolder folder;
    Device device;
    {
        const NoThreads none;
        EXPECT_NE(KVXPlatformStartCapture(device, (folder / "x.wav").c_str()), 0);
        EXPECT_STRNE(KVXPlatformErrorText(), "");
    }
    EXPECT_EQ(folder.count(), 0u);
    EXPECT_EQ(KVXPlatformStartCapture(device, (folder / "x.wav").c_str()), 0) << KVXPlatformErrorText();
    EXPECT_EQ(KVXPlatformStopCapture(device), 0);
}

TEST(ThreadFailure, FirstCallReturnsAnError)
{
    AudioDeviceID device = 0;
    UInt32 size = sizeof device;
    const auto role = address(kAudioHardwarePropertyDefaultOutputDevice);
    {
        const NoThreads none; // the housekeeper thread cannot start either
        EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &role, 0, nullptr, &size, &device),
                  kAudioHardwareUnspecifiedError);
        EXPECT_EQ(AudioDeviceGetProperty(2, 0, false, 'livn', &size, &device),
                  kAudioHardwareUnspecifiedError);
        EXPECT_EQ(AudioStreamGetProperty(3, 0, 'sdir', &size, &device), kAudioHardwareUnspecifiedError);
        EXPECT_NE(KVXPlatformChooseOutputDevice("simulated"), 0);
        EXPECT_STRNE(KVXPlatformErrorText(), "");
        EXPECT_EQ(AudioObjectAddPropertyListener(kAudioObjectSystemObject, &role, ignore, nullptr),
                  kAudioHardwareUnspecifiedError);
    }
    EXPECT_NE(defaultOutput(), 0u);
}

} // namespace
