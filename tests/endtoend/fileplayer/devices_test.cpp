// Output devices of a file player: list, choice, changes during playback, lost devices, channel maps.
#include "tests/endtoend/fileplayer/file_player.h"

#include <algorithm>
#include <thread>

namespace {

using namespace endtoend;
using support::Sound;

constexpr std::size_t length = 44100 * 2;

struct FilePlayerDevices : FilePlayerTest {
    const std::string path = folder / "x.wav";
    const Sound sound = support::makeNoise(44100, 2, length);

    FilePlayerDevices() { support::writeSound(sound, path); }

    Samples frames(std::size_t first, std::size_t count) const
    {
        return partOf(sound.samples, 2, first, count);
    }
};

std::vector<KVXDeviceInfo> deviceList()
{
    std::vector<KVXDeviceInfo> rows(64);
    rows.resize(std::min(KVXPlatformGetDevices(rows.data(), 64), 64u));
    return rows;
}

KVXDeviceID addDevice(const char* name, std::uint32_t outputs, std::uint32_t inputs, bool isStepped = false)
{
    KVXSimulatedDevice description = {};
    description.name = name;
    description.outputChannels = outputs;
    description.inputChannels = inputs;
    description.isStepped = isStepped;
    return KVXPlatformAddSimulatedDevice(&description);
}

// ---- the device list ----

TEST_F(FilePlayerDevices, AreListedByNumberAndName)
{
    const host::Object player = loaded.host.create(filePlayerClass); // the device list needs no loaded file
    const KVXDeviceID output = addDevice("Öüter space", 2, 0);
    const KVXDeviceID input = addDevice("Ears only", 0, 2);
    const KVXDeviceID both = addDevice("Both ways", 8, 1);
    for (int round = 0; round < 2; ++round) {
        const host::Object dictionary = player.get("OuputDevices").object();
        EXPECT_EQ(player.get("Lasterror").integer(), 0);
        std::vector<std::pair<std::int64_t, std::string>> listed, expected;
        for (std::int64_t i = 0; i < dictionary.get("Count").integer(); ++i) {
            const host::Value key = dictionary.call("Key", i);
            listed.emplace_back(key.integer(), dictionary.call("Value", key).text());
        }
        for (const KVXDeviceInfo& row : deviceList())
            if (row.outputChannels > 0) expected.emplace_back(row.device, row.name);
        EXPECT_EQ(listed, expected);
        EXPECT_TRUE(dictionary.call("HasKey", output).boolean());
        EXPECT_TRUE(dictionary.call("HasKey", both).boolean());
        EXPECT_FALSE(dictionary.call("HasKey", input).boolean());
    }
    for (const KVXDeviceID id : {output, input, both}) KVXPlatformRemoveSimulatedDevice(id);
    EXPECT_FALSE(player.get("OuputDevices").object().call("HasKey", output).boolean());
}

TEST_F(FilePlayerDevices, DefaultDeviceIsTheDefaultOfTheSystem)
{
    const host::Object player = loaded.host.create(filePlayerClass);
    SteppedDevice device;
    EXPECT_EQ(player.get("DefaultDeviceID").integer(), std::int64_t(KVXPlatformBuiltInSimulatedDevice()));
    chooseDefaultDevice(loaded.host, device.id());
    EXPECT_EQ(player.get("DefaultDeviceID").integer(), std::int64_t(device.id()));
    EXPECT_EQ(player.get("Lasterror").integer(), 0);
    EXPECT_EQ(player.get("CurrentDeviceID").integer(), 0) << "no file is loaded";
    EXPECT_NE(player.get("Lasterror").integer(), 0);
}

// ---- changes during playback ----

TEST_F(FilePlayerDevices, PlaybackContinuesWithTheNextFrameOnTheNewDevice)
{
    FilePlayer player(loaded, path);
    SteppedDevice second(44100, 2, 300), third(44100, 2, 4096);
    player.play();
    expectSamples(player.render(1000), frames(0, 1000));
    std::size_t at = 1000;
    for (SteppedDevice* next : {&second, &third, &second, &player.device(), &player.device()}) {
        player.object().set("CurrentDeviceID", std::int64_t(next->id()));
        EXPECT_EQ(player.error(), 0);
        EXPECT_EQ(player.get("CurrentDeviceID"), next->id());
        EXPECT_TRUE(player.isPlaying());
        for (SteppedDevice* other : {&second, &third, &player.device()})
            if (other != next) EXPECT_EQ(other->step(100), 0u) << "the former device is stopped";
        next->clearOutput();
        next->step(5000);
        expectSamples(next->output(), frames(at, 5000));
        at += 5000;
    }
    player.pause();
}

TEST_F(FilePlayerDevices, OfOtherChannelCountsAndRatesCanBeChosenDuringPlayback)
{
    FilePlayer player(loaded, path);
    SteppedDevice wide(44100, 6), narrow(44100, 1), fast(88200, 2);
    player.play();
    player.render(1000);

    player.object().set("CurrentDeviceID", std::int64_t(wide.id()));
    wide.step(1000);
    expectSamples(wide.output(0), channelOf(frames(1000, 1000), 2, 0));
    expectSamples(wide.output(1), channelOf(frames(1000, 1000), 2, 1));
    for (const std::uint32_t channel : {2u, 5u}) expectSamples(wide.output(channel), silence(1000));

    player.object().set("CurrentDeviceID", std::int64_t(narrow.id()));
    narrow.step(1000);
    expectSamples(narrow.output(), channelOf(frames(2000, 1000), 2, 0));

    player.object().set("CurrentDeviceID", std::int64_t(fast.id()));
    fast.step(20000);
    EXPECT_GT(*std::max_element(fast.output().begin(), fast.output().end()), 0.1f);
    const double at = player.get("CurrentTime") * 44100;
    EXPECT_NEAR(at, 3000 + 10000, 500) << "two device frames per file frame";

    // A change of the device drops only the input that the rate conversion has buffered.
    player.object().set("CurrentDeviceID", std::int64_t(player.device().id()));
    expectSamples(player.render(1000), frames(std::size_t(at + 0.5), 1000));
}

TEST_F(FilePlayerDevices, ThatDoNotExistAreRefusedAndPlaybackContinues)
{
    FilePlayer player(loaded, path);
    const KVXDeviceID removed = addDevice("Removed", 2, 0);
    KVXPlatformRemoveSimulatedDevice(removed);
    player.play();
    player.render(512);
    for (const std::int64_t id : {std::int64_t(removed), std::int64_t(1), std::int64_t(0xFFFFFFFF)}) {
        SCOPED_TRACE(id);
        player.object().set("CurrentDeviceID", id);
        EXPECT_NE(player.error(), 0);
        EXPECT_EQ(player.get("CurrentDeviceID"), player.device().id());
    }
    expectSamples(player.render(512), frames(512, 512));
}

TEST_F(FilePlayerDevices, ThatDoNotStartReturnTheErrorAndAnotherDevicePlays)
{
    FilePlayer player(loaded, path);
    SteppedDevice broken;
    ASSERT_EQ(KVXPlatformRefuseStart(broken.id(), 'nope'), 0);
    player.object().set("CurrentDeviceID", std::int64_t(broken.id()));
    EXPECT_EQ(player.error(), 0) << "the device is not started yet";
    player.play();
    EXPECT_EQ(player.error(), 'nope');
    EXPECT_FALSE(player.isPlaying());
    player.object().set("CurrentDeviceID", std::int64_t(player.device().id()));
    player.play();
    EXPECT_EQ(player.error(), 0);
    expectSamples(player.render(1000), frames(0, 1000));

    player.object().set("CurrentDeviceID", std::int64_t(broken.id()));
    EXPECT_EQ(player.error(), 'nope');
    player.object().set("CurrentDeviceID", std::int64_t(player.device().id()));
    EXPECT_EQ(player.error(), 0);
    if (!player.isPlaying()) player.play();
    expectSamples(player.render(1000), frames(1000, 1000));
}

// ---- the default device ----

/// Step a device until the player renders to the device, because the platform moves a player to the new
/// default device asynchronously. The test fails if the player stops playing before.
void stepUntilRendering(const FilePlayer& player, SteppedDevice& device, std::uint32_t frames)
{
    while (device.step(frames) == 0) ASSERT_TRUE(player.isPlaying());
}

TEST_F(FilePlayerDevices, DefaultOutputFollowsTheDefaultDevice)
{
    SteppedDevice first, second;
    chooseDefaultDevice(loaded.host, first.id());
    {
        FilePlayer::Setup setup;
        setup.outputUnit = 3;
        FilePlayer player(loaded, path, setup);
        player.play();
        first.step(1000);
        expectSamples(first.output(), frames(0, 1000));
        std::size_t at = 1000;
        for (int round = 0; round < 3; ++round) {
            SteppedDevice& next = round % 2 ? first : second;
            chooseDefaultDevice(loaded.host, next.id());
            next.clearOutput();
            stepUntilRendering(player, next, 1000);
            expectSamples(next.output(), frames(at, 1000));
            at += 1000;
            EXPECT_EQ(player.get("CurrentDeviceID"), next.id());
            EXPECT_TRUE(player.isPlaying());
        }
    }
}

TEST_F(FilePlayerDevices, DefaultOutputContinuesAfterItsDeviceIsUnplugged)
{
    SteppedDevice fallback;
    const KVXDeviceID unplugged = addDevice("Unplugged", 2, 0, true);
    chooseDefaultDevice(loaded.host, unplugged);
    {
        FilePlayer::Setup setup;
        setup.outputUnit = 3;
        FilePlayer player(loaded, path, setup);
        player.play();
        ASSERT_EQ(KVXPlatformStep(unplugged, 1000), 1000u);
        ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(unplugged), 0);
        EXPECT_NE(player.get("DefaultDeviceID"), unplugged);
        chooseDefaultDevice(loaded.host, fallback.id());
        stepUntilRendering(player, fallback, 1000);
        // Output before the move to the new device is lost, so the new device continues at a later frame.
        const Samples rendered = fallback.output();
        const auto found =
            std::search(sound.samples.begin(), sound.samples.end(), rendered.begin(), rendered.end());
        EXPECT_TRUE(found != sound.samples.end());
        EXPECT_GE(found - sound.samples.begin(), 2000);
        EXPECT_TRUE(player.isPlaying());
        player.pause();
    }
}

