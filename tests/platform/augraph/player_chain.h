// The chain of units of a file player, connected as in the player (converter, mixer, equaliser, time-pitch,
// varispeed, output), and the sound in memory that the chain plays.
#pragma once

#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace test {

/// Returns  a pseudo-random 24-bit sample from -1 to +1, either large or tiny.
float sample(std::size_t frame, UInt32 channel);

/// A sound of pseudo-random samples. Each render call continues at `position`. Silence follows the end.
struct Sound {
    UInt32 channels;
    std::size_t frames, position = 0;
    static OSStatus render(void* sound, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32 bus,
                           UInt32 frames, AudioBufferList* list);
};

enum Rates { timePitch = 1, varispeed = 2 }; ///< rate unit that is not bypassed

struct Case {
    OSType output;
    UInt32 channels, slice, limit; ///< channel count, slice length, frame limit (0: the units' default)
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
