// The units of a file player, set up as the player does it: converter, mixer, equaliser, time-pitch,
// varispeed, output; and the sound in memory that they play.
#pragma once

#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace test {

/// A pseudo-random 24-bit sample in -1..+1, large or tiny.
float sample(std::size_t frame, UInt32 channel);

/// A sound in memory, interleaved. Each render call continues at `position`; past the end follows silence.
struct Sound {
    UInt32 channels;
    std::size_t frames, position = 0;
    static OSStatus render(void* sound, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32 bus,
                           UInt32 frames, AudioBufferList* list);
};

enum Rates { timePitch = 1, varispeed = 2 }; ///< the unit that is not bypassed

struct Case {
    OSType output;
    UInt32 channels, slice, limit; ///< limit 0: the units keep their default
    Rates rates;
    Float64 rate;
    OSType pitch = 'nutp';
};

class Chain {
public:
    Chain(const Case& which, Sound& sound);
    void initialize();
    void setParameter(AUNode node, AudioUnitParameterID id, AudioUnitScope scope, Float32 value) const
    {
        EXPECT_EQ(AudioUnitSetParameter(graph.unit(node), id, scope, 0, value, 0), noErr);
    }
    template <class T>
    void set(AUNode node, AudioUnitPropertyID property, AudioUnitScope scope, const T& value) const
    {
        EXPECT_EQ(AudioUnitSetProperty(graph.unit(node), property, scope, 0, &value, sizeof value), noErr)
            << "node " << node << ", property " << property;
    }

    Graph graph;
    AUNode output, speed, pitch, equaliser, mixer, converter;

private:
    const Case fact_;
};

} // namespace test
