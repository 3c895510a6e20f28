// A removing thread clears a pointer, then reads `renderThread`; a render call sets `renderThread`, then
// reads the pointer. Under sequential consistency at least one of the two threads sees what the other has
// written.
#include "soundstream/render_scope.h"

namespace soundstream {

namespace {

constexpr pthread_t noThread{};

void endInstance(QTSoundStreamGlobals& globals)
{
    closeMixer(globals);
    leave(&globals);
}

} // namespace

RenderScope::RenderScope(const void* address) : state_(liveStates.find(address))
{
    if (state_ && !replaceInOrder(state_->renderThread, noThread, pthread_self())) state_.reset();
}

RenderScope::~RenderScope()
{
    if (!state_) return;
    while (QTSoundStreamGlobals* const closed = state_->closedInside) {
        state_->closedInside = closed->next;
        endInstance(*closed);
    }
    __atomic_add_fetch(&state_->rendersDone, 1, __ATOMIC_SEQ_CST);
    storeInOrder(state_->renderThread, noThread);
}

bool waitForRender(const StreamState& state)
{
    const std::uint32_t done = loadInOrder(state.rendersDone);
    for (int waited = 0;; ++waited) {
        const pthread_t inside = loadInOrder(state.renderThread);
        if (inside == pthread_self()) return false;
        if (inside == noThread || loadInOrder(state.rendersDone) != done) return true;
        yieldOrSleep(waited);
    }
}

void endAfterRender(QTSoundStreamGlobals& globals)
{
    StreamState* const state = globals.refcon ? globals.refcon->state : nullptr;
    if (!state || waitForRender(*state)) return endInstance(globals);
    endInput(globals);
    globals.next = state->closedInside;
    state->closedInside = &globals;
}

} // namespace soundstream
