// Tests of the sum of several sources, and of the volumes of sources.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace test;

Samples scaled(Samples samples, double left, double right)
{
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] *= i % 2 ? right : left;
    return samples;
}

void addTo(Samples& sum, const Samples& more)
{
    if (sum.size() < more.size()) sum.resize(more.size());
    for (std::size_t i = 0; i < more.size(); ++i) sum[i] += more[i];
}

TEST(MixerSum, AddsSourcesOfDifferentFormats)
{
    const Form forms[] = {{}, {'twos', 8, 1}, {'raw ', 8, 2}, {'NONE', 16, 1}, {'twos', 16, 2}};
    for (std::size_t count = 1; count <= std::size(forms); ++count) {
        Mixer mixer({}, 333);
        Samples sum;
        std::vector<std::unique_ptr<Buffer>> buffers;
        for (std::size_t i = 0; i < count; ++i) {
            const Bytes bytes = noise(forms[i], 1000 + 100 * i, static_cast<unsigned>(i));
            addTo(sum, fold(decode(forms[i], bytes), forms[i].channels, 2));
            buffers.push_back(std::make_unique<Buffer>(forms[i], bytes));
            ASSERT_EQ(mixer.play(mixer.add(), *buffers.back()), noErr);
        }
        EXPECT_EQ(mixer.fetchAll(), encode({}, sum)) << count;
    }
}

// Sources may end in any order, within a block or at the end of a block.
TEST(MixerSum, AddsSourcesThatEndInAnyOrder)
{
    const std::vector<std::size_t> lengths[] = {
        {1000, 700, 100}, {100, 700, 1000}, {700, 1000, 100}, {1000, 100, 700}, {512, 256, 0}, {1, 1000, 256},
    };
    for (const auto& row : lengths) {
        Mixer mixer({}, 256);
        Samples sum;
        std::vector<std::unique_ptr<Buffer>> buffers;
        for (std::size_t frames : row) {
            const Bytes bytes = noise({}, frames, static_cast<unsigned>(buffers.size()));
            addTo(sum, decode({}, bytes));
            buffers.push_back(std::make_unique<Buffer>(Form{}, bytes));
            ASSERT_EQ(mixer.play(mixer.add(), *buffers.back()), noErr);
        }
        EXPECT_EQ(mixer.fetchAll(), encode({}, sum)) << testing::PrintToString(row);
    }
}

TEST(MixerSum, ClipsAtFullScale)
{
    const struct {
        int one, other, sum;
    } facts[] = {{32767, 0, 32767},        {32767, 1, 32767},       {32766, 1, 32767},
                 {32767, 32767, 32767},    {-32768, 0, -32768},     {-32768, -1, -32768},
                 {-32768, -32768, -32768}, {-32768, 32767, -1},     {16384, 16384, 32767},
                 {16384, 16383, 32767},    {-16384, -16384, -32768}};
    for (const auto& fact : facts) {
        Mixer mixer;
        Buffer one({}, encode({}, Samples(2, fact.one / 32768.0)));
        Buffer other({}, encode({}, Samples(2, fact.other / 32768.0)));
        ASSERT_EQ(mixer.play(mixer.add(), one), noErr);
        ASSERT_EQ(mixer.play(mixer.add(), other), noErr);
        EXPECT_EQ(mixer.fetchAll(), encode({}, Samples(2, fact.sum / 32768.0)))
            << fact.one << " " << fact.other;
    }
}

TEST(MixerSum, HasAtMost64Sources)
{
    Mixer mixer;
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<SoundSource> sources;
    for (int i = 0; i < 64; ++i) {
        sources.push_back(mixer.add());
        buffers.push_back(std::make_unique<Buffer>(Form{}, encode({}, Samples(20, (i + 1) / 32768.0))));
        ASSERT_EQ(mixer.play(sources.back(), *buffers.back()), noErr);
    }
    EXPECT_EQ(std::set<SoundSource>(sources.begin(), sources.end()).size(), 64u);
    SoundSource none = sources[0];
    EXPECT_EQ(SoundComponentAddSource(mixer.instance, &none), notEnoughHardwareErr);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(mixer.fetchAll(), encode({}, Samples(20, 64 * 65 / 2 / 32768.0)));
    EXPECT_EQ(SoundComponentRemoveSource(mixer.instance, sources[30]), noErr);
    EXPECT_EQ(SoundComponentAddSource(mixer.instance, &none), noErr) << "its slot is free";
}

// Volumes are 8.8 fixed-point. A source's volume holds the right channel in the high half.
const struct {
    short left, right;
    UInt32 source;
    double expectedLeft, expectedRight;
    const char* why;
} volumes[] = {
    // clang-format off
    {0x100, 0x100, 0x01000100, 1,        1,        "full"},
    {0,     0x100, 0x01000100, 0,        1,        "left silent"},
    {0x100, 0,     0x01000100, 1,        0,        "right silent"},
    {0,     0,     0x01000100, 0,        0,        "silent"},
    {0x80,  0x40,  0x01000100, 0.5,      0.25,     "buffer"},
    {1,     0xFF,  0x01000100, 1 / 256., 255/256., "least, and one step below full"},
    {0x100, 0x100, 0x00400080, 0.5,      0.25,     "source: left is the low half"},
    {0x100, 0x100, 0x01000000, 0,        1,        "source: right only"},
    {0x80,  0x80,  0x00800040, 0.125,    0.25,     "both"},
    {0x200, 0x180, 0x01000100, 2,        1.5,      "above full"},
    {0x100, 0x100, 0x02000100, 1,        2,        "source above full"},
    // clang-format on
};

TEST(MixerSum, AppliesBufferAndSourceVolume)
{
    for (const auto& row : volumes) {
        for (short channels : {1, 2}) {
            SCOPED_TRACE(std::string(row.why) + (channels == 1 ? ", mono" : ", stereo"));
            const Form from = {'sowt', 16, channels};
            const Bytes bytes = noise(from, 5000);
            const Samples stereo =
                scaled(fold(decode(from, bytes), channels, 2), row.expectedLeft, row.expectedRight);

            for (short mixerChannels : {1, 2}) {
                Mixer mixer({'sowt', 16, mixerChannels}, 512);
                const SoundSource source = mixer.add();
                ASSERT_EQ(SoundComponentSetInfo(mixer.instance, source, siVolume,
                                                reinterpret_cast<void*>(std::uintptr_t{row.source})),
                          noErr);
                Buffer buffer(from, bytes);
                buffer.block.leftVolume = row.left;
                buffer.block.rightVolume = row.right;
                ASSERT_EQ(mixer.play(source, buffer), noErr);
                EXPECT_EQ(mixer.fetchAll(), encode(mixer.form, fold(stereo, 2, mixerChannels)));
            }
        }
    }
}

TEST(MixerSum, AppliesTheVolumeOfEachBuffer)
{
    Mixer mixer;
    const SoundSource source = mixer.add();
    const Bytes bytes = noise({}, 300);
    Samples expected;
    std::vector<std::unique_ptr<Buffer>> buffers;
    for (short volume : {0x100, 0x80, 0, 0x40, 0x100}) {
        buffers.push_back(std::make_unique<Buffer>(Form{}, bytes));
        buffers.back()->block.leftVolume = buffers.back()->block.rightVolume = volume;
        ASSERT_EQ(mixer.play(source, *buffers.back()), noErr);
        const Samples more = scaled(decode({}, bytes), volume / 256.0, volume / 256.0);
        expected.insert(expected.end(), more.begin(), more.end());
    }
    EXPECT_EQ(mixer.fetchAll(), encode({}, expected));
}

} // namespace
