#include "platform/augraph/head.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property_access.h"
#include "platform/augraph/unit_calls.h"

namespace kvxplatform::augraph {

OSStatus start(Graph& graph)
{
    if (!graph.isInitialized) return kAudioUnitErr_Uninitialized;
    return graph.head.load() ? startHead(graph) : OSStatus{kAUGraphErr_OutputNodeErr};
}

OSStatus startHead(Graph& graph) { return onUnit(graph.head, audiounit::start); }

OSStatus stopHead(Graph& graph)
{
    const AudioUnit head = graph.head;
    return head ? onUnit(head, audiounit::stop) : noErr;
}

bool isHeadRunning(const Graph& graph)
{
    UInt32 isRunning = 0;
    UInt32 size = sizeof isRunning;
    onUnit(graph.head, [&](audiounit::Unit& unit) {
        return audiounit::getProperty(unit, kAudioOutputUnitProperty_IsRunning, {kAudioUnitScope_Global, 0},
                                      &isRunning, &size);
    });
    return isRunning != 0;
}

bool isInsideHead(const Graph& graph)
{
    const audiounit::UnitUse unit = audiounit::use(graph.head);
    return !unit.status && unit->scope.isInside();
}

} // namespace kvxplatform::augraph
