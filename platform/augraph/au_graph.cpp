// The public calls: find the graph, wait for it or not, let nothing be thrown across the border.
#include "platform/augraph/connections.h"
#include "platform/augraph/handles.h"
#include "platform/augraph/head.h"
#include "platform/augraph/life_cycle.h"
#include "platform/augraph/nodes.h"
#include "platform/support/border.h"

#include <new>

namespace augraph = kvxplatform::augraph;
using augraph::Graph;

namespace {

constexpr OSStatus cannotNow = kAUGraphErr_CannotDoInCurrentContext;

template <class Call>
OSStatus withinBorder(Call call) noexcept
{
    return kvxplatform::withinBorder(memFullErr, kAudioUnitErr_FailedInitialization, call);
}

template <class Call>
OSStatus withLock(AUGraph handle, bool mayWait, Call call)
{
    return withinBorder([&]() -> OSStatus {
        const augraph::Graphs::Use graph = augraph::use(handle);
        if (!graph) return paramErr;
        std::unique_lock<std::mutex> lock(graph->lock, std::defer_lock);
        if (mayWait)
            lock.lock();
        else if (!lock.try_lock())
            return cannotNow;
        return graph->isDisposed ? OSStatus{paramErr} : call(*graph);
    });
}

/// A call that may wait for slices to end.
template <class Call>
OSStatus patiently(AUGraph handle, Call call)
{
    if (!augraph::isAudioThread()) return withLock(handle, true, call);
    return augraph::use(handle) ? cannotNow : OSStatus{paramErr};
}

/// A call that takes a moment: an audio thread makes it, too, unless another call is under way.
template <class Call>
OSStatus briefly(AUGraph handle, Call call)
{
    return withLock(handle, !augraph::isAudioThread(), call);
}

/// The head's own slice speaks to it without waiting for anybody.
OSStatus toHead(AUGraph handle, OSStatus (*inItsSlice)(Graph&), OSStatus (*elsewhere)(Graph&))
{
    if (!augraph::isAudioThread()) return withLock(handle, true, elsewhere);
    return withinBorder([&]() -> OSStatus {
        const augraph::Graphs::Use graph = augraph::use(handle);
        if (!graph) return paramErr;
        return augraph::isInHeadsSlice(*graph) ? inItsSlice(*graph) : cannotNow;
    });
}

OSStatus getFlag(AUGraph handle, Boolean* out, bool Graph::*flag)
{
    return briefly(handle, [&](Graph& graph) {
        if (out) *out = graph.*flag;
        return out ? noErr : paramErr;
    });
}

} // namespace

OSStatus NewAUGraph(AUGraph* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    return withinBorder([&] {
        *out = augraph::add();
        return *out ? noErr : memFullErr;
    });
}

OSStatus DisposeAUGraph(AUGraph handle)
{
    return withinBorder([&]() -> OSStatus {
        if (augraph::isAudioThread()) return augraph::use(handle) ? cannotNow : OSStatus{paramErr};
        augraph::Graphs::Use graph = augraph::beginDispose(handle);
        if (!graph) return paramErr;
        {
            const std::lock_guard<std::mutex> guard(graph->lock);
            augraph::dispose(*graph);
        }
        augraph::endDispose(std::move(graph));
        return noErr;
    });
}

OSStatus AUGraphAddNode(AUGraph handle, const AudioComponentDescription* description, AUNode* out)
{
    return briefly(handle, [&](Graph& graph) {
        return description && out ? augraph::addNode(graph, *description, *out) : paramErr;
    });
}

OSStatus AUGraphRemoveNode(AUGraph handle, AUNode node)
{
    return patiently(handle, [&](Graph& graph) { return augraph::removeNode(graph, node); });
}

OSStatus AUGraphGetNodeCount(AUGraph handle, UInt32* out)
{
    return briefly(handle, [&](Graph& graph) {
        if (out) *out = static_cast<UInt32>(graph.nodes.size());
        return out ? noErr : paramErr;
    });
}

