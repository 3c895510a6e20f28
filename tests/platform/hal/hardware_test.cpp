// Devices of PortAudio on simulated hardware: how they are found, named, opened, lost and found again.
#include "tests/platform/hal/fake_hardware.h"
#include "tests/platform/hal/test_device.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <optional>

namespace {

using namespace haltest;

std::vector<KVXDeviceInfo> devices()
{
    std::vector<KVXDeviceInfo> rows(64);
    rows.resize(KVXPlatformGetDevices(rows.data(), 64));
    return rows;
}

std::optional<KVXDeviceInfo> deviceOfUID(const std::string& uid)
{
    for (const KVXDeviceInfo& row : devices())
        if (row.uid == uid) return row;
    return std::nullopt;
}

class Hardware : public testing::Test {
protected:
    /// Set the devices that PortAudio finds. It must be called before the platform is first used, so each
    /// test runs in its own process.
    void plug(std::vector<FakeDevice> plugged)
    {
        setenv("KVX_AUDIO_DEVICE", "", 1); // an empty KVX_AUDIO_DEVICE chooses no device
        change(std::move(plugged));
    }
    void change(std::vector<FakeDevice> plugged)
    {
        const std::lock_guard<std::mutex> lock(fake_.lock);
        fake_.plugged = std::move(plugged);
    }
    void refuseOpenings(int count)
    {
        const std::lock_guard<std::mutex> lock(fake_.lock);
        fake_.openingsToRefuse = count;
    }
    void blockStops(bool isBlocked)
    {
        const std::lock_guard<std::mutex> lock(fake_.lock);
        fake_.stopsBlock = isBlocked;
    }
    int closedStreams()
    {
        const std::lock_guard<std::mutex> lock(fake_.lock);
        return fake_.closed;
    }
    static bool isAlive(AudioDeviceID id)
    {
        return get<UInt32>(id, address(kAudioDevicePropertyDeviceIsAlive)) != 0;
    }
    static bool isRunning(AudioDeviceID id)
    {
        return get<UInt32>(id, address(kAudioDevicePropertyDeviceIsRunning)) != 0;
    }

    FakeHardware& fake_ = fakeHardware();
};

// ---- the library ----

TEST_F(Hardware, SystemsOfPortAudioAreReportedAfterTheDevicesWereRead)
{
    plug({{"Box"}});
    for (const bool areRead : {false, true}) {
        if (areRead) devices();
        std::vector<KVXLibraryInfo> rows(KVXPlatformGetLibraries(nullptr, 0));
        KVXPlatformGetLibraries(rows.data(), uint32_t(rows.size()));
        for (const KVXLibraryInfo& row : rows)
            EXPECT_STREQ(row.systems, areRead && row.name == std::string("PortAudio") ? "Fake, Fake" : "")
                << row.name;
    }
}

// ---- settings that the hardware refuses ----

TEST_F(Hardware, KeepsItsSliceIfTheNewOneDoesNotOpen)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    waitFor([&] { return procedure.calls() > 2; });
    const auto slice = address(kAudioDevicePropertyBufferFrameSize);
    const UInt32 former = get<UInt32>(device, slice);
    refuseOpenings(1);
    EXPECT_EQ(set<UInt32>(device, slice, 256), kAudioDeviceUnsupportedFormatError);
    EXPECT_EQ(get<UInt32>(device, slice), former);
    EXPECT_TRUE(isAlive(device));
    const int before = procedure.calls();
    waitFor([&] { return procedure.calls() > before + 2; });
    EXPECT_EQ(set<UInt32>(device, slice, 256), noErr) << "the next attempt succeeds";
    EXPECT_EQ(get<UInt32>(device, slice), 256u);
}

TEST_F(Hardware, KeepsItsRateIfTheNewOneDoesNotOpen)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    const auto rate = address(kAudioDevicePropertyNominalSampleRate);
    refuseOpenings(1);
    EXPECT_EQ(set<Float64>(device, rate, 48000), kAudioDeviceUnsupportedFormatError);
    EXPECT_EQ(get<Float64>(device, rate), 44100);
    EXPECT_EQ(fake_.lastOpenedRate, 44100);
    EXPECT_EQ(set<Float64>(device, rate, 48000), noErr);
    EXPECT_EQ(fake_.lastOpenedRate, 48000);
}

TEST_F(Hardware, DiesIfItDoesNotReopenAfterAChange)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    refuseOpenings(1000);
    EXPECT_EQ(set<UInt32>(device, address(kAudioDevicePropertyBufferFrameSize), 256),
              kAudioHardwareUnspecifiedError);
    EXPECT_FALSE(isAlive(device));
    const int before = procedure.calls();
    waitFor([&] { return procedure.calls() > before + 2; }); // the timer thread runs the dead device's cycles
    EXPECT_EQ(procedure.stop(), noErr);
    EXPECT_FALSE(isRunning(device));
}

