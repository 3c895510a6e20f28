#include "tests/platform/audiounit/fed_unit.h"

#include <gtest/gtest.h>

#include <cstring>

namespace test {
namespace {

bool isNonInterleavedFormat(const AudioStreamBasicDescription& format)
{
    return format.mFormatFlags & isNonInterleaved;
}

UInt32 bytesOfSample(const AudioStreamBasicDescription& format)
{
    return format.mBytesPerFrame / (isNonInterleavedFormat(format) ? 1 : format.mChannelsPerFrame);
}

} // namespace

FedUnit::FedUnit(OSType subType, OSType type, const AudioStreamBasicDescription& in,
                 const AudioStreamBasicDescription& out, UInt32 limit)
    : unit(subType, type), feeder(in), format(out)
{
    EXPECT_EQ(unit.setFormat(1, in), noErr);
    EXPECT_EQ(unit.setFormat(2, out), noErr);
    EXPECT_EQ(unit.setLimit(limit), noErr);
    EXPECT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
}

OSStatus FedUnit::render(List& list, UInt32 frames, Float64 at, AudioUnitRenderActionFlags* flags)
{
    const AudioTimeStamp time = sampleTime(at);
    return AudioUnitRender(unit, flags, &time, 0, frames, list.get());
}

const unsigned char* sampleIn(List& list, const AudioStreamBasicDescription& format, UInt32 frame,
                              UInt32 channel)
{
    const bool nonInterleaved = isNonInterleavedFormat(format);
    return static_cast<const unsigned char*>(list[nonInterleaved ? channel : 0].mData) +
           frame * format.mBytesPerFrame + (nonInterleaved ? 0 : channel * bytesOfSample(format));
}

void expectNoise(const AudioStreamBasicDescription& format, List& list, UInt32 frames, Float64 at,
                 UInt32 sources, int (*sourceOf)(UInt32 channel, UInt32 sources))
{
    for (UInt32 frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < format.mChannelsPerFrame; ++c) {
            const int source = sourceOf(c, sources);
            unsigned char expected[8];
            putSample(format, source < 0 ? 0.0f : noise(at + frame, static_cast<UInt32>(source)), expected);
            ASSERT_EQ(std::memcmp(sampleIn(list, format, frame, c), expected, bytesOfSample(format)), 0)
                << "frame " << frame << ", channel " << c;
        }
}

} // namespace test
