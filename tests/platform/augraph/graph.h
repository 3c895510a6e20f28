// A graph object for tests that is disposed of automatically, with short forms of the graph calls.
#pragma once

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>

#include <cstdint>

namespace test {

class Graph {
public:
    Graph() { NewAUGraph(&graph_); }
    ~Graph() { dispose(); }
    Graph(const Graph&) = delete;
    operator AUGraph() const { return graph_; }
    OSStatus dispose();

    /// Add a node for a component type and subtype. `status` receives the status of the call.
    /// Returns  the new node; 0 after an error.
    AUNode add(OSType type, OSType subType, OSStatus* status = nullptr) const;
    AudioUnit unit(AUNode node) const;

    OSStatus connect(AUNode source, AUNode dest, UInt32 input = 0) const
    {
        return AUGraphConnectNodeInput(graph_, source, 0, dest, input);
    }
    OSStatus setCallback(AUNode dest, AURenderCallback function, void* context, UInt32 input = 0) const
    {
        const AURenderCallbackStruct callback = {function, context};
        return AUGraphSetNodeInputCallback(graph_, dest, input, &callback);
    }

    bool isOpen() const { return flag(AUGraphIsOpen); }
    bool isInitialized() const { return flag(AUGraphIsInitialized); }
    bool isRunning() const { return flag(AUGraphIsRunning); }

private:
    bool flag(OSStatus (*get)(AUGraph, Boolean*)) const
    {
        Boolean is = 7;
        return !get(graph_, &is) && is == 1;
    }
    AUGraph graph_ = nullptr;
};

/// Returns  the number of live objects of a kind.
std::uint32_t alive(const char* kind);

} // namespace test
