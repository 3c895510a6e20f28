// Every call that takes a graph, with valid arguments.
#pragma once

#include "tests/platform/augraph/graph.h"

#include <functional>
#include <vector>

namespace test {

struct GraphCall {
    const char* name;
    bool mayWait; ///< refused on render threads
    std::function<OSStatus(AUGraph)> make;
};

/// All but Start, Stop and IsRunning, which have rules of their own on render threads, and Dispose.
std::vector<GraphCall> graphCalls(AUNode node);

/// A render callback that leaves its list unchanged.
OSStatus emptySource(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                     AudioBufferList*);

} // namespace test
