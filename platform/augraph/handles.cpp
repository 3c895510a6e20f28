#include "platform/augraph/handles.h"

#include "platform/audiounit/render.h"
#include "platform/audiounit/unit_handle.h"
#include "platform/hal/device.h"
#include "platform/support/live_count.h"

namespace kvxplatform::augraph {
namespace {

LiveCount account("AUGraph");

// Never destroyed: an audio thread may still ask for a graph while the program ends.
Graphs& table()
{
    static Graphs& graphs = *new Graphs;
    return graphs;
}

} // namespace

Graph::Graph() { account.add(); }
Graph::~Graph() { account.remove(); }

AUGraph add()
{
    const auto isReady = [](Graph&, HandleNumber) { return true; };
    return handleOf<AUGraph>(table().add(std::make_unique<Graph>(), isReady));
}

Graphs::Use use(AUGraph handle) { return table().use(numberOf(handle)); }

Graphs::Use beginDispose(AUGraph handle) { return table().beginClose(numberOf(handle)); }

void endDispose(Graphs::Use graph) { table().endClose(std::move(graph)); }

bool isAudioThread() { return RenderScope::isInsideAny() || hal::turningDevice; }

bool isInHeadsSlice(const Graph& graph)
{
    const audiounit::UnitUse unit = audiounit::use(graph.head);
    return !unit.status && unit->scope.isInside();
}

} // namespace kvxplatform::augraph
