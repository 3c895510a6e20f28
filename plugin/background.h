// Blocking work on a background thread, during which the host stays responsive.
#pragma once

/// Run `work(data)` on a worker thread and wait until `work` returns. While waiting, yield to the host and
/// call `idle(data)` about once per millisecond. If the system cannot start a worker thread, run `work(data)`
/// on the calling thread, without a yield and without a call of `idle`.
/// Shape   either function may be null; neither may throw.
/// Owner   the caller owns `data`; no reference to `data` remains after the return.
/// Errors  none.
///
/// `work` must not call the host. While the caller waits, the host runs program code that may access the same
/// objects as `work`.
/// [main]
void RunThreadedBlocks(const void* data, void (*work)(const void*), void (*idle)(const void*));
