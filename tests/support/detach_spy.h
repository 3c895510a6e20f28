// Counts detached threads. A program that links detach_spy.cpp, with LINKER:--wrap=pthread_detach, has its
// objects' calls of pthread_detach counted. They go through but for the thread sanitizer, which ends a
// program that detaches a thread behind a join.
#pragma once

namespace support {

/// How often pthread_detach was called, on any thread.
int detaches();

} // namespace support
