// A graph of marking units whose output is pulled by hand.
#pragma once

#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph.h"
#include "tests/platform/augraph/units.h"

namespace test {

/// A callback that gives the number it points at, a Float32, in every sample.
inline OSStatus constant(void* number, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                         UInt32 frames, AudioBufferList* list)
{
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
        for (UInt32 frame = 0; frame < frames; ++frame)
            static_cast<Float32*>(list->mBuffers[i].mData)[frame] = *static_cast<const Float32*>(number);
    return noErr;
}

/// Nodes of a graph that is open: an output and some units, each marked 1, 2, 4, 8…
struct Marks {
    explicit Marks(int count, OSType subType = 'mark') : output(graph.add('auou', 'genr'))
    {
        AUGraphOpen(graph);
        for (int i = 0; i < count; ++i) add(subType);
    }
    AUNode add(OSType subType = 'mark')
    {
        nodes.push_back(graph.add('aufx', subType));
        setMark(unit(nodes.size() - 1), static_cast<Float32>(1 << (nodes.size() - 1)));
        return nodes.back();
    }
    AudioUnit unit(std::size_t index) const { return graph.unit(nodes[index]); }

    /// What the output gives now, in its first channel; the status instead when there is one.
    Float32 hear() const
    {
        List list(canonical(44100, 2), 8);
        const AudioTimeStamp time = sampleTime(0);
        const OSStatus status = AudioUnitRender(graph.unit(output), nullptr, &time, 0, 8, list.get());
        return status ? static_cast<Float32>(status) : static_cast<const Float32*>(list[0].mData)[7];
    }

    Graph graph;
    AUNode output;
    std::vector<AUNode> nodes;
};

} // namespace test
