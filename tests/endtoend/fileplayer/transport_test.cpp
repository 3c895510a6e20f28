// Where a player stands, and where it goes: heard on a file whose every frame tells its number.
#include "tests/endtoend/fileplayer/file_player.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace endtoend;
using support::Sound;

constexpr int rate = 8000;
constexpr std::size_t length = 20000; // frames: two seconds and a half

double secondsAt(double frame) { return frame / rate; }

// The output unit asks for no more at a time.
constexpr std::size_t largestSlice = 1156;

/// The rule, slice by slice: a slice is heard whole, silence behind the end; then comes the jump.
struct Rule {
    std::size_t length, position = 0;
    double in = -1, out = -1;
    bool isLooping = false;

    void slice(std::size_t frames, Samples& heard)
    {
        for (std::size_t frame = position; frame < position + frames; ++frame)
            heard.push_back(frame < length ? float(frame + 1) / 65536 : 0.0f);
        position = std::min(position + frames, length);
        if (!isLooping) return;
        if (in > double(position)) position = std::size_t(in);
        if (double(position) >= out) position = std::size_t(in);
    }

    /// So many frames of a device of slices so long.
    Samples slices(std::size_t frames, std::size_t deviceSlice)
    {
        Samples heard;
        while (heard.size() < frames) {
            const std::size_t until = std::min(heard.size() + deviceSlice, frames);
            while (heard.size() < until) slice(std::min(until - heard.size(), largestSlice), heard);
        }
        return heard;
    }
};

struct FilePlayerTransport : testing::Test {
    LoadedHost loaded;
    const support::TemporaryFolder folder;
    std::string path = folder / "ramp.wav";

    FilePlayerTransport() { support::writeSound(makeRamp(rate, 1, length), path); }
    ~FilePlayerTransport() override
    {
        EXPECT_EQ(leftOver(loaded.host), "");
        EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
    }
};

/// A player and the rule side by side.
struct Pair {
    FilePlayer player;
    Rule rule{length};
    std::size_t slice;

    Pair(LoadedHost& loaded, const std::string& path, std::uint32_t sliceFrames)
        : player(loaded, path, setupOf(sliceFrames)), slice(sliceFrames)
    {
    }

    static FilePlayer::Setup setupOf(std::uint32_t sliceFrames)
    {
        FilePlayer::Setup setup;
        setup.sliceFrames = sliceFrames;
        return setup;
    }

    void loop(double in, double out)
    {
        player.set("LoopIn", secondsAt(in));
        player.set("LoopOut", secondsAt(out));
        player.object().set("Looping", true);
        rule.in = in, rule.out = out, rule.isLooping = true;
        EXPECT_TRUE(player.object().get("Looping").boolean());
        EXPECT_EQ(player.get("LoopIn"), secondsAt(in));
        EXPECT_EQ(player.get("LoopOut"), secondsAt(out));
    }
    void seek(double frame)
    {
        player.set("CurrentTime", secondsAt(frame));
        rule.position = std::size_t(frame);
        EXPECT_EQ(player.get("CurrentTime"), secondsAt(frame));
    }
    void hear(std::size_t frames)
    {
        expectSamples(player.hear(frames), rule.slices(frames, slice));
        EXPECT_EQ(player.get("CurrentTime"), secondsAt(double(rule.position)));
    }
};

TEST_F(FilePlayerTransport, LoopsJumpWhereASliceEnds)
{
    const struct {
        double in, out;
        const char* why;
    } facts[] = {
        {1000, 2000, "within the file"},
        {0, 1024, "from the begin"},
        {0, 1, "shorter than a slice"},
        {5000, 5000, "of no length"},
        {12000, double(length), "to the end of the file"},
        {0, double(length), "all of it"},
        {length - 1.0, double(length), "the last frame"},
        {double(length), double(length), "behind the last frame"},
        {1000, 30000, "an end behind the file's: it is never reached"},
    };
    for (const std::uint32_t slice : {1u, 100u, 512u, 2048u})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << fact.why << ", slices of " << slice);
            Pair pair(loaded, path, slice);
            pair.loop(fact.in, fact.out);
            pair.player.play();
            for (int i = 0; i < 5; ++i) pair.hear(6144);
        }
}

