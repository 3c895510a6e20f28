// A list of the calls that take a graph, each with valid arguments.
#pragma once

#include "tests/platform/augraph/graph.h"

#include <functional>
#include <vector>

namespace test {

struct GraphCall {
    const char* name;
    bool mayWait; ///< whether the call may wait, so that render threads get an error
    std::function<OSStatus(AUGraph)> make;
};

/// All graph calls except Dispose, and Start, Stop and IsRunning, which have special rules on render threads.
std::vector<GraphCall> graphCalls(AUNode node);

/// A render callback that leaves its buffer list unchanged.
OSStatus emptySource(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                     AudioBufferList*);

} // namespace test
