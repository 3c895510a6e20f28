// A unit whose input is noise in one format and whose output has another format, and a check of that output.
#pragma once

#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/unit.h"

namespace test {

struct FedUnit {
    /// Set formats, slice limit and callback, without initialising the unit.
    FedUnit(OSType subType, OSType type, const AudioStreamBasicDescription& in,
            const AudioStreamBasicDescription& out, UInt32 limit);
    OSStatus render(List& list, UInt32 frames, Float64 at = 0, AudioUnitRenderActionFlags* flags = nullptr);

    Unit unit;
    Feeder feeder;
    AudioStreamBasicDescription format;
};

/// Returns  the address of a sample in a buffer list.
const unsigned char* sampleIn(List& list, const AudioStreamBasicDescription& format, UInt32 frame,
                              UInt32 channel);

/// Expect noise that begins at frame `at`. Channel c contains the noise of source channel sourceOf(c,
/// sources), or silence where that is -1.
void expectNoise(const AudioStreamBasicDescription& format, List& list, UInt32 frames, Float64 at,
                 UInt32 sources, int (*sourceOf)(UInt32 channel, UInt32 sources));

} // namespace test
