#include "platform/augraph/handles.h"

namespace kvxplatform::augraph {
namespace {

// The table is never destroyed, because a render thread may still look up a graph while the program exits.
Graphs& table()
{
    static Graphs& graphs = *new Graphs;
    return graphs;
}

} // namespace

AUGraph add()
{
    const auto isReady = [](Graph&, HandleNumber) { return true; };
    return handleOf<AUGraph>(table().add(std::make_unique<Graph>(), isReady));
}

Graphs::Use use(AUGraph handle) { return table().use(numberOf(handle)); }

Graphs::Use beginDispose(AUGraph handle) { return table().beginClose(numberOf(handle)); }

void endDispose(Graphs::Use graph) { table().endClose(std::move(graph)); }

} // namespace kvxplatform::augraph