OSStatus AUGraphGetIndNode(AUGraph handle, UInt32 index, AUNode* out)
{
    return briefly(handle, [&](Graph& graph) -> OSStatus {
        if (!out) return paramErr;
        if (index >= graph.nodes.size()) return kAUGraphErr_NodeNotFound;
        *out = graph.nodes[index].number;
        return noErr;
    });
}

OSStatus AUGraphNodeInfo(AUGraph handle, AUNode number, AudioComponentDescription* description,
                         AudioUnit* unit)
{
    return briefly(handle, [&](Graph& graph) -> OSStatus {
        const augraph::Node* const node = augraph::findNode(graph, number);
        if (!node) return kAUGraphErr_NodeNotFound;
        if (description) *description = node->description;
        if (unit) *unit = node->unit;
        return noErr;
    });
}

OSStatus AUGraphConnectNodeInput(AUGraph handle, AUNode source, UInt32 output, AUNode dest, UInt32 input)
{
    return briefly(handle, [&](Graph& graph) {
        return augraph::connect(graph, source, output, {dest, input});
    });
}

OSStatus AUGraphSetNodeInputCallback(AUGraph handle, AUNode dest, UInt32 input,
                                     const AURenderCallbackStruct* callback)
{
    return briefly(handle, [&](Graph& graph) {
        return callback ? augraph::setCallback(graph, {dest, input}, *callback) : paramErr;
    });
}

OSStatus AUGraphDisconnectNodeInput(AUGraph handle, AUNode dest, UInt32 input)
{
    return briefly(handle, [&](Graph& graph) { return augraph::disconnect(graph, {dest, input}); });
}

OSStatus AUGraphClearConnections(AUGraph handle)
{
    return briefly(handle, [](Graph& graph) {
        augraph::disconnectAll(graph);
        return noErr;
    });
}

OSStatus AUGraphUpdate(AUGraph handle, Boolean* out)
{
    bool isDone = false;
    const OSStatus status = patiently(handle, [&](Graph& graph) { return augraph::update(graph, isDone); });
    if (out) *out = isDone;
    return status;
}

OSStatus AUGraphOpen(AUGraph handle) { return patiently(handle, augraph::open); }

OSStatus AUGraphClose(AUGraph handle)
{
    return patiently(handle, [](Graph& graph) {
        augraph::close(graph);
        return noErr;
    });
}

OSStatus AUGraphInitialize(AUGraph handle) { return patiently(handle, augraph::initialize); }
OSStatus AUGraphUninitialize(AUGraph handle) { return patiently(handle, augraph::uninitialize); }
OSStatus AUGraphStart(AUGraph handle) { return toHead(handle, augraph::startHead, augraph::start); }
OSStatus AUGraphStop(AUGraph handle) { return toHead(handle, augraph::stopHead, augraph::stopHead); }
OSStatus AUGraphIsOpen(AUGraph handle, Boolean* out) { return getFlag(handle, out, &Graph::isOpen); }

OSStatus AUGraphIsInitialized(AUGraph handle, Boolean* out)
{
    return getFlag(handle, out, &Graph::isInitialized);
}

OSStatus AUGraphIsRunning(AUGraph handle, Boolean* out)
{
    return withinBorder([&]() -> OSStatus {
        const augraph::Graphs::Use graph = augraph::use(handle);
        if (!graph || !out) return paramErr;
        *out = augraph::isHeadRunning(*graph);
        return noErr;
    });
}

OSStatus AUGraphAddRenderNotify(AUGraph handle, AURenderCallback notify, void* context)
{
    return briefly(handle, [&](Graph& graph) { return augraph::addNotify(graph, {notify, context}); });
}

OSStatus AUGraphRemoveRenderNotify(AUGraph handle, AURenderCallback notify, void* context)
{
    return briefly(handle, [&](Graph& graph) { return augraph::removeNotify(graph, {notify, context}); });
}
