// Tests of the sample formats of a mixer and of its sources.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

// clang-format off
const Form forms[] = {
    {'sowt', 16, 1}, {'sowt', 16, 2},
    {'twos', 16, 1}, {'twos', 16, 2},
    {'twos',  8, 1}, {'twos',  8, 2},
    {'raw ',  8, 1}, {'raw ',  8, 2},
    {'NONE', 16, 1}, {'NONE', 16, 2},
    {'NONE',  8, 1}, {'NONE',  8, 2},
};

const struct {
    Form form;
    OSErr error;
    const char* why;
} refused[] = {
    {{'sowt', 8,  2},        siInvalidSampleSize,  "little-endian samples have 16 bits"},
    {{'sowt', 24, 2},        siInvalidSampleSize,  "not 24"},
    {{'sowt', 0,  2},        siInvalidSampleSize,  "not 0"},
    {{'twos', 32, 2},        siInvalidSampleSize,  "signed samples have 8 or 16 bits"},
    {{'twos', 15, 2},        siInvalidSampleSize,  "not 15"},
    {{'raw ', 16, 2},        siInvalidSampleSize,  "unsigned samples have 8 bits"},
    {{'NONE', -8, 2},        siInvalidSampleSize,  "negative size"},
    {{'fl32', 32, 2},        badFormat,            "float is not supported"},
    {{'ima4', 16, 2},        badFormat,            "compressed formats are not supported"},
    {{0,      16, 2},        badFormat,            "no format"},
    {{'sowt', 16, 0},        notEnoughHardwareErr, "no channel"},
    {{'sowt', 16, 3},        notEnoughHardwareErr, "three channels"},
    {{'sowt', 16, -1},       notEnoughHardwareErr, "negative channel count"},
    {{'sowt', 16, 2, 0},     siInvalidSampleRate,  "no rate"},
};
// clang-format on

std::string text(const Form& form)
{
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(form.format >> shift);
    return name + " " + std::to_string(form.bits) + " bits, " + std::to_string(form.channels) + " channels";
}

TEST(MixerFormats, ABlockHasTheFormatOfTheMixer)
{
    for (const Form& form : forms) {
        SCOPED_TRACE(text(form));
        SoundComponentData output = describe(form, 7);
        output.reserved = 0;
        ComponentInstance mixer = nullptr;
        ASSERT_EQ(OpenMixerSoundComponent(&output, 0, &mixer), noErr);
        SoundComponentDataPtr data = nullptr;
        ASSERT_EQ(SoundComponentGetSourceData(mixer, &data), noErr);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(data->flags, 0);
        EXPECT_EQ(data->format, form.format);
        EXPECT_EQ(data->numChannels, form.channels);
        EXPECT_EQ(data->sampleSize, form.bits);
        EXPECT_EQ(data->sampleRate, 0xAC440000u);
        EXPECT_EQ(data->sampleCount, 0) << "nothing plays";
        EXPECT_NE(data->buffer, nullptr);
        EXPECT_EQ(data->reserved, 0);
        EXPECT_EQ(CloseMixerSoundComponent(mixer), noErr);
        EXPECT_EQ(CloseMixerSoundComponent(mixer), static_cast<OSErr>(-32767)) << "closed twice";
    }
    EXPECT_EQ(liveCount("ComponentInstance"), 0);
}

TEST(MixerFormats, RefuseUnsupportedDescriptions)
{
    Mixer mixer;
    const SoundSource source = mixer.add();
    for (const auto& row : refused) {
        SCOPED_TRACE(row.why);
        SoundComponentData refusedData = describe(row.form);
        ComponentInstance made = mixer.instance;
        EXPECT_EQ(OpenMixerSoundComponent(&refusedData, 0, &made), row.error);
        EXPECT_EQ(made, nullptr);
        Buffer buffer({}, Bytes(400));
        buffer.block.desc = refusedData;
        buffer.block.desc.buffer = buffer.samples.data();
        EXPECT_EQ(mixer.play(source, buffer), row.error) << "of a buffer";
    }
    EXPECT_TRUE(mixer.fetch().empty());
    EXPECT_EQ(liveCount("ComponentInstance"), 1);
}

TEST(MixerFormats, OpenRefusesMissingArgumentsAndFlags)
{
    SoundComponentData output = describe({});
    ComponentInstance mixer = nullptr;
    EXPECT_EQ(OpenMixerSoundComponent(&output, 0, nullptr), paramErr);
    EXPECT_EQ(OpenMixerSoundComponent(nullptr, 0, &mixer), paramErr);
    EXPECT_EQ(OpenMixerSoundComponent(&output, 1, &mixer), paramErr) << "a flag: a mixer that does not mix";
    EXPECT_EQ(mixer, nullptr);
    EXPECT_EQ(CloseMixerSoundComponent(nullptr), static_cast<OSErr>(-32767));
}

TEST(MixerFormats, BlocksHaveTheRequestedLengthWithinLimits)
{
    const struct {
        long requested;
        std::size_t frames;
    } facts[] = {{1, 1},         {2, 2},         {1023, 1023},        {1024, 1024},
                 {65536, 65536}, {65537, 65536}, {0x7FFFFFFF, 65536}, {0, 1024},
                 {-1, 1024}};
    for (const auto& fact : facts) {
        Mixer mixer({}, fact.requested);
        Buffer buffer({}, Bytes(4 * 70000));
        ASSERT_EQ(mixer.play(mixer.add(), buffer), noErr);
        EXPECT_EQ(mixer.fetch().size(), 4 * fact.frames) << fact.requested;
    }
}

// A mixer that is opened by the general function for components has no output format.
TEST(MixerFormats, AMixerWithoutAFormatRefusesCommands)
{
    ComponentInstance mixer = OpenDefaultComponent(kSoundComponentType, kMixerType);
    ASSERT_NE(mixer, nullptr);
    SoundSource source = reinterpret_cast<SoundSource>(1);
    SoundComponentDataPtr data = reinterpret_cast<SoundComponentDataPtr>(&mixer);
    short value = 0;
    EXPECT_EQ(SoundComponentAddSource(mixer, &source), badFormat);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(SoundComponentGetSourceData(mixer, &data), badFormat);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(SoundComponentGetInfo(mixer, nullptr, siNumberChannels, &value), badFormat);
    EXPECT_EQ(CloseComponent(mixer), noErr);
}

// Each source format is played in a mixer of each format. The output is compared with the reference
// conversion.
TEST(MixerFormats, SourcesAreConvertedToTheFormatOfTheMixer)
{
    for (const Form& to : forms) {
        for (const Form& from : forms) {
            SCOPED_TRACE(text(from) + " into " + text(to));
            Mixer mixer(to, 100);
            const SoundSource source = mixer.add();
            const Bytes samples = noise(from, 3000);
            const Samples folded = fold(decode(from, samples), from.channels, to.channels);
            EXPECT_EQ(mixer.playAll(source, from, samples), encode(to, folded));
        }
    }
}

} // namespace
