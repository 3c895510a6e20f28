// Counts the allocations inside I/O procedures with the allocator hook. The source replaces the functions of
// the platform for I/O procedures, in a program that exports its symbols.
#pragma once

namespace endtoend {

/// Start or stop counting the allocations of all threads inside their calls of I/O procedures.
void watchIoProcs(bool isOn);

/// Return the number of calls of I/O procedures since watchIoProcs(true).
int watchedIoProcCalls();

} // namespace endtoend
