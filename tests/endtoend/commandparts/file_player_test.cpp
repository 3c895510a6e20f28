// The file player of the command, called directly, in cases that the whole command cannot produce.
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/file_player.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/play/session.h"
#include "host/kvx/text/failure.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

using namespace endtoend;
using kvx::Key;
using support::Sound;

constexpr kvx::Advice advice = {"play another file", "play it elsewhere"};

struct CommandFilePlayer : LoadedHostTest {
    support::TemporaryFolder folder;
    kvx::CoreAudio core{loaded.host};

    /// Return a file player on `device` that has loaded the sound.
    std::unique_ptr<kvx::FilePlayer> playerOf(const Sound& sound, const SteppedDevice& device,
                                              const kvx::PlayerOptions& options = {})
    {
        support::writeSound(sound, folder / "in.wav");
        auto player = std::make_unique<kvx::FilePlayer>(loaded.host, core, advice);
        player->chooseRateUnit(options.unit);
        player->load(folder / "in.wav", sound.channels);
        player->setDevice(device.id());
        kvx::applyOptions(options, *player);
        return player;
    }
};

TEST_F(CommandFilePlayer, CountsTheFramesOfAFile)
{
    const struct {
        int rate;
        std::size_t frames;
    } facts[] = {{44100, 1},     {44100, 2},    {44100, 3},      {44100, 44100}, {44100, 44101},
                 {48000, 12345}, {8000, 7999},  {192000, 19201}, {11025, 97},    {44100, 441000},
                 {22050, 65537}, {96000, 4801}, {32000, 1023},   {16000, 999}};
    SteppedDevice device;
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.frames) + " at " + std::to_string(fact.rate));
        auto player = playerOf(support::makeNoise(fact.rate, 1, fact.frames), device);
        const auto frames = std::int64_t(fact.frames);
        EXPECT_TRUE(player->holdsAll(frames));
        EXPECT_EQ(player->position(), 0.0) << "counting leaves the position at the start";
        for (const std::int64_t more : {frames + 1, 2 * frames, 3 * frames, 1000 * frames})
            EXPECT_FALSE(player->holdsAll(more)) << more;
    }
    EXPECT_EQ(liveObjects(loaded.host).find("FolderItem"), std::string::npos);
}

TEST_F(CommandFilePlayer, SetsRatesToTheNearestHundredth)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 441), device);
    for (int hundredths = 4; hundredths <= 400; ++hundredths) {
        player->setRate(hundredths / 100.0);
        ASSERT_EQ(player->rate(), hundredths / 100.0);
    }
    player->setRate(1.239);
    EXPECT_EQ(player->rate(), 1.24) << "rounded up";
    player->setRate(1.234);
    EXPECT_EQ(player->rate(), 1.23) << "rounded down";
}

TEST_F(CommandFilePlayer, SetsTimesToTheNearestFrame)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 44100), device);
    for (int frame = 1; frame < 44100; frame += 7) {
        const double time = frame / 44100.0;
        player->seek(time);
        player->setLoopOut(time);
        player->setLoopIn(time);
        ASSERT_EQ(std::lround(player->position() * 44100), frame);
        ASSERT_EQ(std::lround(player->loopIn() * 44100), frame);
        ASSERT_EQ(std::lround(player->loopOut() * 44100), frame);
        player->setLoopIn(0);
    }
    player->seek(2);
    EXPECT_EQ(player->position(), 1.0) << "limited to the end";
}

TEST_F(CommandFilePlayer, CarriesVolumeRateAndPitchToAnotherPlayer)
{
    for (const auto unit : {kvx::RateUnit::timePitch, kvx::RateUnit::varispeed}) {
        SCOPED_TRACE(int(unit));
        kvx::PlayerOptions options;
        options.unit = unit;
        SteppedDevice device;
        auto from = playerOf(support::makeNoise(44100, 2, 441), device, options);
        auto to = playerOf(support::makeNoise(48000, 1, 480), device, options);
        from->setVolume(0.25);
        from->setRate(1.5);
        from->setPitch(-100);
        kvx::copySettings(*from, *to);
        EXPECT_EQ(to->volume(), 0.25);
        EXPECT_EQ(to->rate(), from->rate());
        EXPECT_EQ(to->pitch(), -100.0);
    }
}

TEST_F(CommandFilePlayer, RateAndPitchOfVarispeedAreOneValue)
{
    kvx::PlayerOptions options;
    options.unit = kvx::RateUnit::varispeed;
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 441), device, options);
    player->setRate(2);
    EXPECT_NEAR(player->pitch(), 1200, 0.01);
    player->setPitch(-1200);
    EXPECT_NEAR(player->rate(), 0.5, 1e-6) << "the last write wins";
    EXPECT_EQ(player->rates().low, 0.25);
    EXPECT_EQ(player->rates().high, 4.0);
}

