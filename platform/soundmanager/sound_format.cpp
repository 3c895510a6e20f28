#include "platform/soundmanager/sound_format.h"

namespace kvxplatform::soundmanager {
namespace {

constexpr UInt32 packed = kAudioFormatFlagIsPacked;
constexpr UInt32 isSigned = kAudioFormatFlagIsSignedInteger;
constexpr UInt32 bigEndian = kAudioFormatFlagIsBigEndian;

// clang-format off
const struct {
    OSType format;
    short bits;
    UInt32 flags;
} formats[] = {
    {kOffsetBinary,            8,  packed},
    {kTwosComplement,          8,  packed | isSigned},
    {kTwosComplement,          16, packed | isSigned | bigEndian},
    {k16BitLittleEndianFormat, 16, packed | isSigned},
    {kSoundNotCompressed,      8,  packed},
    {kSoundNotCompressed,      16, packed | isSigned | bigEndian},
};
// clang-format on

} // namespace

OSErr linearPCM(const SoundComponentData& description, AudioStreamBasicDescription& out)
{
    if (description.numChannels < 1 || description.numChannels > 2) return notEnoughHardwareErr;
    if (description.sampleRate == 0) return siInvalidSampleRate;
    OSErr refusal = badFormat;
    for (const auto& row : formats) {
        if (row.format != description.format) continue;
        refusal = siInvalidSampleSize; // the status for a known format without a fitting sample size
        if (row.bits != description.sampleSize) continue;
        const auto channels = static_cast<UInt32>(description.numChannels);
        const UInt32 bytes = channels * static_cast<UInt32>(row.bits) / 8;
        out = {hertz(description.sampleRate),
               kAudioFormatLinearPCM,
               row.flags,
               bytes,
               1,
               bytes,
               channels,
               static_cast<UInt32>(row.bits),
               0};
        return noErr;
    }
    return refusal;
}

} // namespace kvxplatform::soundmanager
