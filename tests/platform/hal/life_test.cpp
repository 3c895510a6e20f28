// Devices that come, die, go and refuse.
#include "tests/platform/hal/bench.h"

#include <cmath>

namespace {

using namespace bench;

bool isListed(AudioDeviceID device)
{
    const auto devices =
        getAll<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDevices));
    return std::find(devices.begin(), devices.end(), device) != devices.end();
}

TEST(Life, TheSimulatedDeviceIsAlwaysThere)
{
    const AudioDeviceID device = KVXPlatformBuiltInSimulatedDevice();
    EXPECT_TRUE(isListed(device));
    EXPECT_EQ(defaultOutput(), device) << "PortAudio is not asked when the simulated device is chosen";
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsAlive)), 1u);
}

TEST(Life, ADeviceComesAndGoesAndItsNumberNeverComesBack)
{
    AudioDeviceID last = 0;
    for (int i = 0; i < 20; ++i) {
        Device device;
        EXPECT_GT(AudioDeviceID{device}, last);
        last = device;
        EXPECT_TRUE(isListed(device));
        device.unplug();
        EXPECT_FALSE(isListed(last));
        UInt32 size = 4, value;
        const auto at = address(kAudioDevicePropertyDeviceIsAlive);
        EXPECT_EQ(AudioObjectGetPropertyData(last, &at, 0, nullptr, &size, &value),
                  kAudioHardwareBadObjectError);
    }
}

TEST(Life, ADeadDeviceStaysAndGoesOnBeingTurned)
{
    for (bool isStepped : {true, false}) {
        SCOPED_TRACE(isStepped ? "stepped" : "paced");
        Device device(isStepped ? Device::stepped() : Device::paced());
        Procedure procedure(device, [](const Call& call) {
            EXPECT_EQ(call.channels(), 2u);
            call.fill(1);
        });
        procedure.start();
        if (isStepped)
            KVXPlatformStep(device, 64);
        else
            waitFor([&] { return procedure.calls() > 0; });
        ASSERT_EQ(KVXPlatformKillDevice(device), 0);
        EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsAlive)), 0u);
        EXPECT_TRUE(isListed(device));
        const int before = procedure.calls();
        waitFor([&] { return procedure.calls() > before + 3; }); // nobody steps it
        EXPECT_EQ(procedure.stop(), noErr);
        EXPECT_EQ(procedure.remove(), noErr);
    }
}

TEST(Life, ADeadDeviceCanBeStartedSoThatWhoeverDidCanStop)
{
    Device device;
    KVXPlatformKillDevice(device);
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call&) { self->stop(); });
    self = &procedure;
    EXPECT_EQ(procedure.start(), noErr);
    waitFor([&] { return procedure.calls() > 0; });
    waitFor([&] { return get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)) == 0; });
    EXPECT_EQ(procedure.calls(), 1);
}

TEST(Life, AnUnpluggedDeviceIsTurnedUntilItsLastProcedureHasStopped)
{
    Device device;
    Recording heard(device);
    Procedure* self = nullptr;
    std::atomic<bool> mayStop{false}, hasStopped{false};
    Procedure procedure(device, [&](const Call& call) {
        call.fill(1);
        if (!mayStop) return;
        EXPECT_EQ(AudioDeviceStop(call.device, self->id()), noErr);
        EXPECT_EQ(self->remove(), noErr);
        hasStopped = true;
    });
    self = &procedure;
    procedure.start();
    const AudioDeviceID id = device;
    device.unplug();
    EXPECT_FALSE(isListed(id));
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(static_cast<KVXDeviceID>(id)), kAudioHardwareBadDeviceError);
    const AudioDeviceIOProcID ended = procedure.id(); // a start without one would start the device itself
    const int before = procedure.calls();
    waitFor([&] { return procedure.calls() > before + 2; });
    EXPECT_TRUE(heard.samples.empty()) << "nothing of it is heard";
    mayStop = true;
    waitFor([&] { return hasStopped.load(); });
    waitFor([&] { return AudioDeviceStart(id, ended) == kAudioHardwareBadDeviceError; }); // then it ends
    EXPECT_EQ(account("IOProc"), 0u);
}

