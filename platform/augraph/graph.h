// The records of a graph: its nodes and the sources of their inputs.
//
// Callers only record sources. The units receive them when the graph is initialised, with all formats set.
#pragma once

#include <AudioToolbox/AUGraph.h>
#include <Carbon/Carbon.h>

#include <atomic>
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

namespace kvxplatform::augraph {

struct Node {
    AUNode number;
    Component component;
    AudioComponentDescription description; ///< the component's own, without wildcards
    AudioUnit unit;                        ///< null while the graph is closed
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

/// The source of an input: an output of a node or, with node 0, a callback. A removed callback leaves an
/// empty source until the graph is initialised again.
struct Source {
    AUNode node;
    UInt32 output;
    AURenderCallbackStruct callback;
};
inline bool isEmpty(const Source& source) { return !source.node && !source.callback.inputProc; }

struct Graph {
    Graph();
    ~Graph();
    Graph(const Graph&) = delete;

    /// Guards all members but `head`. Its holder may wait for a render call to end.
    std::mutex lock;

    bool isDisposed = false;
    bool isOpen = false;
    bool isInitialized = false;
    AUNode lastNumber = 0;
    std::vector<Node> nodes; ///< in the order of adding
    std::map<Input, Source> sources;

    /// The output node's unit; null without an output node or while the graph is closed.
    /// The caller does not hold the lock.
    /// [any]
    std::atomic<AudioUnit> head{nullptr};
};

/// Returns  the node with this number, or null.
/// The caller holds the graph's lock.
/// [any]
Node* findNode(Graph& graph, AUNode number);

} // namespace kvxplatform::augraph