TEST_F(Hardware, DiesIfItDoesNotReopenAfterAChangeInACycle)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    std::atomic<bool> mayChange{false};
    Procedure procedure(device, [&](const Call& call) {
        if (mayChange.exchange(false)) {
            const auto slice = address(kAudioDevicePropertyBufferFrameSize);
            EXPECT_EQ(set<UInt32>(call.device, slice, 256), noErr) << "it is applied after the cycle";
        }
    });
    ASSERT_EQ(procedure.start(), noErr);
    waitFor([&] { return procedure.calls() > 0; });
    refuseOpenings(1000);
    mayChange = true;
    waitFor([&] { return !isAlive(device); });
}

TEST_F(Hardware, DiesWhenItsStreamEnds)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    endFakeStreams();
    waitFor([&] { return !isAlive(device); });
    EXPECT_EQ(procedure.stop(), noErr);
}

// ---- starts of a device that fail ----

OSStatus doNothing(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                   AudioBufferList*, const AudioTimeStamp*, void*)
{
    return noErr;
}

TEST_F(Hardware, FailedStartIsUndoneForTheSameProcedure)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    int first, second;
    ASSERT_EQ(AudioDeviceAddIOProc(device, doNothing, &first), noErr);
    ASSERT_EQ(AudioDeviceAddIOProc(device, doNothing, &second), noErr);
    refuseOpenings(1);
    // Two registrations have this ID, and the one added last is started.
    EXPECT_NE(AudioDeviceStart(device, doNothing), noErr);
    EXPECT_FALSE(isRunning(device));
    refuseOpenings(1);
    EXPECT_NE(AudioDeviceStart(device, nullptr), noErr);
    EXPECT_FALSE(isRunning(device));
    EXPECT_EQ(AudioDeviceStart(device, doNothing), noErr);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, doNothing), noErr);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, doNothing), noErr);
    EXPECT_FALSE(isRunning(device));
}

TEST_F(Hardware, IsClosedAfterAFailedStart)
{
    plug({{"Box"}});
    Procedure procedure(defaultOutput(), [](const Call&) {});
    // The counts include the stream that the device search opened on the default device.
    const int openedBefore = fake_.opened, closedBefore = fake_.closed;
    fake_.startsToRefuse = 1;
    EXPECT_NE(procedure.start(), noErr);
    EXPECT_EQ(fake_.opened, openedBefore + 1);
    EXPECT_EQ(fake_.closed, closedBefore + 1);
    EXPECT_EQ(KVXPlatformRefreshDevices(), 0) << "no stream is open: " << KVXPlatformErrorText();
    EXPECT_EQ(procedure.start(), noErr) << "the next attempt succeeds";
    EXPECT_EQ(procedure.stop(), noErr);
    EXPECT_EQ(fake_.opened, fake_.closed);
}

// Closing a stream that ended without a stop may never return. Pa_Terminate closes such a stream too, so it
// may also never return.
TEST_F(Hardware, EndedStreamIsNeverClosed)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    const int closedBefore = fake_.closed;
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    endFakeStreams();
    waitFor([&] { return !isAlive(device); });
    EXPECT_EQ(procedure.stop(), noErr);
    EXPECT_NE(KVXPlatformRefreshDevices(), 0);
    EXPECT_EQ(fake_.closed, closedBefore);
    EXPECT_EQ(fake_.closedAgain, 0);
    EXPECT_EQ(fake_.terminated, 0);
}

// ---- a sound server that freezes while a stream is closed ----

TEST_F(Hardware, DiesIfItsStopNeverReturns)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    const int closedBefore = fake_.closed, openedBefore = fake_.opened;
    blockStops(true);
    EXPECT_EQ(procedure.stop(), noErr);
    waitFor([&] { return !isAlive(device); });
    EXPECT_NE(KVXPlatformRefreshDevices(), 0);
    EXPECT_EQ(fake_.opened, openedBefore) << "PortAudio is not called again";
    EXPECT_EQ(fake_.closed, closedBefore);
    EXPECT_EQ(fake_.terminated, 0);
    Procedure other(KVXPlatformBuiltInSimulatedDevice(), [](const Call&) {});
    ASSERT_EQ(other.start(), noErr);
    EXPECT_EQ(other.stop(), noErr);
    EXPECT_TRUE(isAlive(KVXPlatformBuiltInSimulatedDevice())) << "it does not need PortAudio";
    blockStops(false); // the blocked thread ends before the test does
    waitFor([&] { return closedStreams() == closedBefore + 1; });
}

// ---- the device list ----