// ---- lost devices ----

TEST_F(FilePlayerDevices, UnpluggedOrDeadDuringPlaybackCanBeReplaced)
{
    for (const bool dies : {false, true}) {
        SCOPED_TRACE(dies ? "dies" : "is unplugged");
        FilePlayer player(loaded, path);
        const KVXDeviceID lost = addDevice("Lost", 2, 0, true);
        player.object().set("CurrentDeviceID", std::int64_t(lost));
        player.play();
        ASSERT_EQ(KVXPlatformStep(lost, 1000), 1000u);
        ASSERT_EQ(dies ? KVXPlatformKillDevice(lost) : KVXPlatformRemoveSimulatedDevice(lost), 0);
        // Properties and methods of the player still work.
        EXPECT_GE(player.get("CurrentTime"), 1000.0 / 44100);
        player.set("TimeRate", 1);
        player.object().call("Reset");
        player.object().call("ChannelMap");
        player.object().set("CurrentDeviceID", std::int64_t(player.device().id()));
        EXPECT_EQ(player.error(), 0);
        player.set("CurrentTime", 0.5);
        if (!player.isPlaying()) player.play();
        expectSamples(player.render(1000), frames(22050, 1000));
        if (dies) KVXPlatformRemoveSimulatedDevice(lost);
    }
}

