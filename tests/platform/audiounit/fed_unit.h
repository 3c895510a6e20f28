// A unit fed with noise in one format, that gives another; and what it then has to give.
#pragma once

#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/unit.h"

namespace test {

struct FedUnit {
    /// A unit with its formats, limit and callback, not initialised.
    FedUnit(OSType subType, OSType type, const AudioStreamBasicDescription& in,
            const AudioStreamBasicDescription& out, UInt32 limit);
    OSStatus render(List& list, UInt32 frames, Float64 at = 0, AudioUnitRenderActionFlags* flags = nullptr);

    Unit unit;
    Feeder feeder;
    AudioStreamBasicDescription format;
};

/// Where a list's sample stands.
const unsigned char* sampleIn(List& list, const AudioStreamBasicDescription& format, UInt32 frame,
                              UInt32 channel);

/// Expect noise from `at` on: of each channel that of source channel `playedBy(channel, sources)`, silence
/// where that is -1.
void expectNoise(const AudioStreamBasicDescription& format, List& list, UInt32 frames, Float64 at,
                 UInt32 sources, int (*playedBy)(UInt32 channel, UInt32 sources));

} // namespace test