TEST_F(CommandFilePlayer, HasNoDelayWithNeutralSettings)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 44100), device);
    EXPECT_EQ(player->delay().tail, 0.0);
    EXPECT_EQ(player->renderError(), 0);
    EXPECT_FALSE(player->isAtEnd());
    player->play();
    EXPECT_EQ(device.step(44099), 44099u);
    EXPECT_FALSE(player->isAtEnd()) << "one frame before the end";
    device.step(1);
    EXPECT_TRUE(player->isAtEnd());
    player->pause();
    EXPECT_EQ(player->renderError(), 0);
}

// At another rate than the device's, the output unit pulls frames ahead.
TEST_F(CommandFilePlayer, AudiblePositionIsThatOfTheOutput)
{
    for (const double deviceRate : {44100.0, 48000.0, 22050.0}) {
        SCOPED_TRACE(deviceRate);
        const bool isConverted = deviceRate != 44100;
        SteppedDevice device(deviceRate);
        auto player = playerOf(support::makeNoise(44100, 2, 44100), device);
        EXPECT_EQ(player->audiblePosition(), 0);
        player->play();
        double frames = 0;
        for (const std::uint32_t step : {1u, 511u, 512u, 100u, 4096u, 3u}) {
            frames += device.step(step);
            const double audible = player->audiblePosition(), ahead = player->position() - audible;
            EXPECT_NEAR(audible, frames / deviceRate, 1.5 / 44100);
            EXPECT_LE(ahead, 0.025);
            EXPECT_EQ(ahead > 0, isConverted);
        }
        kvx::applyKey(Key::loopOut, *player);
        EXPECT_NEAR(player->loopOut(), frames / deviceRate, 2.0 / 44100) << "set at the audible frame";
        player->pause();
        EXPECT_EQ(player->audiblePosition(), player->position()) << "playback continues there";
    }
}

TEST_F(CommandFilePlayer, SeekKeysMoveFromTheAudiblePosition)
{
    SteppedDevice device(48000);
    auto player = playerOf(support::makeNoise(44100, 1, 8 * 44100), device);
    player->play();
    device.step(9600);
    kvx::applyKey(Key::forward, *player);
    EXPECT_NEAR(player->position(), 5.2, 2.0 / 44100);
    device.step(24000);
    const double audible = player->audiblePosition();
    kvx::applyKey(Key::back, *player);
    EXPECT_NEAR(player->position(), audible - 5, 2.0 / 44100);
}

// Just after the jump to the loop start, the units have pulled frames of the loop's start already.
TEST_F(CommandFilePlayer, AudiblePositionIsNotBeforeTheLoopStart)
{
    SteppedDevice device(48000);
    auto player = playerOf(support::makeNoise(44100, 1, 44100), device);
    player->setLoopIn(0.2);
    player->setLoopOut(0.3);
    player->setLooping(true);
    player->play();
    double before = 0, now = 0;
    for (int i = 0; i < 1000 && now >= before; ++i) {
        before = now;
        device.step(48);
        now = player->position();
    }
    ASSERT_LT(now, before) << "after the jump";
    EXPECT_EQ(player->audiblePosition(), player->loopIn());
    kvx::applyKey(Key::loopIn, *player);
    EXPECT_NEAR(player->loopIn(), 0.2, 2.0 / 44100);
}

TEST_F(CommandFilePlayer, IsSilentAfterTheReportedLengthAndTail)
{
    const struct {
        kvx::RateUnit unit;
        double rate, pitch;
    } facts[] = {
        {kvx::RateUnit::timePitch, 1, 0},   {kvx::RateUnit::timePitch, 2, 0},
        {kvx::RateUnit::timePitch, 0.5, 0}, {kvx::RateUnit::timePitch, 1, 700},
        {kvx::RateUnit::varispeed, 2, 0},   {kvx::RateUnit::varispeed, 0.5, 0},
    };
    const std::size_t frames = 44100;
    const Sound sound = support::makeNoise(44100, 2, frames);
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.rate) + ", " + std::to_string(fact.pitch));
        kvx::PlayerOptions options;
        options.unit = fact.unit;
        if (fact.rate != 1) options.rate = fact.rate;
        if (fact.pitch != 0) options.pitch = fact.pitch;
        SteppedDevice device;
        auto player = playerOf(sound, device, options);
        const auto length = kvx::framesRendered(frames, 44100, player->rate(), 44100) +
                            kvx::framesOf(player->delay().tail, 44100);
        player->play();
        device.step(std::uint32_t(length + 44100));
        player->pause();
        EXPECT_TRUE(player->isAtEnd());
        EXPECT_EQ(player->renderError(), 0);
        float loudest = 0, before = 0;
        for (std::size_t i = 0; i < device.output().size(); ++i)
            (i < length * 2 ? before : loudest) =
                std::max(i < length * 2 ? before : loudest, std::fabs(device.output()[i]));
        EXPECT_GT(before, 0.5f);
        EXPECT_LT(loudest, 1e-3f) << "sound after the reported end";
    }
}