TEST_F(FilePlayerDevices, UnpluggedDuringPlaybackThePlayerPausesOrIsDestroyedWithoutHanging)
{
    for (const bool pauses : {false, true}) {
        SCOPED_TRACE(pauses);
        FilePlayer player(loaded, path);
        const KVXDeviceID lost = addDevice("Lost", 2, 0); // a paced device, which has a render thread
        player.object().set("CurrentDeviceID", std::int64_t(lost));
        player.play();
        while (player.get("CurrentTime") == 0.0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(lost), 0);
        if (!pauses) continue; // the player is destroyed while the device is being removed
        player.pause();
        EXPECT_FALSE(player.isPlaying());
    }
}

TEST_F(FilePlayerDevices, ThatChangeTheirRateOrSliceDuringPlaybackContinue)
{
    FilePlayer player(loaded, path);
    player.play();
    player.render(1000);
    ASSERT_EQ(KVXPlatformConfigureDevice(player.device().id(), 0, 0, 64), 0);
    expectSamples(player.render(1000), frames(1000, 1000));
    ASSERT_EQ(KVXPlatformConfigureDevice(player.device().id(), 88200, 0, 0), 0);
    // The platform adapts to the new rate asynchronously, and renders at the former ratio until then.
    double ratio = 0;
    while (ratio < 1.9 || ratio > 2.1) {
        const double before = player.get("CurrentTime");
        ASSERT_TRUE(player.isPlaying());
        if (player.render(512).empty()) continue;
        player.render(2048);
        ratio = 2560 / 44100.0 / (player.get("CurrentTime") - before);
        player.set("CurrentTime", 0.1);
    }
    EXPECT_TRUE(player.isPlaying());
}

