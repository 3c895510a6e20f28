// The file player with various slice sizes, slice limits, output units and device rates.
#include "tests/endtoend/fileplayer/file_player.h"

#include <cmath>

namespace {

using namespace endtoend;
using support::Sound;

using FilePlayerSlices = FilePlayerTest;

TEST_F(FilePlayerSlices, OfAnySizeAndLimitRenderTheFileExactly)
{
    const Sound sound = support::makeNoise(44100, 2, 20000);
    const std::string path = write(sound);
    for (const std::uint32_t slice : {1u, 2u, 511u, 512u, 1156u, 1157u, 2048u, 8192u})
        for (const int limit : {0, 1, 1156, 1157, 4096, 8192}) {
            SCOPED_TRACE(testing::Message() << "slices of " << slice << ", limit " << limit);
            FilePlayer::Setup setup;
            setup.sliceFrames = slice;
            setup.maximumFramesPerSlice = limit;
            FilePlayer player(loaded, path, setup);
            EXPECT_EQ(player.get("MaximumFramesPerSlice"), limit);
            player.play();
            expectThenSilence(player.render(20000 + 3 * 8192), sound.samples);
        }
}

TEST_F(FilePlayerSlices, OfChangingSizesRenderTheFileExactly)
{
    const Sound sound = support::makeNoise(44100, 1, 30000);
    FilePlayer player(loaded, write(sound));
    player.play();
    Samples rendered;
    for (const std::size_t frames : {1, 511, 513, 2, 4096, 7, 1024, 12000, 12000, 600}) {
        const Samples more = player.render(frames);
        rendered.insert(rendered.end(), more.begin(), more.end());
    }
    expectThenSilence(rendered, sound.samples);
}

TEST_F(FilePlayerSlices, RenderTheFileExactlyWithEveryRateUnit)
{
    const Sound sound = support::makeNoise(44100, 2, 20000);
    const std::string path = write(sound);
    for (const int unit : {0, 1, 2}) {
        SCOPED_TRACE(unit);
        FilePlayer::Setup setup;
        setup.timePitchUnit = unit;
        FilePlayer player(loaded, path, setup);
        player.play();
        expectThenSilence(player.render(21000), sound.samples);
    }
}

TEST_F(FilePlayerSlices, ShortFilesRenderExactly)
{
    for (const std::size_t frames : {1u, 2u, 511u, 512u, 513u})
        for (const std::uint32_t slice : {1u, 512u, 8192u}) {
            SCOPED_TRACE(testing::Message() << frames << " frames, slices of " << slice);
            const Sound sound = support::makeNoise(48000, 2, frames);
            FilePlayer::Setup setup;
            setup.sliceFrames = slice;
            FilePlayer player(loaded, write(sound), setup);
            player.play();
            expectThenSilence(player.render(frames + slice + 10), sound.samples);
            EXPECT_EQ(player.get("CurrentTime"), player.get("TrackLength"));
        }
}

// ---- output units ----

TEST_F(FilePlayerSlices, EveryOutputUnitRendersTheFileExactly)
{
    const Sound sound = support::makeNoise(44100, 2, 5000);
    const std::string path = write(sound);
    SteppedDevice device;
    for (const std::uint32_t role : {'dOut', 'sOut'}) chooseDefaultDevice(loaded.host, device.id(), role);
    const struct {
        int number;
        bool takesDevice;
        const char* why;
    } facts[] = {
        {-1, true, "any other number: the unit that takes a device"},
        {0, true, "the unit that takes a device"},
        {2, true, "the unit that takes a device"},
        {3, false, "the default device"},
        {4, false, "the device for alert sounds"},
        {5, true, "the unit that takes a device"},
        {7, true, "the unit that takes a device"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.number << ": " << fact.why);
        const host::Object player = loaded.host.create(filePlayerClass);
        player.set("OutputUnit", fact.number);
        ASSERT_TRUE(player.call("LoadFile", host::FolderItem::at(path), 2, 2).boolean());
        EXPECT_EQ(player.get("OutputUnit").integer(), fact.number);
        EXPECT_EQ(player.get("CurrentDeviceID").integer(), std::int64_t(device.id())) << "the default";
        player.set("CurrentDeviceID", std::int64_t(device.id()));
        EXPECT_EQ(player.get("Lasterror").integer() == 0, fact.takesDevice);
        device.clearOutput();
        EXPECT_FALSE(player.get("Playing").boolean());
        player.call("Play");
        EXPECT_EQ(player.get("Lasterror").integer(), 0);
        EXPECT_TRUE(player.get("Playing").boolean());
        device.step(6000);
        expectThenSilence(device.output(), sound.samples);
        player.call("Pause");
        EXPECT_FALSE(player.get("Playing").boolean());
        EXPECT_EQ(device.step(512), 0u);
    }
}

TEST_F(FilePlayerSlices, OutputUnitChangesApplyToTheNextLoad)
{
    const Sound sound = support::makeNoise(44100, 2, 5000);
    FilePlayer player(loaded, write(sound));
    player.object().set("OutputUnit", 1);
    player.object().set("MaximumFramesPerSlice", 1 << 20);
    EXPECT_EQ(player.get("OutputUnit"), 1);
    player.play();
    expectThenSilence(player.render(6000), sound.samples);
}

TEST_F(FilePlayerSlices, GenericOutputReportsPlayingButRendersNothing)
{
    FilePlayer::Setup setup;
    setup.outputUnit = 1;
    FilePlayer player(loaded, write(support::makeNoise(44100, 2, 5000)), setup);
    EXPECT_FALSE(player.isPlaying());
    player.play();
    EXPECT_TRUE(player.isPlaying());
    EXPECT_EQ(player.render(2000).size(), 0u) << "no device drives the unit";
    EXPECT_EQ(player.get("CurrentTime"), 0.0);
    EXPECT_EQ(player.get("CurrentDeviceID"), 0.0);
    EXPECT_NE(player.error(), 0);
    player.pause();
    EXPECT_FALSE(player.isPlaying());
}

// ---- other rates ----

TEST_F(FilePlayerSlices, DevicesOfOtherRatesRenderTheSameToneForTheSameTime)
{
    const struct {
        int file;
        double device;
        std::uint32_t slice;
    } facts[] = {
        {44100, 48000, 512}, {48000, 44100, 512},  {44100, 96000, 2048},
        {96000, 44100, 1},   {8000, 48000, 512},   {8000, 192000, 64},
        {192000, 8000, 512}, {22050, 44100, 8192}, {44100, 44056, 512},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.file << " Hz on " << fact.device << " Hz");
        const double hertz = 440, seconds = 0.8;
        FilePlayer::Setup setup;
        setup.deviceRate = fact.device;
        setup.sliceFrames = fact.slice;
        FilePlayer player(loaded, write(makeTone(fact.file, 2, seconds, hertz)), setup);
        EXPECT_EQ(player.get("SampleRate"), fact.file) << "the rate of the file";
        player.play();
        const double expected = seconds * fact.device;
        const Samples rendered = player.render(std::size_t(expected + 0.3 * fact.device));
        const Samples left = channelOf(rendered, 2, 0);
        expectSamples(channelOf(rendered, 2, 1), left);
        EXPECT_NEAR(double(framesAbove(left, 0.05f)), expected, 0.005 * fact.device);
        const Samples middle = partOf(left, 1, std::size_t(expected / 8), std::size_t(expected * 3 / 4));
        EXPECT_NEAR(frequencyOf(middle, fact.device), hertz, 0.001 * hertz);
        EXPECT_NEAR(decibels(amplitudeAt(middle, hertz, fact.device)), decibels(0.5), 0.1);
        EXPECT_EQ(player.get("CurrentTime"), player.get("TrackLength"));
    }
}

TEST_F(FilePlayerSlices, ToneKeepsItsPhaseAtTwiceTheRate)
{
    FilePlayer::Setup setup;
    setup.deviceRate = 88200;
    FilePlayer player(loaded, write(makeTone(44100, 1, 0.5, 1000)), setup);
    player.play();
    const Samples rendered = player.render(44100);
    const Sound expected = makeTone(88200, 1, 0.5, 1000);
    for (std::size_t i = 2000; i < 42000; ++i) ASSERT_NEAR(rendered[i], expected.samples[i], 1e-3) << i;
}

} // namespace
