// Blocking work on a background thread while the host stays responsive.
#pragma once

/// Run `work(data)` on a worker thread and wait for it. While waiting, yield to the host about once per
/// millisecond and call `idle(data)`. Without a worker thread `work` runs on the calling thread, without
/// yields.
/// Shape   both functions may be null; neither may throw.
/// Owner   the caller owns `data`; no reference to it remains after the return.
/// Errors  none.
///
/// `work` must not call the host. While the caller waits, the host runs program code that may access the same
/// objects as `work`.
/// [main]
void RunThreadedBlocks(const void* data, void (*work)(const void*), void (*idle)(const void*));
