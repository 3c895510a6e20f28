// The records of a graph: its nodes, and what their inputs hear.
//
// What callers connect is only noted. The units are told when the graph is initialised or updated: then all
// formats are settled, and a change that a unit refuses leaves what plays as it is.
#pragma once

#include <AudioToolbox/AUGraph.h>
#include <Carbon/Carbon.h>

#include <atomic>
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

namespace kvxplatform::augraph {

/// A unit's place in a graph.
struct Node {
    AUNode number;
    Component component;
    AudioComponentDescription description; // the component's own, without wildcards
    AudioUnit unit;                        // null while the graph is not open
};

inline bool isOutput(const Node& node) { return node.description.componentType == kAudioUnitType_Output; }

struct Input {
    AUNode node;
    UInt32 bus;
};
inline bool operator<(const Input& a, const Input& b)
{
    return std::tie(a.node, a.bus) < std::tie(b.node, b.bus);
}

/// What an input hears: a node's output, or (node 0) a callback.
struct Source {
    AUNode node;
    UInt32 output;
    AURenderCallbackStruct callback;
};
inline bool operator==(const Source& a, const Source& b)
{
    return a.node == b.node && a.output == b.output && a.callback.inputProc == b.callback.inputProc &&
           a.callback.inputProcRefCon == b.callback.inputProcRefCon;
}

using Inputs = std::map<Input, Source>;

struct Notify {
    AURenderCallback function;
    void* context;
};

struct Graph {
    Graph();
    ~Graph();
    Graph(const Graph&) = delete;

    std::mutex lock; // of all but `head`. Its holder may wait for a slice to end

    bool isDisposed = false;
    bool isOpen = false;
    bool isInitialized = false;
    AUNode lastNumber = 0;
    std::vector<Node> nodes;   // in the order of adding
    std::vector<Node> leaving; // removed while initialised: their units go with the next update
    Inputs wanted;             // as callers have it
    Inputs made;               // as the units have been told
    std::vector<Notify> notifies;

    /// The output node's unit; null without one, or while not open. Thread [any] reads, also [audio].
    std::atomic<AudioUnit> head{nullptr};
};

/// A node by its number; null when there is none. With the lock.
Node* findNode(Graph& graph, AUNode number);

} // namespace kvxplatform::augraph
