// Every call that takes a graph, with good arguments.
#pragma once

#include "tests/platform/augraph/graph.h"

#include <functional>
#include <vector>

namespace test {

struct GraphCall {
    const char* name;
    bool mayWait; // and so is refused where nobody may wait
    std::function<OSStatus(AUGraph)> make;
};

/// Start, Stop and IsRunning, which the head answers, and Dispose are not among them.
std::vector<GraphCall> callsAbout(AUNode node);

/// A callback that leaves its list as it came.
OSStatus ignored(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32, AudioBufferList*);

} // namespace test
