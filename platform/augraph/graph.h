// The data of a graph: nodes, and the sources of the nodes' inputs.
//
// Connecting an input only stores its source here. The units receive the sources when the graph is
// initialised, because by then the caller has set all formats.
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
    AudioComponentDescription description; ///< full description of the component, without wildcards
    AudioUnit unit;                        ///< unit of the node; null while the graph is closed
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

/// The source of an input: an output of a node or, if `node` is 0, a render callback. A removed callback
/// leaves an empty source until the graph is initialised again.
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

    /// Guards all members except `head`. A thread that holds the lock may wait for a render call to end.
    std::mutex lock;

    bool isDisposed = false;
    bool isOpen = false;
    bool isInitialized = false;
    AUNode lastNumber = 0;
    std::vector<Node> nodes; ///< nodes in the order in which they were added
    std::map<Input, Source> sources;

    /// The output node's unit; null without an output node or while the graph is closed. Needs no lock.
    /// [any]
    std::atomic<AudioUnit> head{nullptr};
};

/// Find a node by number. The caller holds the graph's lock.
/// Returns  null if the graph has no such node.
/// [any]
Node* findNode(Graph& graph, AUNode number);

} // namespace kvxplatform::augraph
