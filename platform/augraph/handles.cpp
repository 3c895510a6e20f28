#include "platform/augraph/handles.h"

#include "platform/accounts/account.h"
#include "platform/audiounit/audio_unit.h"
#include "platform/audiounit/render.h"
#include "platform/hal/device.h"

namespace kvxplatform::augraph {
namespace {

Account account("AUGraph");

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
    const auto isReady = [](Graph&, components::HandleNumber) { return true; };
    return components::handleOf<AUGraph>(table().add(std::make_unique<Graph>(), isReady));
}

Graphs::Use use(AUGraph handle) { return table().use(components::numberOf(handle)); }

Graphs::Use beginDispose(AUGraph handle) { return table().beginClose(components::numberOf(handle)); }

void endDispose(Graphs::Use graph) { table().endClose(std::move(graph)); }

bool isAudioThread() { return audiounit::isInAnySlice() || hal::turningDevice; }

bool isInHeadsSlice(const Graph& graph)
{
    const audiounit::UnitUse unit = audiounit::use(graph.head);
    return !unit.status && audiounit::isInOwnSlice(*unit);
}

} // namespace kvxplatform::augraph