TEST(Life, TheDefaultDeviceMovesOn)
{
    const AudioDeviceID builtIn = defaultOutput();
    Device device;
    const auto role = address(kAudioHardwarePropertyDefaultOutputDevice);
    ASSERT_EQ(set<AudioDeviceID>(kAudioObjectSystemObject, role, device), noErr);
    EXPECT_EQ(defaultOutput(), AudioDeviceID{device});
    device.unplug();
    EXPECT_EQ(defaultOutput(), builtIn);

    Device mortal;
    ASSERT_EQ(set<AudioDeviceID>(kAudioObjectSystemObject, role, mortal), noErr);
    KVXPlatformKillDevice(mortal);
    EXPECT_EQ(defaultOutput(), builtIn) << "the dead cannot be it";
    EXPECT_NE(set<AudioDeviceID>(kAudioObjectSystemObject, role, mortal), noErr);
    EXPECT_NE(set<AudioDeviceID>(kAudioObjectSystemObject, role, 0x7FFFFFFF), noErr);
    EXPECT_EQ(defaultOutput(), builtIn);
}

TEST(Life, ARefusedStartChangesNothing)
{
    Device device;
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(KVXPlatformRefuseStart(device, 'what'), 0);
    EXPECT_EQ(procedure.start(), OSStatus{'what'});
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)), 0u);
    EXPECT_EQ(KVXPlatformStep(device, 64), 0u);
    ASSERT_EQ(KVXPlatformRefuseStart(device, 0), 0);
    EXPECT_EQ(procedure.start(), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 64), 64u);
}

TEST(Life, RunningIsToldAsItIs)
{
    Device device;
    const auto running = address(kAudioDevicePropertyDeviceIsRunning);
    Procedure a(device, [](const Call&) {}), b(device, [](const Call&) {});
    EXPECT_EQ(get<UInt32>(device, running), 0u);
    a.start();
    b.start();
    EXPECT_EQ(get<UInt32>(device, running), 1u);
    a.stop();
    EXPECT_EQ(get<UInt32>(device, running), 1u);
    b.stop();
    EXPECT_EQ(get<UInt32>(device, running), 0u);
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunningSomewhere)), 0u);
}

// ---- the control header ----

TEST(Control, ListsDevices)
{
    KVXSimulatedDevice description = Device::stepped();
    description.name = "Gr\xC3\xBCn";
    description.uid = "kvx:green";
    description.sampleRate = 22050;
    description.outputChannels = 6;
    description.latencyFrames = 17;
    Device device(description);
    std::vector<KVXDeviceInfo> rows(64);
    const uint32_t count = KVXPlatformGetDevices(rows.data(), 64);
    ASSERT_EQ(KVXPlatformGetDevices(nullptr, 0), count) << "how many, without a row";
    rows.resize(count);
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const KVXDeviceInfo& r) { return r.device == AudioDeviceID{device}; });
    ASSERT_NE(row, rows.end());
    EXPECT_STREQ(row->name, "Gr\xC3\xBCn");
    EXPECT_STREQ(row->uid, "kvx:green");
    EXPECT_EQ(row->sampleRate, 22050);
    EXPECT_EQ(row->outputChannels, 6u);
    EXPECT_EQ(row->inputChannels, 0u);
    EXPECT_EQ(row->sliceFrames, 64u);
    EXPECT_EQ(row->latencyFrames, 17u);
    EXPECT_EQ(row->isSimulated, 1);
    EXPECT_EQ(row->isAlive, 1);
    EXPECT_EQ(row->isRunning, 0);
    EXPECT_EQ(row->isDefaultOutput, 0);
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const auto& r) { return r.isDefaultOutput; }), 1);
}

