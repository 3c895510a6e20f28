// Codes, numbers and record layouts of the public headers. The compiler checks those in the included lists.
#include "tests/platform/headers/classic_codes.h"
#include "tests/platform/headers/device_codes.h"
#include "tests/platform/headers/record_layouts.h"

#include <gtest/gtest.h>

namespace {

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

} // namespace
