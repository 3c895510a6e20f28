// Counts the pthread_detach calls of a program that is linked with LINKER:--wrap=pthread_detach. Under the
// thread sanitizer the calls are only counted, because it ends a program that detaches a joined thread.
#pragma once

namespace support {

/// Return the number of pthread_detach calls on all threads.
int detaches();

} // namespace support