TEST_F(CommandFilePlayer, CallsTheProgramWhileItLoads)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 30), folder / "long.wav");
    kvx::FilePlayer player(loaded.host, core, advice);
    int calls = 0;
    player.loadInBackground(folder / "long.wav", 2, [&calls] { ++calls; });
    EXPECT_GT(calls, 0);
    EXPECT_EQ(player.duration(), 30.0);
    const int after = calls;
    KVXPlatformDrainMainQueue(0);
    EXPECT_EQ(calls, after) << "no calls after the load";
}

TEST_F(CommandFilePlayer, FailedLoadNamesTheNextStep)
{
    kvx::FilePlayer player(loaded.host, core, advice);
    try {
        player.load(folder / "missing.wav", 2);
        ADD_FAILURE() << "no exception";
    } catch (const kvx::Failure& failure) {
        const std::string text = failure.what();
        EXPECT_NE(text.find("missing.wav is not loaded: -43: there is no such file"), std::string::npos)
            << text;
        EXPECT_EQ(text.substr(text.rfind(';')), "; play another file");
    }
}

TEST_F(CommandFilePlayer, FailedStartNamesTheNextStep)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 441), device);
    KVXPlatformRefuseStart(device.id(), -50);
    try {
        player->play();
        ADD_FAILURE() << "no exception";
    } catch (const kvx::Failure& failure) {
        const std::string text = failure.what();
        EXPECT_EQ(text.rfind("the device does not start: -50", 0), 0u) << text;
        EXPECT_EQ(text.substr(text.rfind(';')), "; play it elsewhere");
    }
}

TEST_F(CommandFilePlayer, KeysChangeTransportLoopAndSettings)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 44100 * 20), device);
    const auto press = [&](Key key) { return kvx::applyKey(key, *player); };

    press(Key::pause);
    EXPECT_TRUE(player->isPlaying());
    press(Key::pause);
    EXPECT_FALSE(player->isPlaying());

    press(Key::back);
    EXPECT_EQ(player->position(), 0.0);
    press(Key::forward);
    EXPECT_EQ(player->position(), 5.0);

    EXPECT_NE(press(Key::loop), "") << "neither loop point is set";
    press(Key::loopIn);
    EXPECT_NE(press(Key::loop), "") << "only one loop point is set";
    press(Key::forward);
    press(Key::loopOut);
    EXPECT_EQ(player->loopIn(), 5.0);
    EXPECT_EQ(player->loopOut(), 10.0);
    EXPECT_EQ(press(Key::loop), "");
    EXPECT_TRUE(player->isLooping());
    press(Key::loopIn);
    EXPECT_FALSE(player->isLooping()) << "a loop of no length ends";

    press(Key::softer);
    EXPECT_NEAR(player->volume(), 0.95, 1e-6);
    press(Key::louder);
    press(Key::louder);
    EXPECT_EQ(player->volume(), 1.0);
    press(Key::faster);
    EXPECT_EQ(player->rate(), 1.05);
    press(Key::slower);
    press(Key::slower);
    EXPECT_EQ(player->rate(), 0.95);
    press(Key::higher);
    EXPECT_EQ(player->pitch(), 100.0);
    press(Key::lower);
    press(Key::lower);
    EXPECT_EQ(player->pitch(), -100.0);
}

TEST_F(CommandFilePlayer, LoopsTheWholeFile)
{
    SteppedDevice device;
    const Sound sound = support::makeNoise(44100, 2, 4410);
    auto player = playerOf(sound, device);
    kvx::applyKey(Key::loopFile, *player);
    EXPECT_TRUE(player->isLooping());
    EXPECT_EQ(player->loopIn(), 0.0);
    EXPECT_EQ(player->loopOut(), 0.1);
    player->play();
    device.step(4410);
    device.step(4410);
    std::vector<float> expected = sound.samples;
    expected.insert(expected.end(), sound.samples.begin(), sound.samples.end());
    EXPECT_EQ(device.output() == expected, true);
    kvx::applyKey(Key::loopFile, *player);
    EXPECT_FALSE(player->isLooping());
    kvx::applyKey(Key::loopIn, *player);
    kvx::applyKey(Key::loopFile, *player);
    EXPECT_TRUE(player->isLooping()) << "another loop becomes the whole file";
    EXPECT_EQ(player->loopIn(), 0.0);
}

TEST_F(CommandFilePlayer, LoopFromTheStartNeedsOnlyItsEnd)
{
    SteppedDevice device;
    auto player = playerOf(support::makeNoise(44100, 2, 44100 * 20), device);
    kvx::applyKey(Key::forward, *player);
    kvx::applyKey(Key::loopOut, *player);
    EXPECT_EQ(kvx::applyKey(Key::loop, *player), "");
    EXPECT_TRUE(player->isLooping());
    EXPECT_EQ(player->loopIn(), 0.0);
    EXPECT_EQ(player->loopOut(), 5.0);
}

} // namespace
