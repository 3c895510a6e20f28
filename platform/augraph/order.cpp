#include "platform/augraph/order.h"

namespace kvxplatform::augraph {

bool fromSources(Graph& graph, std::vector<Node*>& out)
{
    std::map<AUNode, std::size_t> waitsFor; // how many of the nodes it hears are not in the order yet
    for (const auto& [input, source] : graph.wanted) {
        waitsFor[input.node] += source.node != 0;
        if (source.node) waitsFor[source.node];
    }

    out.clear();
    for (Node& node : graph.nodes) {
        const auto found = waitsFor.find(node.number);
        if (found != waitsFor.end() && found->second == 0) out.push_back(&node);
    }
    for (std::size_t next = 0; next < out.size(); ++next)
        for (const auto& [input, source] : graph.wanted)
            if (source.node == out[next]->number && --waitsFor[input.node] == 0)
                out.push_back(findNode(graph, input.node));
    return out.size() == waitsFor.size();
}

} // namespace kvxplatform::augraph
