// Registration of the render call in progress on a StreamState, and functions that wait for the end of that
// call.
//
// If completion routines on two render threads each close, initialise or destroy what the other thread
// renders, the two threads wait for each other for ever. Clients must not do that.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Registers the calling thread as the render thread of a StreamState until the scope ends. Locks no mutex.
/// [audio]
class RenderScope {
public:
    /// Begin a render call. `address` is the address of a StreamState, which may be freed already.
    explicit RenderScope(const void* address);
    ~RenderScope();
    RenderScope(const RenderScope&) = delete;
    RenderScope& operator=(const RenderScope&) = delete;

    /// The StreamState to render; null if it is freed or if another thread renders it.
    StreamState* state() const { return state_.get(); }

private:
    Used<StreamState> state_;
};

/// Wait until the render call in progress has ended, which takes at most one slice. Calls no platform
/// function.
/// Returns  false without a wait if the caller is inside this render call, in a completion routine.
/// [any]
bool waitForRender(const StreamState& state);

/// After the render call in progress, close the mixer of a removed instance and give up its
/// QTSoundStreamGlobals. If the caller is inside that render call, both steps are deferred to its end.
/// [any]
void endAfterRender(QTSoundStreamGlobals& globals);

} // namespace soundstream
