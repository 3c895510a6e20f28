// The render call in progress of a stream state, and how other threads wait for its end.
//
// Two render threads whose completion routines each close, initialise or destroy what the other one plays wait for
// each other for ever: no client may do that.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// The render thread inside a state, for as long as this lives. Takes no lock.
/// [audio]
class RenderScope {
public:
    /// `address` is a StreamState's, which may be freed already.
    explicit RenderScope(const void* address);
    ~RenderScope();
    RenderScope(const RenderScope&) = delete;
    RenderScope& operator=(const RenderScope&) = delete;

    /// Null for a freed state, and while another thread renders it.
    StreamState* state() const { return state_.get(); }

private:
    Used<StreamState> state_;
};

/// Wait until the render call in progress has ended; later ones are not waited for. Waits for a slice at most, and
/// calls no platform function.
/// Returns  false, at once, on the thread that is inside this render call: a completion routine.
/// [any]
bool waitForRender(const StreamState& state);

/// Close the mixer of an instance that lookups no longer find, and free the instance after its last user. Waits for
/// the render call in progress; inside that call, both happen when the call ends.
/// [any]
void endAfterRender(QTSoundStreamGlobals& globals);

} // namespace soundstream
