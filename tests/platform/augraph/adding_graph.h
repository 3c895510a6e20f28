// An open graph with an output unit and adding units.
#pragma once

#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/adding_units.h"
#include "tests/platform/augraph/graph.h"

namespace test {

/// A render callback that sets every sample to the Float32 value at `number`.
inline OSStatus constantSource(void* number, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                               UInt32 frames, AudioBufferList* list)
{
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
        for (UInt32 frame = 0; frame < frames; ++frame)
            static_cast<Float32*>(list->mBuffers[i].mData)[frame] = *static_cast<const Float32*>(number);
    return noErr;
}

/// A graph with `count` adding units. The units add the constants 1, 2, 4, 8…, so a rendered sum shows which
/// units were part of it.
struct AddingGraph {
    explicit AddingGraph(int count, OSType subType = 'add ') : output(graph.add('auou', 'genr'))
    {
        AUGraphOpen(graph);
        for (int i = 0; i < count; ++i) add(subType);
    }
    AUNode add(OSType subType = 'add ')
    {
        nodes.push_back(graph.add('aufx', subType));
        setConstant(unit(nodes.size() - 1), static_cast<Float32>(1 << (nodes.size() - 1)));
        return nodes.back();
    }
    AudioUnit unit(std::size_t index) const { return graph.unit(nodes[index]); }

    /// Render a few frames from the output unit.
    /// Returns  a sample of the first channel, or the error status of the render call.
    Float32 render() const
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