TEST_F(FilePlayerTransport, LoopsAreSetMovedAndLeftWhileItPlays)
{
    Pair pair(loaded, path, 512);
    pair.player.play();
    pair.hear(3000);
    pair.loop(1000, 2000); // behind us: we are past its end
    pair.hear(5000);
    pair.loop(6000, 8000); // in front of us: we go there
    pair.hear(5000);
    pair.player.object().set("Looping", false);
    pair.rule.isLooping = false;
    pair.hear(length);
    pair.seek(100);
    pair.hear(1000);
    // With one end moved past the other, there is no loop to switch on.
    pair.loop(500, 900);
    pair.hear(2000);
    pair.player.set("LoopIn", secondsAt(1500));
    pair.rule.in = pair.rule.out = 1500;
    EXPECT_EQ(pair.player.get("LoopOut"), secondsAt(1500));
    pair.hear(3000);
}

TEST_F(FilePlayerTransport, LoopsNeedBothEnds)
{
    const FilePlayer player(loaded, path);
    const auto isLooping = [&] { return player.object().get("Looping").boolean(); };
    player.object().set("Looping", true);
    EXPECT_FALSE(isLooping()) << "no ends";
    EXPECT_EQ(player.get("LoopIn"), 0.0);
    EXPECT_EQ(player.get("LoopOut"), 0.0);
    player.set("LoopIn", 2.0);
    EXPECT_EQ(player.get("LoopOut"), 2.0) << "an end that was not set goes along";
    EXPECT_FALSE(isLooping()) << "setting ends switches nothing on";
    player.set("LoopOut", 1.0);
    EXPECT_EQ(player.get("LoopOut"), 2.0) << "no end before the begin";
    player.object().set("Looping", true);
    EXPECT_TRUE(isLooping());
    player.set("LoopIn", 0.0);
    EXPECT_EQ(player.get("LoopIn"), 0.0);
    EXPECT_TRUE(isLooping()) << "nor off";
    player.object().set("Looping", false);
    EXPECT_FALSE(isLooping());
}

TEST_F(FilePlayerTransport, SeeksGoThereWithTheNextSlice)
{
    for (const std::uint32_t slice : {1u, 512u, 2048u}) {
        SCOPED_TRACE(slice);
        Pair pair(loaded, path, slice);
        pair.seek(777);
        pair.player.play();
        pair.hear(1500);
        for (const double frame : {10000.0, 1.0, 0.0, double(length) - 1, double(length), 19000.0}) {
            SCOPED_TRACE(frame);
            pair.seek(frame);
            pair.hear(2500);
        }
    }
}

TEST_F(FilePlayerTransport, TimesThatNoFileHasAreItsEnd)
{
    for (const double seconds : {-1.0, 3.0, 1e6, 536870.0, secondsAt(length + 1)}) {
        SCOPED_TRACE(seconds);
        FilePlayer player(loaded, path);
        player.play();
        player.hear(512);
        player.set("CurrentTime", seconds);
        EXPECT_GT(player.get("CurrentTime"), player.get("TrackLength")) << "nothing is corrected yet";
        expectSamples(player.hear(2000), silence(2000));
        EXPECT_EQ(player.get("CurrentTime"), player.get("TrackLength"));
    }
    // What is no frame number of 64 bits is frame 0.
    for (const double seconds : {std::nan(""), std::numeric_limits<double>::infinity(), 1e300}) {
        SCOPED_TRACE(seconds);
        Pair pair(loaded, path, 512);
        pair.player.play();
        pair.hear(1000);
        pair.player.set("CurrentTime", seconds);
        pair.rule.position = 0;
        pair.hear(1000);
    }
}