TEST_F(Hardware, EqualNamesGetDifferentUIDs)
{
    plug({{"Box"}, {"Other"}, {"Box"}, {"Box"}});
    const auto rows = devices();
    ASSERT_GE(rows.size(), 4u);
    EXPECT_STREQ(rows[0].uid, "Fake:Box");
    EXPECT_STREQ(rows[1].uid, "Fake:Other");
    EXPECT_STREQ(rows[2].uid, "Fake:Box:2");
    EXPECT_STREQ(rows[3].uid, "Fake:Box:3");
    EXPECT_STREQ(rows[0].system, "Fake");
    change({{"Box"}, {"Other"}});
    ASSERT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    EXPECT_EQ(deviceOfUID("Fake:Box")->device, rows[0].device);
    EXPECT_EQ(deviceOfUID("Fake:Other")->device, rows[1].device);
    EXPECT_FALSE(deviceOfUID("Fake:Box:2"));
}

TEST_F(Hardware, RefreshListsNewAndUnplugsMissingDevices)
{
    plug({{"Box"}});
    const auto box = deviceOfUID("Fake:Box");
    ASSERT_TRUE(box);
    change({{"New"}, {"Box"}});
    ASSERT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    EXPECT_EQ(deviceOfUID("Fake:Box")->device, box->device) << "the same device";
    ASSERT_TRUE(deviceOfUID("Fake:New"));
    Procedure procedure(box->device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    EXPECT_EQ(fake_.lastOpenedIndex, 1) << "at its new index";
    procedure.stop();
    change({{"New"}});
    ASSERT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    EXPECT_FALSE(deviceOfUID("Fake:Box"));
}

TEST_F(Hardware, RefreshListsADeadDeviceAsANewOne)
{
    plug({{"Box"}});
    const auto box = deviceOfUID("Fake:Box");
    ASSERT_TRUE(box);
    ASSERT_EQ(KVXPlatformKillDevice(box->device), 0);
    ASSERT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    const auto again = deviceOfUID("Fake:Box");
    ASSERT_TRUE(again);
    EXPECT_NE(again->device, box->device);
    EXPECT_TRUE(again->isAlive);
}

TEST_F(Hardware, RefreshFailsWhileAStreamIsOpen)
{
    plug({{"Box"}});
    Procedure procedure(defaultOutput(), [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    change({{"Box"}, {"New"}});
    EXPECT_NE(KVXPlatformRefreshDevices(), 0);
    EXPECT_THAT(KVXPlatformErrorText(), testing::HasSubstr("is playing"));
    EXPECT_FALSE(deviceOfUID("Fake:New"));
    procedure.stop();
    EXPECT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    EXPECT_TRUE(deviceOfUID("Fake:New"));
}

TEST_F(Hardware, RefreshFailsAfterAStreamHasEnded)
{
    plug({{"Box"}});
    const AudioDeviceID device = defaultOutput();
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(procedure.start(), noErr);
    endFakeStreams();
    waitFor([&] { return !isAlive(device); });
    procedure.stop();
    EXPECT_NE(KVXPlatformRefreshDevices(), 0);
    EXPECT_THAT(KVXPlatformErrorText(), testing::HasSubstr("start the program again"));
    EXPECT_TRUE(deviceOfUID("Fake:Box")) << "the list is unchanged";
}

TEST_F(Hardware, StaysListedIfPortAudioDoesNotRestart)
{
    plug({{"Box"}});
    const auto box = deviceOfUID("Fake:Box");
    ASSERT_TRUE(box);
    fake_.starts = false;
    EXPECT_NE(KVXPlatformRefreshDevices(), 0);
    EXPECT_THAT(KVXPlatformErrorText(), testing::HasSubstr("simulated failure"));
    ASSERT_TRUE(deviceOfUID("Fake:Box"));
    Procedure procedure(box->device, [](const Call&) {});
    EXPECT_NE(procedure.start(), noErr);
    fake_.starts = true;
    EXPECT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    EXPECT_EQ(procedure.start(), noErr);
}

TEST_F(Hardware, WithoutInformationIsSkipped)
{
    fake_.hiddenInfo = 0;
    plug({{"Hidden"}, {"Box"}});
    EXPECT_FALSE(deviceOfUID("Fake:Hidden"));
    const auto box = deviceOfUID("Fake:Box");
    ASSERT_TRUE(box);
    fake_.hiddenInfo = 1;
    Procedure procedure(box->device, [](const Call&) {});
    EXPECT_NE(procedure.start(), noErr);
    fake_.hiddenInfo = -1;
    EXPECT_EQ(procedure.start(), noErr);
}

TEST_F(Hardware, OffersSupportedRatesOnly)
{
    plug({{"Box", 2, true, 24000}});
    const auto rates =
        getAll<AudioValueRange>(defaultOutput(), address(kAudioDevicePropertyAvailableNominalSampleRates));
    ASSERT_EQ(rates.size(), 1u);
    EXPECT_EQ(rates[0].mMinimum, 24000);
}

} // namespace
