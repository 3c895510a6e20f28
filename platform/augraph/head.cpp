#include "platform/augraph/head.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property_access.h"
#include "platform/audiounit/render.h"
#include "platform/augraph/unit_calls.h"

#include <algorithm>

namespace kvxplatform::augraph {

OSStatus start(Graph& graph)
{
    if (!graph.isInitialized) return kAudioUnitErr_Uninitialized;
    return graph.head.load() ? startHead(graph) : static_cast<OSStatus>(kAUGraphErr_OutputNodeErr);
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

OSStatus addNotify(Graph& graph, const Notify& notify)
{
    if (!notify.function) return paramErr;
    graph.notifies.reserve(graph.notifies.size() + 1);
    graph.notifies.push_back(notify);
    return noErr;
}

OSStatus removeNotify(Graph& graph, const Notify& notify)
{
    if (!notify.function) return paramErr;
    const auto found = std::find_if(graph.notifies.begin(), graph.notifies.end(), [&](const Notify& each) {
        return each.function == notify.function && each.context == notify.context;
    });
    if (found == graph.notifies.end()) return kAudioUnitErr_InvalidPropertyValue;
    graph.notifies.erase(found);
    return noErr;
}

} // namespace kvxplatform::augraph
