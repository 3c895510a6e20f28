// Position, loops, seeks, pauses and resets of the file player, with a file whose samples identify their
// frames.
#include "tests/endtoend/fileplayer/file_player.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace endtoend;
using support::Sound;

constexpr int rate = 8000;
constexpr std::size_t length = 20000; // length of the file in frames: 2.5 seconds

double secondsAt(double frame) { return frame / rate; }

// The output unit renders at most this many frames at a time.
constexpr std::size_t largestSlice = 1156;

/// The expected transport of the file player. The model renders whole slices, with silence past the end of
/// the file, and jumps to the start of a loop only after a slice.
struct TransportModel {
    std::size_t length, position = 0;
    double in = -1, out = -1;
    bool isLooping = false;

    void renderSlice(std::size_t frames, Samples& rendered)
    {
        for (std::size_t frame = position; frame < position + frames; ++frame)
            rendered.push_back(frame < length ? float(frame + 1) / 65536 : 0.0f);
        position = std::min(position + frames, length);
        if (!isLooping) return;
        if (in > double(position)) position = std::size_t(in);
        if (double(position) >= out) position = std::size_t(in);
    }

    /// Render `frames` frames for a device whose slices have `deviceSlice` frames.
    Samples render(std::size_t frames, std::size_t deviceSlice)
    {
        Samples rendered;
        while (rendered.size() < frames) {
            const std::size_t until = std::min(rendered.size() + deviceSlice, frames);
            while (rendered.size() < until)
                renderSlice(std::min(until - rendered.size(), largestSlice), rendered);
        }
        return rendered;
    }
};

struct FilePlayerTransport : FilePlayerTest {
    std::string path = folder / "ramp.wav";

    FilePlayerTransport() { support::writeSound(makeRamp(rate, 1, length), path); }
};

/// A file player and the model of its transport, which receive the same commands and must render the same
/// samples.
struct ModelledPlayer {
    FilePlayer player;
    TransportModel model{length};
    std::size_t slice;

    ModelledPlayer(LoadedHost& loaded, const std::string& path, std::uint32_t sliceFrames)
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
        model.in = in, model.out = out, model.isLooping = true;
        EXPECT_TRUE(player.object().get("Looping").boolean());
        EXPECT_EQ(player.get("LoopIn"), secondsAt(in));
        EXPECT_EQ(player.get("LoopOut"), secondsAt(out));
    }
    void seek(double frame)
    {
        player.set("CurrentTime", secondsAt(frame));
        model.position = std::size_t(frame);
        EXPECT_EQ(player.get("CurrentTime"), secondsAt(frame));
    }
    void render(std::size_t frames)
    {
        expectSamples(player.render(frames), model.render(frames, slice));
        EXPECT_EQ(player.get("CurrentTime"), secondsAt(double(model.position)));
    }
};

TEST_F(FilePlayerTransport, LoopsJumpAtTheEndOfASlice)
{
    const struct {
        double in, out;
        const char* why;
    } facts[] = {
        {1000, 2000, "within the file"},
        {0, 1024, "from the start"},
        {0, 1, "shorter than a slice"},
        {5000, 5000, "of no length"},
        {12000, double(length), "to the end of the file"},
        {0, double(length), "all of it"},
        {length - 1.0, double(length), "the last frame"},
        {double(length), double(length), "past the last frame"},
        {1000, 30000, "an end past the end of the file, never reached"},
    };
    for (const std::uint32_t slice : {1u, 100u, 512u, 2048u})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << fact.why << ", slices of " << slice);
            ModelledPlayer both(loaded, path, slice);
            both.loop(fact.in, fact.out);
            both.player.play();
            for (int i = 0; i < 5; ++i) both.render(6144);
        }
}

TEST_F(FilePlayerTransport, LoopsCanBeSetMovedAndEndedDuringPlayback)
{
    ModelledPlayer both(loaded, path, 512);
    both.player.play();
    both.render(3000);
    both.loop(1000, 2000); // the loop lies before the position
    both.render(5000);
    both.loop(6000, 8000); // the loop lies after the position
    both.render(5000);
    both.player.object().set("Looping", false);
    both.model.isLooping = false;
    both.render(length);
    both.seek(100);
    both.render(1000);
    // If the program sets the loop start past the loop end, the loop end moves to the same time.
    both.loop(500, 900);
    both.render(2000);
    both.player.set("LoopIn", secondsAt(1500));
    both.model.in = both.model.out = 1500;
    EXPECT_EQ(both.player.get("LoopOut"), secondsAt(1500));
    both.render(3000);
}

TEST_F(FilePlayerTransport, LoopsNeedBothEnds)
{
    const FilePlayer player(loaded, path);
    const auto isLooping = [&] { return player.object().get("Looping").boolean(); };
    player.object().set("Looping", true);
    EXPECT_FALSE(isLooping()) << "neither end is set";
    EXPECT_EQ(player.get("LoopIn"), 0.0);
    EXPECT_EQ(player.get("LoopOut"), 0.0);
    player.set("LoopIn", 2.0);
    EXPECT_EQ(player.get("LoopOut"), 2.0) << "the start moves an unset end along";
    EXPECT_FALSE(isLooping()) << "setting the ends does not start a loop";
    player.set("LoopOut", 1.0);
    EXPECT_EQ(player.get("LoopOut"), 2.0) << "an end before the start is refused";
    player.object().set("Looping", true);
    EXPECT_TRUE(isLooping());
    player.set("LoopIn", 0.0);
    EXPECT_EQ(player.get("LoopIn"), 0.0);
    EXPECT_TRUE(isLooping()) << "moving the start does not end the loop";
    player.object().set("Looping", false);
    EXPECT_FALSE(isLooping());
}

