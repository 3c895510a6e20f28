// Properties of converters: sizes, values, access.
#include "tests/platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace test;

constexpr OSStatus unsupported = kAudioConverterErr_OperationNotSupported;
constexpr OSStatus wrongSize = kAudioConverterErr_BadPropertySizeError;

TEST(Properties, CodesMatchTheirTexts)
{
    // clang-format off
    const struct { OSStatus code; const char* text; } facts[] = {
        {kAudioConverterErr_FormatNotSupported,                 "fmt?"}, {kAudioConverterErr_OperationNotSupported,        "op??"},
        {kAudioConverterErr_PropertyNotSupported,               "prop"}, {kAudioConverterErr_InvalidInputSize,             "insz"},
        {kAudioConverterErr_InvalidOutputSize,                  "otsz"}, {kAudioConverterErr_UnspecifiedError,             "what"},
        {kAudioConverterErr_BadPropertySizeError,               "!siz"}, {kAudioConverterErr_RequiresPacketDescriptionsError, "!pkd"},
        {kAudioConverterErr_InputSampleRateOutOfRange,          "!isr"}, {kAudioConverterErr_OutputSampleRateOutOfRange,   "!osr"},
        {kAudioConverterSampleRateConverterComplexity,          "srca"}, {kAudioConverterSampleRateConverterQuality,       "srcq"},
        {kAudioConverterPrimeMethod,                            "prmm"}, {kAudioConverterPrimeInfo,                        "prim"},
        {kAudioConverterChannelMap,                             "chmp"}, {kAudioConverterCurrentInputStreamDescription,    "acid"},
        {kAudioConverterCurrentOutputStreamDescription,         "acod"}, {kAudioConverterSampleRateConverterComplexity_Linear, "line"},
        {kAudioConverterSampleRateConverterComplexity_Normal,   "norm"}, {kAudioConverterSampleRateConverterComplexity_Mastering, "bats"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        OSStatus code = 0;
        for (const char* each = fact.text; *each; ++each) code = code << 8 | *each;
        EXPECT_EQ(fact.code, code) << fact.text;
    }
    EXPECT_EQ(kAudioConverterErr_OperationNotSupported, 0x6F703F3F);
    EXPECT_EQ(kAudioConverterQuality_Max, 0x7F);
    EXPECT_EQ(kAudioConverterQuality_High, 0x60);
    EXPECT_EQ(kAudioConverterQuality_Medium, 0x40);
    EXPECT_EQ(kAudioConverterQuality_Low, 0x20);
    EXPECT_EQ(kAudioConverterQuality_Min, 0);
}

TEST(Properties, SizesAccessAndMisuse)
{
    // clang-format off
    const struct { AudioConverterPropertyID id; UInt32 size; bool isWritable; } facts[] = {
        {'srca', 4,  true}, {'srcq', 4,  true},  {'prmm', 4,  true}, {'prim', 8, false},
        {'chmp', 12, true}, {'acid', 40, false}, {'acod', 40, false},
    };
    // clang-format on
    const Converter converter(interleaved(44100, 2), canonical(48000, 3));
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.id);
        UInt32 size = 0;
        Boolean writable = 2;
        EXPECT_EQ(AudioConverterGetPropertyInfo(converter, fact.id, &size, &writable), noErr);
        EXPECT_EQ(size, fact.size);
        EXPECT_EQ(writable, fact.isWritable);
        EXPECT_EQ(AudioConverterGetPropertyInfo(converter, fact.id, nullptr, nullptr), noErr);

        std::vector<unsigned char> value(fact.size + 8, 0xEE);
        size = fact.size - 1;
        EXPECT_EQ(AudioConverterGetProperty(converter, fact.id, &size, value.data()), wrongSize);
        EXPECT_EQ(value[0], 0xEE);
        size = fact.size + 8;
        EXPECT_EQ(AudioConverterGetProperty(converter, fact.id, &size, value.data()), noErr);
        EXPECT_EQ(size, fact.size) << "the size of the value";
        EXPECT_EQ(value[fact.size], 0xEE);
        EXPECT_EQ(AudioConverterGetProperty(converter, fact.id, nullptr, value.data()), paramErr);
        EXPECT_EQ(AudioConverterGetProperty(converter, fact.id, &size, nullptr), paramErr);

        for (const int off : {-1, 1})
            EXPECT_EQ(AudioConverterSetProperty(converter, fact.id, fact.size + static_cast<UInt32>(off),
                                                value.data()),
                      fact.isWritable ? wrongSize : unsupported);
        EXPECT_EQ(AudioConverterSetProperty(converter, fact.id, fact.size, value.data()),
                  fact.isWritable ? noErr : unsupported)
            << "the present value";
        EXPECT_EQ(AudioConverterSetProperty(converter, fact.id, fact.size, nullptr), paramErr);
    }
    UInt32 size = 4, word = 0;
    EXPECT_EQ(AudioConverterGetPropertyInfo(converter, 'none', &size, nullptr),
              kAudioConverterErr_PropertyNotSupported);
    EXPECT_EQ(AudioConverterGetProperty(converter, 'none', &size, &word),
              kAudioConverterErr_PropertyNotSupported);
    EXPECT_EQ(AudioConverterSetProperty(converter, 'none', 4, &word),
              kAudioConverterErr_PropertyNotSupported);
}

