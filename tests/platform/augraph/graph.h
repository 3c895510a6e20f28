// A graph that disposes itself, and what tests ask of it.
#pragma once

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>

#include <cstdint>

namespace test {

class Graph {
public:
    Graph() { NewAUGraph(&graph); }
    ~Graph() { dispose(); }
    Graph(const Graph&) = delete;
    operator AUGraph() const { return graph; }
    OSStatus dispose();

    /// The new node; 0 on an error, which `status` tells.
    AUNode add(OSType type, OSType subType, OSStatus* status = nullptr) const;
    AudioUnit unit(AUNode node) const;

    OSStatus connect(AUNode source, AUNode dest, UInt32 input = 0) const
    {
        return AUGraphConnectNodeInput(graph, source, 0, dest, input);
    }
    OSStatus setCallback(AUNode dest, AURenderCallback function, void* context, UInt32 input = 0) const
    {
        const AURenderCallbackStruct callback = {function, context};
        return AUGraphSetNodeInputCallback(graph, dest, input, &callback);
    }

    bool isOpen() const { return flag(AUGraphIsOpen); }
    bool isInitialized() const { return flag(AUGraphIsInitialized); }
    bool isRunning() const { return flag(AUGraphIsRunning); }

private:
    bool flag(OSStatus (*ask)(AUGraph, Boolean*)) const
    {
        Boolean is = 7;
        return !ask(graph, &is) && is == 1;
    }
    AUGraph graph = nullptr;
};

/// How many objects of a kind are alive.
std::uint32_t alive(const char* kind);

} // namespace test