TEST_F(FilePlayerTransport, SeeksTakeEffectWithTheNextSlice)
{
    for (const std::uint32_t slice : {1u, 512u, 2048u}) {
        SCOPED_TRACE(slice);
        ModelledPlayer both(loaded, path, slice);
        both.seek(777);
        both.player.play();
        both.render(1500);
        for (const double frame : {10000.0, 1.0, 0.0, double(length) - 1, double(length), 19000.0}) {
            SCOPED_TRACE(frame);
            both.seek(frame);
            both.render(2500);
        }
    }
}

TEST_F(FilePlayerTransport, TimesOutsideTheFilePlaySilenceAndMoveToTheEnd)
{
    for (const double seconds : {-1.0, 3.0, 1e6, 536870.0, secondsAt(length + 1)}) {
        SCOPED_TRACE(seconds);
        FilePlayer player(loaded, path);
        player.play();
        player.render(512);
        player.set("CurrentTime", seconds);
        EXPECT_GT(player.get("CurrentTime"), player.get("TrackLength")) << "corrected by the next slice only";
        expectSamples(player.render(2000), silence(2000));
        EXPECT_EQ(player.get("CurrentTime"), player.get("TrackLength"));
    }
    // A time that no 64-bit frame number can express means frame 0.
    for (const double seconds : {std::nan(""), std::numeric_limits<double>::infinity(), 1e300}) {
        SCOPED_TRACE(seconds);
        ModelledPlayer both(loaded, path, 512);
        both.player.play();
        both.render(1000);
        both.player.set("CurrentTime", seconds);
        both.model.position = 0;
        both.render(1000);
    }
}

TEST_F(FilePlayerTransport, LastSliceEndsInSilence)
{
    for (const std::size_t before : {0u, 1u, 100u, 511u}) {
        SCOPED_TRACE(before);
        ModelledPlayer both(loaded, path, 512);
        both.seek(double(length - before));
        both.player.play();
        const Samples rendered = both.player.render(512);
        const Samples expected = partOf(makeRamp(rate, 1, length).samples, 1, length - before, before);
        expectThenSilence(rendered, expected);
        EXPECT_EQ(both.player.get("CurrentTime"), both.player.get("TrackLength"));
        EXPECT_TRUE(both.player.isPlaying());
        // If looping is switched on after the last slice, playback continues at the loop start.
        both.model.position = length;
        both.loop(3000, double(length));
        both.render(512);
        both.render(5000);
    }
}

TEST_F(FilePlayerTransport, PausesKeepThePosition)
{
    ModelledPlayer both(loaded, path, 512);
    const auto& player = both.player;
    EXPECT_FALSE(player.isPlaying());
    player.pause();
    EXPECT_EQ(player.error(), 0);
    EXPECT_EQ(both.player.render(512).size(), 0u);
    player.play();
    player.play(); // no effect
    EXPECT_EQ(player.error(), 0);
    EXPECT_TRUE(player.isPlaying());
    both.render(1000);
    player.pause();
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(both.player.render(1000).size(), 0u) << "paused";
    player.object().set("Playing", true);
    EXPECT_TRUE(player.isPlaying());
    both.render(1000);
    player.object().set("Playing", false);
    EXPECT_FALSE(player.isPlaying());
    both.seek(5000); // while paused
    player.play();
    both.render(1000);
}

TEST_F(FilePlayerTransport, ResetKeepsThePosition)
{
    ModelledPlayer both(loaded, path, 512);
    both.player.object().call("Reset");
    EXPECT_EQ(both.player.error(), 0);
    both.player.play();
    both.render(1000);
    for (int i = 0; i < 3; ++i) {
        both.player.object().call("Reset");
        EXPECT_EQ(both.player.error(), 0);
        both.render(1000);
    }
    both.player.pause();
    both.player.object().call("Reset");
    both.player.play();
    both.render(1000);
}

// Reset drops the input that the rate unit has buffered; the position and the pitch stay.
TEST_F(FilePlayerTransport, ResetWithARateKeepsPositionAndPitch)
{
    support::writeSound(makeTone(44100, 1, 3, 440), folder / "tone.wav");
    FilePlayer player(loaded, folder / "tone.wav");
    player.set("TimeRate", 1.5);
    player.play();
    player.render(22050);
    const double before = player.get("CurrentTime");
    player.object().call("Reset");
    EXPECT_EQ(player.get("CurrentTime"), before);
    EXPECT_NEAR(frequencyOf(player.render(16384), 44100), 440, 2.2);
}

TEST_F(FilePlayerTransport, BeforeALoadPropertiesAre0AndMethodsFail)
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