TEST(Properties, Defaults)
{
    const Converter converter(interleaved(44100, 1), canonical(44100, 3));
    EXPECT_EQ(converter.get<UInt32>('srca'), UInt32{'norm'});
    EXPECT_EQ(converter.get<UInt32>('srcq'), 0x60u);
    EXPECT_EQ(converter.get<UInt32>('prmm'), 1u);
    const auto info = converter.get<AudioConverterPrimeInfo>('prim');
    EXPECT_EQ(info.leadingFrames, 0u) << "no look-ahead at the same rate";
    EXPECT_EQ(info.trailingFrames, 0u);
    EXPECT_TRUE(converter.get<AudioStreamBasicDescription>('acid') == interleaved(44100, 1));
    EXPECT_TRUE(converter.get<AudioStreamBasicDescription>('acod') == canonical(44100, 3));
    struct Map {
        SInt32 entries[3];
    };
    const Map map = converter.get<Map>('chmp');
    EXPECT_EQ(map.entries[0], 0);
    EXPECT_EQ(map.entries[1], 0);
    EXPECT_EQ(map.entries[2], -1);
}

TEST(Properties, ValuesOutOfRangeAreRefused)
{
    const Converter converter(interleaved(44100, 2), interleaved(48000, 2));
    // clang-format off
    const struct { AudioConverterPropertyID id; UInt32 value; OSStatus status; const char* why; } facts[] = {
        {'srcq', 0,      noErr,       "the lowest"},
        {'srcq', 127,    noErr,       "the highest"},
        {'srcq', 128,    paramErr,    "above the highest"},
        {'srca', 'line', noErr,       "the fastest"},
        {'srca', 'bats', noErr,       "the best"},
        {'srca', 'norm', noErr,       "by the quality"},
        {'srca', 'fast', paramErr,    "unknown"},
        {'prmm', 1,      noErr,       "Normal"},
        {'prmm', 0,      unsupported, "Pre"},
        {'prmm', 2,      unsupported, "None"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const auto before = converter.get<UInt32>(fact.id);
        EXPECT_EQ(converter.set(fact.id, fact.value), fact.status) << fact.why;
        EXPECT_EQ(converter.get<UInt32>(fact.id), fact.status ? before : fact.value) << fact.why;
    }
    const SInt32 good[] = {-1, 7}, bad[] = {0, -2};
    EXPECT_EQ(converter.set('chmp', good), noErr);
    EXPECT_EQ(converter.set('chmp', bad), paramErr);
    SInt32 kept[2] = {};
    UInt32 size = sizeof kept;
    EXPECT_EQ(AudioConverterGetProperty(converter, 'chmp', &size, kept), noErr);
    EXPECT_EQ(kept[0], -1);
    EXPECT_EQ(kept[1], 7) << "kept, although channel 7 does not exist";
}

// The test identifies the filter in use by its look-ahead.
TEST(Properties, ComplexityAndQualityChooseTheFilter)
{
    const auto ahead = [](UInt32 complexity, UInt32 quality) {
        const Converter converter(interleaved(44100, 2), interleaved(48000, 2));
        EXPECT_EQ(converter.set('srca', complexity), noErr);
        EXPECT_EQ(converter.set('srcq', quality), noErr);
        return converter.get<AudioConverterPrimeInfo>('prim').trailingFrames;
    };
    const UInt32 best = ahead('bats', 0), normal = ahead('norm', 0x60);
    EXPECT_NE(normal, best);
    // clang-format off
    const struct { UInt32 complexity, quality, ahead; } facts[] = {
        {'line', 0,    normal}, {'line', 127,  normal}, {'bats', 0,    best},   {'bats', 127,  best},
        {'norm', 0,    normal}, {'norm', 0x3F, normal}, {'norm', 0x40, normal}, {'norm', 0x60, normal},
        {'norm', 0x7E, normal}, {'norm', 0x7F, best},
    };
    // clang-format on
    for (const auto& fact : facts)
        EXPECT_EQ(ahead(fact.complexity, fact.quality), fact.ahead)
            << fact.complexity << ", " << fact.quality;
}

TEST(Properties, SettingOneResetsTheConverter)
{
    const Converter converter(interleaved(44100, 1), interleaved(44100, 1));
    Sound sound = soundOf(44100, 1, {0.5f});
    EXPECT_EQ(drained(converter, sound, 1, 8), std::vector<float>{0.5f});
    sound.at = 0;
    EXPECT_TRUE(drained(converter, sound, 1, 8).empty()) << "the input has ended";
    EXPECT_EQ(converter.set('chmp', SInt32{0}), noErr);
    EXPECT_EQ(drained(converter, sound, 1, 8), std::vector<float>{0.5f});
}

} // namespace
