// Struct sizes, codes and types that compiled programs depend on.
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

namespace {

TEST(Headers, RecordSizes)
{
    if (sizeof(void*) != 4) GTEST_SKIP() << "sizes are those of the 32-bit target";
    const struct {
        const char* record;
        std::size_t size, expected;
    } facts[] = {
#define RECORD(type, expected) {#type, sizeof(type), expected}
        RECORD(AudioObjectPropertyAddress, 12),
        RECORD(AudioValueRange, 16),
        RECORD(AudioValueTranslation, 16),
        RECORD(AudioBuffer, 12),
        RECORD(AudioBufferList, 16),
        RECORD(AudioStreamBasicDescription, 40),
        RECORD(AudioStreamPacketDescription, 16),
        RECORD(AudioStreamRangedDescription, 56),
        RECORD(SMPTETime, 24),
        RECORD(AudioTimeStamp, 64),
        RECORD(AudioHardwareIOProcStreamUsage, 12),
        RECORD(AudioChannelDescription, 20),
        RECORD(AudioChannelLayout, 32),
        RECORD(AbsoluteTime, 8),
        RECORD(Float80, 10),
        RECORD(CFRange, 8),
        RECORD(ComponentDescription, 20),
        RECORD(UInt32, 4),
        RECORD(SInt64, 8),
        RECORD(UniChar, 2),
        RECORD(Boolean, 1),
#undef RECORD
    };
    for (const auto& fact : facts) EXPECT_EQ(fact.size, fact.expected) << fact.record;
}

TEST(Headers, CodesAreBigEndianText)
{
    const struct {
        UInt32 value, expected;
        const char* why;
    } facts[] = {
        {kAudioHardwarePropertyDevices, 0x64657623, "'dev#'"},
        {kAudioHardwarePropertyDefaultOutputDevice, 0x644F7574, "'dOut'"},
        {kAudioDevicePropertyStreamFormat, 0x73666D74, "'sfmt'"},
        {kAudioFormatLinearPCM, 0x6C70636D, "'lpcm'"},
        {kAudioObjectPropertyScopeGlobal, 0x676C6F62, "'glob'"},
        {static_cast<UInt32>(kAudioHardwareUnknownPropertyError), 0x77686F3F, "'who?'"},
        {kAudioFormatFlagsCanonical, 0x9, "float, packed, native byte order"},
        {kAudioFormatFlagsAudioUnitCanonical, 0x29, "the same, non-interleaved"},
        {kCFStringEncodingUTF8, 0x08000100, "a text encoding"},
    };
    for (const auto& fact : facts) EXPECT_EQ(fact.value, fact.expected) << fact.why;
}

TEST(Headers, UInt32IsUnsignedLongOnThe32BitTarget)
{
    // Which C++ overload and which printf format fit a UInt32 depends on its underlying type.
    constexpr bool isLong = std::is_same_v<UInt32, unsigned long>;
    EXPECT_EQ(isLong, sizeof(void*) == 4);
}

} // namespace
