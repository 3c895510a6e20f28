// The render call in progress of a stream state, and how other threads wait for its end.
//
// Two render threads whose completion routines each close, initialise or destroy what the other thread
// renders wait for each other for ever: clients must not do that.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Registers this thread as the render thread of a state, until the end of the scope. Takes no lock.
/// [audio]
class RenderScope {
public:
    /// `address` is that of a StreamState, which may be freed already.
    explicit RenderScope(const void* address);
    ~RenderScope();
    RenderScope(const RenderScope&) = delete;
    RenderScope& operator=(const RenderScope&) = delete;

    /// Null for a freed state, and while another thread renders it.
    StreamState* state() const { return state_.get(); }

private:
    Used<StreamState> state_;
};

/// Wait until the render call in progress has ended, a slice at most. Calls no platform function.
/// Returns  false, at once, inside this render call, from a completion routine.
/// [any]
bool waitForRender(const StreamState& state);

/// Close the mixer of a removed instance and leave the instance, after the render call in progress.
/// Inside that call, defer both to its end.
/// [any]
void endAfterRender(QTSoundStreamGlobals& globals);

} // namespace soundstream