TEST(Control, ChoosesADeviceByWhatAUserTypes)
{
    KVXSimulatedDevice description = Device::stepped();
    description.name = "Kitchen Radio";
    Device radio(description);
    description.name = "Kitchen Lamp";
    Device lamp(description);
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    const auto all = getAll<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDevices));
    const auto row = std::find(all.begin(), all.end(), AudioDeviceID{lamp}) - all.begin();
    const std::string number = std::to_string(row); // the number that a list shows
    const struct {
        const char* choice;
        AudioDeviceID expected; // 0: refused
    } facts[] = {
        {"Kitchen Radio", radio}, {"lamp", lamp},   {"simulated", builtIn},
        {number.c_str(), lamp},   {"radio", radio}, {"Kitchen", 0},
        {"Bathroom", 0},          {"", 0},          {"99999", 0},
    };
    for (const auto& fact : facts) {
        const AudioDeviceID before = defaultOutput();
        const int32_t status = KVXPlatformChooseOutputDevice(fact.choice);
        EXPECT_EQ(status == 0, fact.expected != 0) << fact.choice;
        EXPECT_EQ(defaultOutput(), fact.expected ? fact.expected : before) << fact.choice;
        if (fact.expected) continue;
        const std::string error = KVXPlatformErrorText();
        EXPECT_NE(error.find(fact.choice), std::string::npos) << error;
        EXPECT_NE(error.find("Kitchen Lamp"), std::string::npos) << "it says what there is: " << error;
    }
}

TEST(Control, RefusesWhatIsNotThere)
{
    const KVXDeviceID nobody = 0x7FFFFFFF;
    const int32_t none = static_cast<int32_t>(kAudioHardwareBadDeviceError);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(nobody), none);
    EXPECT_EQ(KVXPlatformKillDevice(nobody), none);
    EXPECT_EQ(KVXPlatformRefuseStart(nobody, -1), none);
    EXPECT_EQ(KVXPlatformConfigureDevice(nobody, 48000, 2, 64), none);
    EXPECT_EQ(KVXPlatformSetStepped(nobody, 1), none);
    EXPECT_EQ(KVXPlatformStartCapture(nobody, "/tmp/x.wav"), none);
    EXPECT_EQ(KVXPlatformSetOutputTap(nobody, nullptr, nullptr), none);
    EXPECT_EQ(KVXPlatformStep(nobody, 64), 0u);
    EXPECT_STRNE(KVXPlatformErrorText(), "");
}

TEST(Control, RefusesSettingsThatNoDeviceHas)
{
    Device device;
    const struct {
        double rate;
        uint32_t channels, slice;
    } facts[] = {{-1, 0, 0}, {NAN, 0, 0}, {INFINITY, 0, 0}, {1e12, 0, 0}, {0, 100000, 0}, {0, 0, 0x10000000}};
    for (const auto& fact : facts) {
        EXPECT_NE(KVXPlatformConfigureDevice(device, fact.rate, fact.channels, fact.slice), 0)
            << fact.rate << " " << fact.channels << " " << fact.slice;
        KVXSimulatedDevice description = Device::stepped();
        description.sampleRate = fact.rate;
        if (fact.channels) description.outputChannels = fact.channels;
        if (fact.slice) description.sliceFrames = fact.slice;
        EXPECT_EQ(KVXPlatformAddSimulatedDevice(&description), 0u) << fact.rate;
        EXPECT_STRNE(KVXPlatformErrorText(), "");
    }
    EXPECT_EQ(get<Float64>(device, address(kAudioDevicePropertyNominalSampleRate)), 44100.0);
}

TEST(Life, TheBuiltInDeviceNeverDies)
{
    const KVXDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    for (auto end : {KVXPlatformKillDevice, KVXPlatformRemoveSimulatedDevice}) {
        EXPECT_EQ(end(builtIn), static_cast<int32_t>(kAudioHardwareUnsupportedOperationError));
        EXPECT_STRNE(KVXPlatformErrorText(), "");
    }
    EXPECT_EQ(get<UInt32>(builtIn, address(kAudioDevicePropertyDeviceIsAlive)), 1u);
    EXPECT_EQ(defaultOutput(), builtIn);
}

TEST(Life, AnInputHasNoOutputChannelsToChange)
{
    const auto input =
        get<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDefaultInputDevice));
    const auto id = static_cast<KVXDeviceID>(input);
    EXPECT_NE(KVXPlatformConfigureDevice(id, 48000, 2, 0), 0);
    EXPECT_STRNE(KVXPlatformErrorText(), "");
    EXPECT_EQ(get<Float64>(input, address(kAudioDevicePropertyNominalSampleRate)), 44100)
        << "nothing changes";
    EXPECT_EQ(KVXPlatformConfigureDevice(id, 48000, 0, 256), 0) << KVXPlatformErrorText();
}

} // namespace
