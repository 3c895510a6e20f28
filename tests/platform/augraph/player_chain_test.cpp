// Tests that the file player's chain of units changes no sample at neutral settings.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/augraph/player_chain.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test;

/// Render a sound through a chain of units that `setUp` has prepared.
/// Returns  the interleaved output.
std::vector<float> render(
    const Case& fact, std::size_t frames, void (*setUp)(Chain&) = [](Chain&) {})
{
    Sound sound{fact.channels, frames};
    Chain chain(fact, sound);
    setUp(chain);
    std::vector<float> output;
    if (fact.output == 'ahal') {
        SteppedDevice device(fact.rate, fact.channels, fact.slice);
        chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
        chain.initialize();
        EXPECT_EQ(AUGraphStart(chain.graph), noErr);
        device.step(static_cast<UInt32>(frames));
        EXPECT_EQ(AUGraphStop(chain.graph), noErr);
        return device.played;
    }
    const auto format = canonical(fact.rate, fact.channels);
    chain.set(chain.output, kAudioUnitProperty_StreamFormat, 2, format);
    chain.set(chain.output, kAudioUnitProperty_MaximumFramesPerSlice, 0, fact.slice);
    chain.initialize();
    EXPECT_EQ(AUGraphStart(chain.graph), noErr);
    List list(format, fact.slice);
    for (std::size_t done = 0; done < frames;) {
        const auto now = static_cast<UInt32>(std::min<std::size_t>(fact.slice, frames - done));
        list.restore();
        const AudioTimeStamp time = sampleTime(static_cast<Float64>(done));
        const OSStatus status =
            AudioUnitRender(chain.graph.unit(chain.output), nullptr, &time, 0, now, list.get());
        EXPECT_EQ(status, noErr);
        if (status) break;
        for (UInt32 i = 0; i < now; ++i)
            for (UInt32 c = 0; c < fact.channels; ++c)
                output.push_back(static_cast<const float*>(list[c].mData)[i]);
        done += now;
    }
    return output;
}

void expectUnchanged(const std::vector<float>& output, UInt32 channels, std::size_t frames)
{
    ASSERT_EQ(output.size(), frames * channels);
    for (std::size_t frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < channels; ++c)
            ASSERT_EQ(output[frame * channels + c], sample(frame, c))
                << "frame " << frame << ", channel " << c;
}

TEST(PlayerChain, ChangesNoSample)
{
    for (const OSType output : {'ahal', 'genr'})
        for (const UInt32 channels : std::initializer_list<UInt32>{1, 2, 6})
            for (const UInt32 slice : std::initializer_list<UInt32>{1, 512, 2048, 8192})
                for (const Rates rates : {timePitch, varispeed})
                    for (const UInt32 limit : {UInt32{0}, slice}) {
                        SCOPED_TRACE(testing::Message()
                                     << (output == 'ahal' ? "device" : "rendered by the test") << ", "
                                     << channels << " channels, slices of " << slice << ", limit " << limit
                                     << ", " << (rates == timePitch ? "time-pitch" : "varispeed"));
                        const std::size_t frames = slice == 1 ? 1500 : 8192 * 2 + 777;
                        const Case fact = {output, channels, slice, limit, rates, 44100};
                        expectUnchanged(render(fact, frames), channels, frames);
                        if (HasFatalFailure()) return;
                    }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

TEST(PlayerChain, ChangesNoSampleAtAnyRate)
{
    for (const Float64 rate : {8000.0, 22050.0, 48000.0, 96000.0, 192000.0})
        for (const Rates rates : {timePitch, varispeed})
            for (const OSType pitch : {'nutp', 'tmpt'}) {
                SCOPED_TRACE(testing::Message()
                             << rate << ", " << rates << (pitch == 'nutp' ? "" : ", classic"));
                expectUnchanged(render({'ahal', 2, 512, 0, rates, rate, pitch}, 5000), 2, 5000);
            }
}

// Changing a setting of any unit changes the output, so the tests above cover every unit.
TEST(PlayerChain, ContainsEveryUnit)
{
    const struct {
        Rates rates;
        void (*setUp)(Chain&);
        const char* why;
    } facts[] = {
        {timePitch, [](Chain& chain) { chain.setParameter(chain.mixer, 0, 1, 0.5f); }, "a volume"},
        {timePitch, [](Chain& chain) { chain.setParameter(chain.equaliser, 30, 0, 12); }, "the 31st band"},
        {timePitch, [](Chain& chain) { chain.setParameter(chain.pitch, 0, 0, 0.5f); }, "the rate"},
        {varispeed, [](Chain& chain) { chain.setParameter(chain.speed, 0, 0, 0.5f); }, "the speed"},
        {timePitch, [](Chain& chain) { chain.setParameter(chain.output, kHALOutputParam_Volume, 0, 0.5f); },
         "the output's volume"},
    };
    const std::vector<float> unchanged = render({'ahal', 2, 512, 0, timePitch, 44100}, 2000);
    for (const auto& fact : facts)
        EXPECT_NE(render({'ahal', 2, 512, 0, fact.rates, 44100}, 2000, fact.setUp), unchanged) << fact.why;
}

TEST(PlayerChain, PassesTheFilesFormatToTheOutput)
{
    Sound sound{6, 0};
    Chain chain({'ahal', 6, 512, 0, timePitch, 96000}, sound);
    chain.initialize();
    const AUNode path[] = {chain.mixer, chain.equaliser, chain.pitch, chain.speed, chain.output};
    for (const AUNode node : path) {
        AudioStreamBasicDescription format{};
        UInt32 size = sizeof format;
        ASSERT_EQ(AudioUnitGetProperty(chain.graph.unit(node), 8, 1, 0, &format, &size), noErr);
        EXPECT_TRUE(format == canonical(96000, 6)) << "node " << node;
    }
}

TEST(PlayerChain, ACallbackIsReplacedWithoutAGapWhileTheGraphRuns)
{
    Sound first{2, 100000}, second{2, 100000};
    Chain chain({'ahal', 2, 512, 0, timePitch, 44100}, first);
    SteppedDevice device(44100, 2, 512);
    chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
    chain.initialize();
    ASSERT_EQ(AUGraphStart(chain.graph), noErr);
    device.step(1024);
    second.position = first.position;
    first.position = 77;
    chain.set(chain.converter, kAudioUnitProperty_SetRenderCallback, 1,
              AURenderCallbackStruct{Sound::render, &second});
    device.step(1024);
    expectUnchanged(device.played, 2, 2048);
    EXPECT_EQ(first.position, 77u) << "not called again";
}

TEST(PlayerChain, ContinuesAtTheStopPosition)
{
    Sound sound{2, 100000};
    Chain chain({'ahal', 2, 512, 0, timePitch, 44100}, sound);
    SteppedDevice device(44100, 2, 512);
    chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
    chain.initialize();
    for (int start = 0; start < 4; ++start) {
        ASSERT_EQ(AUGraphStart(chain.graph), noErr);
        device.step(700);
        ASSERT_EQ(AUGraphStop(chain.graph), noErr);
    }
    expectUnchanged(device.played, 2, 2800);
}

} // namespace
