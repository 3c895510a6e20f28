// The C functions of graphs. Each function looks up the graph, takes the graph's lock and stops exceptions.
#include "platform/augraph/connections.h"
#include "platform/augraph/handles.h"
#include "platform/augraph/head.h"
#include "platform/augraph/life_cycle.h"
#include "platform/augraph/nodes.h"
#include "platform/support/border.h"
#include "platform/support/render_scope.h"

namespace augraph = kvxplatform::augraph;
using augraph::Graph;

namespace {

constexpr OSStatus cannotNow = kAUGraphErr_CannotDoInCurrentContext;

/// Whether the calling thread is inside a render call or an I/O cycle. Such a thread must not wait.
bool isRenderThread() { return kvxplatform::RenderScope::isInsideAny(); }

template <class Call>
OSStatus guarded(Call call) noexcept
{
    return kvxplatform::withinBorder(memFullErr, kAudioUnitErr_FailedInitialization, call);
}

/// Run `call` while holding the graph's lock. If another thread holds the lock and `mayWait` is false, the
/// result is CannotDoInCurrentContext.
template <class Call>
OSStatus withLock(AUGraph handle, bool mayWait, Call call)
{
    return guarded([&]() -> OSStatus {
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

/// Execute a graph call that may wait for render calls to end. A render thread gets an error instead.
template <class Call>
OSStatus waitingCall(AUGraph handle, Call call)
{
    if (!isRenderThread()) return withLock(handle, true, call);
    return augraph::use(handle) ? cannotNow : OSStatus{paramErr};
}

/// Execute a graph call that takes little time. A render thread may make such a call, but does not wait for
/// the lock.
template <class Call>
OSStatus shortCall(AUGraph handle, Call call)
{
    return withLock(handle, !isRenderThread(), call);
}

/// Execute a start or stop call. Inside the output unit's own render call, run `insideHead` without the lock;
/// on other threads, run `elsewhere` with the lock. Other render threads get an error.
OSStatus headCall(AUGraph handle, OSStatus (*insideHead)(Graph&), OSStatus (*elsewhere)(Graph&))
{
    if (!isRenderThread()) return withLock(handle, true, elsewhere);
    return guarded([&]() -> OSStatus {
        const augraph::Graphs::Use graph = augraph::use(handle);
        if (!graph) return paramErr;
        return augraph::isInsideHead(*graph) ? insideHead(*graph) : cannotNow;
    });
}

OSStatus getFlag(AUGraph handle, Boolean* out, bool Graph::*flag)
{
    return shortCall(handle, [&](Graph& graph) {
        if (out) *out = graph.*flag;
        return out ? noErr : paramErr;
    });
}

} // namespace

OSStatus NewAUGraph(AUGraph* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    return guarded([&] {
        *out = augraph::add();
        return *out ? noErr : memFullErr;
    });
}

OSStatus DisposeAUGraph(AUGraph handle)
{
    return guarded([&]() -> OSStatus {
        if (isRenderThread()) return augraph::use(handle) ? cannotNow : OSStatus{paramErr};
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
    return shortCall(handle, [&](Graph& graph) {
        return description && out ? augraph::addNode(graph, *description, *out) : paramErr;
    });
}

OSStatus AUGraphGetNodeCount(AUGraph handle, UInt32* out)
{
    return shortCall(handle, [&](Graph& graph) {
        if (out) *out = static_cast<UInt32>(graph.nodes.size());
        return out ? noErr : paramErr;
    });
}

OSStatus AUGraphGetIndNode(AUGraph handle, UInt32 index, AUNode* out)
{
    return shortCall(handle, [&](Graph& graph) -> OSStatus {
        if (!out) return paramErr;
        if (index >= graph.nodes.size()) return kAUGraphErr_NodeNotFound;
        *out = graph.nodes[index].number;
        return noErr;
    });
}

OSStatus AUGraphNodeInfo(AUGraph handle, AUNode number, AudioComponentDescription* description,
                         AudioUnit* unit)
{
    return shortCall(handle, [&](Graph& graph) -> OSStatus {
        const augraph::Node* const node = augraph::findNode(graph, number);
        if (!node) return kAUGraphErr_NodeNotFound;
        if (description) *description = node->description;
        if (unit) *unit = node->unit;
        return noErr;
    });
}

OSStatus AUGraphConnectNodeInput(AUGraph handle, AUNode source, UInt32 output, AUNode dest, UInt32 input)
{
    return shortCall(handle, [&](Graph& graph) {
        return augraph::connect(graph, source, output, {dest, input});
    });
}

OSStatus AUGraphSetNodeInputCallback(AUGraph handle, AUNode dest, UInt32 input,
                                     const AURenderCallbackStruct* callback)
{
    return shortCall(handle, [&](Graph& graph) {
        return callback ? augraph::setCallback(graph, {dest, input}, *callback) : paramErr;
    });
}

OSStatus AUGraphOpen(AUGraph handle) { return waitingCall(handle, augraph::open); }

OSStatus AUGraphClose(AUGraph handle)
{
    return waitingCall(handle, [](Graph& graph) {
        augraph::close(graph);
        return noErr;
    });
}

OSStatus AUGraphInitialize(AUGraph handle) { return waitingCall(handle, augraph::initialize); }
OSStatus AUGraphUninitialize(AUGraph handle) { return waitingCall(handle, augraph::uninitialize); }
OSStatus AUGraphStart(AUGraph handle) { return headCall(handle, augraph::startHead, augraph::start); }
OSStatus AUGraphStop(AUGraph handle) { return headCall(handle, augraph::stopHead, augraph::stopHead); }
OSStatus AUGraphIsOpen(AUGraph handle, Boolean* out) { return getFlag(handle, out, &Graph::isOpen); }

OSStatus AUGraphIsInitialized(AUGraph handle, Boolean* out)
{
    return getFlag(handle, out, &Graph::isInitialized);
}

OSStatus AUGraphIsRunning(AUGraph handle, Boolean* out)
{
    return guarded([&]() -> OSStatus {
        const augraph::Graphs::Use graph = augraph::use(handle);
        if (!graph || !out) return paramErr;
        *out = augraph::isHeadRunning(*graph);
        return noErr;
    });
}
