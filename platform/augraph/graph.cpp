#include "platform/augraph/graph.h"

#include "platform/support/live_count.h"

namespace kvxplatform::augraph {
namespace {

LiveCount liveGraphs("AUGraph");

} // namespace

Graph::Graph() { liveGraphs.add(); }
Graph::~Graph() { liveGraphs.remove(); }

Node* findNode(Graph& graph, AUNode number)
{
    for (Node& node : graph.nodes)
        if (node.number == number) return &node;
    return nullptr;
}

} // namespace kvxplatform::augraph
