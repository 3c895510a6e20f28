// Blocking work off the host's main thread.
#pragma once

/// Run `work(data)` on another thread while the calling one keeps the host alive: it yields to the host about
/// every millisecond and then calls `idle(data)`. Returns when the work is done. Without another thread the
/// work runs right here, and nothing yields.
/// Owner   `data` is the caller's; nothing of the call outlives it.
/// Thread  [main]. The work is on another one: it must not call the host. During the wait the host runs its
///         programs' code, which may touch whatever the work touches. Neither function may throw.
/// Errors  none is reported. Either function may be null.
void RunThreadedBlocks(const void* data, void (*work)(const void*), void (*idle)(const void*));