TEST_F(FilePlayerTransport, TheLastSliceIsMusicInFrontOfTheEndAndSilenceBehindIt)
{
    for (const std::size_t before : {0u, 1u, 100u, 511u}) {
        SCOPED_TRACE(before);
        Pair pair(loaded, path, 512);
        pair.seek(double(length - before));
        pair.player.play();
        const Samples heard = pair.player.hear(512);
        Samples expected = partOf(makeRamp(rate, 1, length).samples, 1, length - before, before);
        expectThenSilence(heard, expected);
        EXPECT_EQ(pair.player.get("CurrentTime"), pair.player.get("TrackLength"));
        EXPECT_TRUE(pair.player.isPlaying());
        // And from there on, if there is a loop: silence is only what the slice had left.
        pair.rule.position = length;
        pair.loop(3000, double(length));
        pair.hear(512);
        pair.hear(5000);
    }
}

TEST_F(FilePlayerTransport, PausesKeepThePlace)
{
    Pair pair(loaded, path, 512);
    const auto& player = pair.player;
    EXPECT_FALSE(player.isPlaying());
    player.pause();
    EXPECT_EQ(player.error(), 0);
    EXPECT_EQ(pair.player.hear(512).size(), 0u);
    player.play();
    player.play(); // again: nothing changes
    EXPECT_EQ(player.error(), 0);
    EXPECT_TRUE(player.isPlaying());
    pair.hear(1000);
    player.pause();
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(pair.player.hear(1000).size(), 0u) << "nobody plays";
    player.object().set("Playing", true);
    EXPECT_TRUE(player.isPlaying());
    pair.hear(1000);
    player.object().set("Playing", false);
    EXPECT_FALSE(player.isPlaying());
    pair.seek(5000); // while it rests
    player.play();
    pair.hear(1000);
}

TEST_F(FilePlayerTransport, ResetKeepsThePlaceToo)
{
    Pair pair(loaded, path, 512);
    pair.player.object().call("Reset");
    EXPECT_EQ(pair.player.error(), 0);
    pair.player.play();
    pair.hear(1000);
    for (int i = 0; i < 3; ++i) {
        pair.player.object().call("Reset");
        EXPECT_EQ(pair.player.error(), 0);
        pair.hear(1000);
    }
    pair.player.pause();
    pair.player.object().call("Reset");
    pair.player.play();
    pair.hear(1000);
}

// Reset gives up what was pulled ahead and is not heard yet.
TEST_F(FilePlayerTransport, ResetWithARateForgetsWhatWasOnItsWay)
{
    LoadedHost& host = loaded;
    support::writeSound(makeTone(44100, 1, 3, 440), folder / "tone.wav");
    FilePlayer player(host, folder / "tone.wav");
    player.set("TimeRate", 1.5);
    player.play();
    player.hear(22050);
    const double before = player.get("CurrentTime");
    player.object().call("Reset");
    EXPECT_EQ(player.get("CurrentTime"), before);
    EXPECT_NEAR(frequencyOf(player.hear(16384), 44100), 440, 2.2);
}

TEST_F(FilePlayerTransport, BeforeALoadEverythingIsStillAndNothingIsKnown)
{
    const host::Object player = loaded.host.create(filePlayerClass);
    for (const char* property : {"CurrentTime", "TrackLength", "SampleRate", "LoopIn", "LoopOut", "Pan",
                                 "OutputVolume", "TimeRate", "PitchRate", "MeterLevel", "Overlap"}) {
        SCOPED_TRACE(property);
        EXPECT_EQ(player.get(property).number(), 0.0);
    }
    for (const char* method : {"Play", "Pause", "Reset"}) player.call(method);
    EXPECT_EQ(player.get("Lasterror").integer(), -1);
    EXPECT_FALSE(player.get("Playing").boolean());
    EXPECT_NE(player.get("Lasterror").integer(), 0);
    player.set("Playing", true);
    EXPECT_NE(player.get("Lasterror").integer(), 0);
    EXPECT_FALSE(player.get("Playing").boolean());
    EXPECT_TRUE(player.call("Data").isNil());
    EXPECT_TRUE(player.call("ChannelMap").isNil());
    player.call("updateEQ", host::Array::of(std::vector<double>(31, 12)));
    for (const char* property :
         {"Pan", "OutputVolume", "TimeRate", "PitchRate", "CurrentTime", "LoopIn", "LoopOut", "Overlap"}) {
        SCOPED_TRACE(property);
        player.set(property, 0.5);
    }
    EXPECT_FALSE(player.get("Looping").boolean());
}

} // namespace
