// Lets the allocator hook watch render threads. This file replaces the platform's functions for I/O
// procedures in a program that exports its symbols.
#pragma once

namespace endtoend {

/// Watch each thread during its calls of I/O procedures from now on, or stop.
void watchIoProcs(bool isOn);

/// Get the number of watched calls of I/O procedures since watchIoProcs(true).
int watchedIoProcCalls();

} // namespace endtoend
