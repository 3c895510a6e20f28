// The public control header's functions that concern devices.
#include "tests/platform/hal/test_device.h"

#include <cmath>

namespace {

using namespace haltest;

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
    ASSERT_EQ(KVXPlatformGetDevices(nullptr, 0), count) << "the count, without rows";
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
    EXPECT_STREQ(row->system, "simulated");
    EXPECT_EQ(row->isAlive, 1);
    EXPECT_EQ(row->isRunning, 0);
    EXPECT_EQ(row->isDefaultOutput, 0);
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const auto& r) { return r.isDefaultOutput; }), 1);
}

TEST(Control, FindsTheDeviceThatAUserNames)
{
    KVXSimulatedDevice description = Device::stepped();
    description.name = "Kitchen Radio";
    Device radio(description);
    description.name = "Kitchen Lamp";
    Device lamp(description);
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    const auto all = getAll<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDevices));
    const auto row = std::find(all.begin(), all.end(), AudioDeviceID{lamp}) - all.begin();
    const std::string number = std::to_string(row); // number of the device in the order of the device list
    const std::string rowText = "row:" + number, idText = "id:" + std::to_string(AudioDeviceID{lamp});
    const struct {
        const char* choice;
        AudioDeviceID expected; // device that becomes the default; 0 if the choice is refused
    } facts[] = {
        {"Kitchen Radio", radio}, {"lamp", lamp},   {"simulated", builtIn},
        {number.c_str(), lamp},   {"radio", radio}, {"Kitchen", 0},
        {"Bathroom", 0},          {"", 0},          {"99999", 0},
        {rowText.c_str(), lamp},  {"row:", 0},      {"row:99999", 0},
        {idText.c_str(), lamp},   {"id:", 0},       {"id:99999", 0},
    };
    for (const auto& fact : facts) {
        const AudioDeviceID before = defaultOutput();
        const int32_t status = KVXPlatformChooseOutputDevice(fact.choice);
        EXPECT_EQ(status == 0, fact.expected != 0) << fact.choice;
        EXPECT_EQ(defaultOutput(), fact.expected ? fact.expected : before) << fact.choice;
        if (fact.expected) continue;
        const std::string error = KVXPlatformErrorText();
        EXPECT_NE(error.find(fact.choice), std::string::npos) << error;
        EXPECT_NE(error.find("Kitchen Lamp"), std::string::npos) << "it lists the choices: " << error;
    }
}

TEST(Control, FindsAllDevicesThatFitAText)
{
    KVXSimulatedDevice description = Device::stepped();
    description.name = "Kitchen Radio";
    Device radio(description);
    description.name = "kitchen radio";
    Device other(description);
    description.name = "Kitchen Radio Two";
    description.uid = "own:two";
    Device two(description);
    KVXDeviceInfo first = {};
    ASSERT_GE(KVXPlatformGetDevices(&first, 1), 4u);
    const std::string id = "id:" + std::to_string(KVXDeviceID{two});
    const struct {
        const char* text;
        std::vector<KVXDeviceID> expected;
        const char* why;
    } facts[] = {
        {"Kitchen Radio", {radio}, "an identical name comes before other matches"},
        {"KITCHEN RADIO", {radio, other}, "a whole name comes before a part of a name"},
        {"kitchen", {radio, other, two}, "a part of a name in upper or lower case"},
        {"own:two", {two}, "a UID"},
        {"own:", {}, "a part of a UID is not a match"},
        {"0", {first.device}, "a row number of the device list"},
        {"99999", {}, "a number without a row"},
        {"row:0", {first.device}, "a row number with its prefix"},
        {"row:", {}, "a prefix without a number"},
        {"row:0x", {}, "a prefix and no decimal number"},
        {id.c_str(), {two}, "an ID with its prefix"},
        {"id:1", {}, "an ID of no device"},
        {"Bathroom", {}, "no device has this name"},
        {"", {}, "an empty text"},
        {nullptr, {}, "no text"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        KVXDeviceInfo rows[8];
        ASSERT_EQ(KVXPlatformFindDevices(fact.text, nullptr, 0), fact.expected.size());
        ASSERT_EQ(KVXPlatformFindDevices(fact.text, rows, 8), fact.expected.size());
        for (std::size_t i = 0; i < fact.expected.size(); ++i) EXPECT_EQ(rows[i].device, fact.expected[i]);
    }
}

TEST(Control, RefusesMissingDevices)
{
    const KVXDeviceID missing = 0x7FFFFFFF;
    const int32_t none = static_cast<int32_t>(kAudioHardwareBadDeviceError);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(missing), none);
    EXPECT_EQ(KVXPlatformKillDevice(missing), none);
    EXPECT_EQ(KVXPlatformRefuseStart(missing, -1), none);
    EXPECT_EQ(KVXPlatformConfigureDevice(missing, 48000, 2, 64), none);
    EXPECT_EQ(KVXPlatformSetStepped(missing, 1), none);
    EXPECT_EQ(KVXPlatformStartCapture(missing, "/tmp/x.wav"), none);
    EXPECT_EQ(KVXPlatformSetOutputTap(missing, nullptr, nullptr), none);
    EXPECT_EQ(KVXPlatformStep(missing, 64), 0u);
    EXPECT_STRNE(KVXPlatformErrorText(), "");
}

TEST(Control, RefusesSettingsOutOfRange)
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

} // namespace