// ---- channel maps ----

TEST_F(FilePlayerDevices, ChannelMapAssignsFileChannelsToDeviceChannels)
{
    using Map = std::vector<HostInteger>;
    const struct {
        Map set;
        Map reads;
        std::vector<int> sources; ///< number of the file channel on each device channel; -1: silence
        const char* why;
    } facts[] = {
        {{1, 0, -1, -1}, {1, 0, -1, -1}, {1, 0, -1, -1}, "swapped"},
        {{-1, -1, 0, 1}, {-1, -1, 0, 1}, {-1, -1, 0, 1}, "on the last two channels"},
        {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, "one file channel on all device channels"},
        {{0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, -1, -1}, "channels that the file lacks are silent"},
        {{1}, {1, -1, -1, -1}, {1, -1, -1, -1}, "short map: the other device channels are silent"},
        {{1, 0, 1, 0, 0, 0, 0}, {1, 0, 1, 0}, {1, 0, 1, 0}, "long map: extra entries are dropped"},
        {{}, {-1, -1, -1, -1}, {-1, -1, -1, -1}, "empty map: silence"},
        {{-1, 1}, {-1, 1, -1, -1}, {-1, 1, -1, -1}, "short map with a silent channel"},
    };
    FilePlayer::Setup setup;
    setup.deviceChannels = 4;
    const auto check = [&](FilePlayer& player, const std::vector<int>& channels) {
        player.set("CurrentTime", 0.0);
        const Samples rendered = player.render(2000);
        for (int channel = 0; channel < 4; ++channel) {
            const int from = channels[std::size_t(channel)];
            expectSamples(channelOf(rendered, 4, channel),
                          from < 0 ? silence(2000) : channelOf(frames(0, 2000), 2, from));
        }
    };
    const auto read = [](const FilePlayer& player) {
        Map map;
        for (const double entry : player.object().call("ChannelMap").array().numbers())
            map.push_back(HostInteger(entry));
        EXPECT_EQ(player.error(), 0);
        return map;
    };
    for (const auto& fact : facts)
        for (const bool isPlaying : {false, true}) {
            SCOPED_TRACE(testing::Message() << fact.why << (isPlaying ? ", during playback" : ""));
            FilePlayer player(loaded, path, setup);
            EXPECT_EQ(read(player), (Map{0, 1, -1, -1}));
            if (isPlaying) {
                player.play();
                check(player, {0, 1, -1, -1});
            }
            player.object().call("setChannelMap", host::Array::of(fact.set));
            EXPECT_EQ(player.error(), 0);
            EXPECT_EQ(read(player), fact.reads);
            player.play();
            check(player, fact.sources);
        }

    FilePlayer player(loaded, path, setup);
    player.play();
    player.object().call("setChannelMap", nullptr);
    EXPECT_EQ(player.error(), 0);
    EXPECT_EQ(read(player), (Map{-1, -1, -1, -1})) << "nil equals an empty map";
    check(player, {-1, -1, -1, -1});
    player.object().call("setChannelMap", host::Array::of(Map{1, -2, 0, 0}));
    EXPECT_NE(player.error(), 0) << "channel -2 does not exist";
    check(player, {-1, -1, -1, -1});
    player.object().call("setChannelMap", host::Array::of(Map{0, 1}));
    check(player, {0, 1, -1, -1});
}

} // namespace
