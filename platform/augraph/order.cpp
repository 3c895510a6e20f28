#include "platform/augraph/order.h"

namespace kvxplatform::augraph {

bool orderFromSources(Graph& graph, std::vector<Node*>& out)
{
    std::map<AUNode, std::size_t> unlistedSources; // number of sources not yet listed, for each node
    for (const auto& [input, source] : graph.sources) {
        unlistedSources[input.node] += source.node != 0;
        if (source.node) unlistedSources[source.node];
    }

    out.clear();
    for (Node& node : graph.nodes) {
        const auto found = unlistedSources.find(node.number);
        if (found != unlistedSources.end() && found->second == 0) out.push_back(&node);
    }
    for (std::size_t next = 0; next < out.size(); ++next)
        for (const auto& [input, source] : graph.sources)
            if (source.node == out[next]->number && --unlistedSources[input.node] == 0)
                out.push_back(findNode(graph, input.node));
    return out.size() == unlistedSources.size();
}

} // namespace kvxplatform::augraph
